# SPDX-License-Identifier: Apache-2.0
#
# lyn_warnings: linked PRIVATE by every target of the project; nobody outside sees it.
add_library(lyn_warnings INTERFACE)
target_compile_options(lyn_warnings INTERFACE -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion)
if(LYN_WERROR)
    target_compile_options(lyn_warnings INTERFACE -Werror)
endif()

# What is built says nothing of the place where it was built. A debugger wants to know the place.
if(CMAKE_BUILD_TYPE STREQUAL "Debug")
    set(lyn_prefix_map -fmacro-prefix-map)
else()
    set(lyn_prefix_map -ffile-prefix-map)
endif()
add_compile_options("${lyn_prefix_map}=${PROJECT_SOURCE_DIR}/=" "${lyn_prefix_map}=${PROJECT_BINARY_DIR}=build")

# Instrumented code must be so as a whole: these hold for every target.
if(LYN_SANITIZE)
    add_compile_options(-fsanitize=${LYN_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    add_link_options(-fsanitize=${LYN_SANITIZE})
    # A C program has the C++ part of the runtime too, for the library in C++.
    add_link_options($<$<LINK_LANGUAGE:C>:-fsanitize-link-c++-runtime>)
    link_libraries($<$<LINK_LANGUAGE:C>:stdc++>)
endif()
# A symbol that no library offers is an error when the library is linked, not when it is loaded. With a
# sanitizer the Clang runtime is in the program alone.
add_library(lyn_no_undefined INTERFACE)
if(NOT LYN_SANITIZE)
    target_link_options(lyn_no_undefined INTERFACE -Wl,--no-undefined)
endif()

# lyn_fuzzed: linked PRIVATE by the code in which the fuzzers look for new ways. The tests are not: they would
# only become slower.
add_library(lyn_fuzzed INTERFACE)
if(LYN_FUZZ)
    target_compile_options(lyn_fuzzed INTERFACE -fsanitize=fuzzer-no-link)
endif()

# lyn_counted: linked by the code whose executed lines are counted, the library's own.
add_library(lyn_counted INTERFACE)
if(LYN_COVERAGE)
    # Counters are changed atomically: the library is called from many threads.
    target_compile_options(lyn_counted INTERFACE
        -fprofile-instr-generate -fcoverage-mapping -fprofile-update=atomic)
    target_link_options(lyn_counted INTERFACE -fprofile-instr-generate)
endif()

# lyn_precompiled: linked PRIVATE by targets of many sources. Off in the GCC builds, as for a stranger: it must not hide
# that a source includes too little.
add_library(lyn_precompiled INTERFACE)
if(LYN_PRECOMPILE)
    target_precompile_headers(lyn_precompiled INTERFACE
        <algorithm> <array> <functional> <map> <memory> <mutex> <optional> <string> <string_view> <utility> <vector>)
endif()
