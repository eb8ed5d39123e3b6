# SPDX-License-Identifier: Apache-2.0
#
# lyn_add_test(NAME <name> SOURCES <file>... [LIBRARIES <target>...] [LABELS <label>...] [PARTS <number>])
#
# Adds the GoogleTest program test_<name>, which ctest runs whole: a process for each test would take longer to
# start than most tests take. One that is slow as a whole runs in parts, side by side: <name>.1, <name>.2 ...
# For each label L the target tests_L builds the programs that carry it ("concurrency" goes to the
# thread sanitizer). Sources find <gtest/gtest.h> and <gmock/gmock.h> precompiled, by lyn_test_main.
#
# lyn_add_program_test(NAME <name> COMMAND <command>... [LABELS <label>...] [TIMEOUT <seconds>])
#
# Adds any other command, with the same environment.
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
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;PARTS" "SOURCES;LIBRARIES;LABELS")
    if(arg_UNPARSED_ARGUMENTS OR NOT arg_NAME OR NOT arg_SOURCES)
        message(FATAL_ERROR "lyn_add_test: NAME and SOURCES are needed; not understood: '${arg_UNPARSED_ARGUMENTS}'")
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
    if(NOT arg_PARTS)
        lyn_add_program_test(NAME ${arg_NAME} COMMAND ${target} LABELS ${arg_LABELS})
        return()
    endif()
    foreach(part RANGE 1 ${arg_PARTS})
        math(EXPR index "${part} - 1")
        lyn_add_program_test(NAME ${arg_NAME}.${part} COMMAND ${target} LABELS ${arg_LABELS})
        set_property(TEST ${arg_NAME}.${part} APPEND PROPERTY ENVIRONMENT
            "GTEST_TOTAL_SHARDS=${arg_PARTS}" "GTEST_SHARD_INDEX=${index}")
        # The slow ones begin, so that no processor waits for the last of them.
        set_property(TEST ${arg_NAME}.${part} PROPERTY COST 100)
    endforeach()
endfunction()

# Lets a library of the tests, or a program that is no test, use the headers that lyn_test_main has precompiled.
function(lyn_use_test_headers target)
    target_precompile_headers(${target} REUSE_FROM lyn_test_main)
    # Compiled as they are, or they would not do.
    target_compile_options(${target} PRIVATE -pthread)
    target_link_libraries(${target} PRIVATE GTest::gmock GTest::gtest)
endfunction()

function(lyn_add_program_test)
    cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;TIMEOUT" "COMMAND;LABELS")
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 300)
    endif()
    add_test(NAME ${arg_NAME} COMMAND ${arg_COMMAND})
    set_tests_properties(${arg_NAME} PROPERTIES
        TIMEOUT ${arg_TIMEOUT} LABELS "${arg_LABELS}" ENVIRONMENT "${lyn_test_environment}")
endfunction()
