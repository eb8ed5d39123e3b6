# SPDX-License-Identifier: Apache-2.0
#
# lyn_add_test(NAME <name> SOURCES <file>... [LIBRARIES <target>...] [LABELS <label>...] [TIMEOUT <seconds>])
#
# Adds the GoogleTest program test_<name>; ctest lists each of its tests as "<name>.<suite>.<test>".
# For each label L the target tests_L builds the programs that carry it ("concurrency" goes to the
# thread sanitizer). Sources find <gtest/gtest.h> and <gmock/gmock.h> precompiled, by lyn_test_main.
#
# lyn_add_program_test(NAME <name> COMMAND <command>... [LABELS <label>...] [TIMEOUT <seconds>])
#
# Adds any other command, with the same environment.
include(GoogleTest)
find_package(GTest REQUIRED)

# The system's own Python has the packages that are installed for the tests; another one may not.
find_program(LYN_PYTHON python3 PATHS /usr/bin NO_DEFAULT_PATH)
find_program(LYN_PYTHON python3 REQUIRED)

# Names functions and lines in the sanitizers' reports.
find_program(LYN_SYMBOLIZER llvm-symbolizer HINTS /usr/lib/llvm-14/bin)
set(lyn_symbolizer "external_symbolizer_path=${LYN_SYMBOLIZER}")
set(lyn_test_environment
    "ASAN_OPTIONS=detect_leaks=1:strict_string_checks=1:detect_stack_use_after_return=1:${lyn_symbolizer}"
    "UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1:${lyn_symbolizer}"
    "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1:suppressions=${PROJECT_SOURCE_DIR}/tests/tsan/glib.supp:${lyn_symbolizer}"
    # Where the executed lines are counted, some files for each program, which its processes add to.
    "LLVM_PROFILE_FILE=${PROJECT_BINARY_DIR}/profile/%4m.profraw"
    # Every block of GLib's own allocator in the sanitizers' sight.
    "G_SLICE=always-malloc")

function(lyn_add_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT" "SOURCES;LIBRARIES;LABELS")
    if(arg_UNPARSED_ARGUMENTS OR NOT arg_NAME OR NOT arg_SOURCES)
        message(FATAL_ERROR "lyn_add_test: NAME and SOURCES are needed; not understood: '${arg_UNPARSED_ARGUMENTS}'")
    endif()
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    set(target "test_${arg_NAME}")
    add_executable(${target} ${arg_SOURCES})
    target_precompile_headers(${target} REUSE_FROM lyn_test_main)
    target_link_libraries(${target} PRIVATE ${arg_LIBRARIES} lyn_test_main lyn_warnings)
    foreach(label IN LISTS arg_LABELS)
        if(NOT TARGET tests_${label})
            add_custom_target(tests_${label})
        endif()
        add_dependencies(tests_${label} ${target})
    endforeach()
    gtest_discover_tests(${target}
        TEST_PREFIX "${arg_NAME}."
        TEST_LIST lyn_discovered_tests
        NO_PRETTY_TYPES
        NO_PRETTY_VALUES
        DISCOVERY_TIMEOUT 60)
    # Set here, and not by gtest_discover_tests(), which takes properties of one value only.
    set(properties_file "${CMAKE_CURRENT_BINARY_DIR}/${target}_properties.cmake")
    file(CONFIGURE OUTPUT "${properties_file}" @ONLY CONTENT [[
if(lyn_discovered_tests)
    set_tests_properties(${lyn_discovered_tests} PROPERTIES
        TIMEOUT "@arg_TIMEOUT@" LABELS "@arg_LABELS@" ENVIRONMENT "@lyn_test_environment@")
    unset(lyn_discovered_tests)
endif()
]])
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${properties_file}")
endfunction()

function(lyn_add_program_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT" "COMMAND;LABELS")
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    add_test(NAME ${arg_NAME} COMMAND ${arg_COMMAND})
    set_tests_properties(${arg_NAME} PROPERTIES
        TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" ENVIRONMENT "${lyn_test_environment}")
endfunction()
