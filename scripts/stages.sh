# SPDX-License-Identifier: Apache-2.0
# shellcheck shell=bash
#
# The stages of ./test and how one of them is run. Sourced by ./test, in the folder of the project.

# The release stage is the last one, so that its summary, of all tests, ends the output, and the path of the
# page that they make.
all_stages=(format build asan fuzz tsan tidy vm release)

declare -A about=(
    [format]="every source is formatted as .clang-format says"
    [build]="GCC builds everything, optimised, without a warning"
    [asan]="all tests under Clang's sanitizers; they execute 95 % of the lines of core/ and src/ at least"
    [fuzz]="the fuzzers' seeds, and a fixed number of further inputs for each"
    [tsan]="the concurrent tests under Clang's thread sanitizer"
    [tidy]="clang-tidy finds nothing in the library, the platforms and the tools"
    [vm]="system tests in virtual machines, with real kernel, bluetoothd and access point"
    [release]="all tests of the optimised build; they reach every log line, result, state and return value"
)

jobs="${JOBS:-$(nproc)}"
lowest_line_coverage=95
logs=build/test-logs

is_stage()
{
    [[ " ${all_stages[*]} " == *" $1 "* ]]
}

list_stages()
{
    local stage
    for stage in "${all_stages[@]}"; do
        printf '%-9s %s\n' "$stage" "${about[$stage]}"
    done
}

# ---- What each stage does ----------------------------------------------------------------------------

# The build preset, and the configure preset where it has another name.
build_preset()
{
    cmake --preset "${2:-$1}" && cmake --build --preset "$1" -j "$jobs"
}

# Runs the tests of a preset, whose build is in the folder, and counts those within its programs.
run_tests()
{
    # Many tests wait for most of their time: for a phone that is silent, for a program that starts.
    ctest --preset "$1" -j $((2 * jobs)) || return
    grep -ho '^\[  PASSED  \] [0-9]* test' "$2/Testing/Temporary/LastTest.log" |
        awk '{ all += $4 } END { print all " tests in " NR " programs passed" }'
}

stage_format()
{
    scripts/format --check
}

stage_build()
{
    build_preset release
}

stage_asan()
{
    # Counts of an earlier run would be added to.
    build_preset asan && rm -rf build/asan/profile && run_tests asan build/asan &&
        scripts/coverage-report build/asan "$lowest_line_coverage"
}

stage_fuzz()
{
    build_preset fuzz asan && ctest --preset fuzz -j "$jobs"
}

stage_tsan()
{
    build_preset tsan && run_tests tsan build/tsan
}

stage_tidy()
{
    # The build makes the generated sources and the list of commands.
    build_preset asan && JOBS="$jobs" scripts/tidy build/asan
}

stage_vm()
{
    build_preset release || return
    local status=0
    tests/vm/run || status=$?
    # This machine cannot: that is no reason to believe that all is well.
    [ "$status" -ne 3 ] || cat <<'EOT'
************************************************************************************************
NOT TESTED: the system tests need virtual machines, and none can be started on this machine.
The reason stands above. Everything else can be tested with: ./test --no-vm
************************************************************************************************
EOT
    return "$status"
}

stage_release()
{
    # What the tests have seen of the library becomes a page, and must be all that there is.
    local reference="$PWD/build/release/reference"
    rm -rf "$reference" && mkdir -p "$reference/seen" &&
        LYN_TEST_SEEN="$reference/seen" run_tests release build/release &&
        tests/reference/write_page.py . "$reference/seen" "$reference/reference.md"
}

# ---- Running one -------------------------------------------------------------------------------------

# A line about where a running stage is, for somebody who waits: on a terminal it replaces the last one.
show_progress()
{
    local line
    line="$(printf '%-9s %4d s  %s' "$1" "$3" "$(tail -n 1 "$2" | tr -d '\r' | cut -c 1-80)")"
    if [ -t 1 ]; then
        printf '\r\033[K%s' "$line"
    else
        echo "$line"
    fi
}

# Runs a stage in a process group of its own, so that an interrupt can end all of it.
run_quietly()
{
    local stage="$1" log="$2" start="$SECONDS" pause=1 shown=0 pid status=0
    [ -t 1 ] || pause=30
    set -m
    "stage_$stage" >"$log" 2>&1 </dev/null &
    pid=$!
    set +m
    trap 'kill -- "-$pid" 2>/dev/null; exit 130' INT TERM
    while sleep 0.5 && kill -0 "$pid" 2>/dev/null; do
        if [ $((SECONDS - start - shown)) -ge "$pause" ]; then
            shown=$((SECONDS - start))
            show_progress "$stage" "$log" "$shown"
        fi
    done
    wait "$pid" || status=$?
    trap - INT TERM
    [ ! -t 1 ] || printf '\r\033[K'
    return "$status"
}

run_stage()
{
    local stage="$1" verbose="$2" log="$logs/$1.log" start="$SECONDS" status=0
    mkdir -p "$logs"
    echo "==> $stage: ${about[$stage]}"
    if [ "$verbose" = yes ] || [ "$stage" = release ]; then
        "stage_$stage" </dev/null 2>&1 | tee "$log" || status=$?
    else
        run_quietly "$stage" "$log" || status=$?
        [ "$status" -eq 0 ] || tail -n 80 "$log"
    fi
    if [ "$status" -ne 0 ]; then
        echo "test: stage '$stage' FAILED after $((SECONDS - start)) s; all of its output: $log" >&2
        echo "test: run it alone with: ./test --only $stage" >&2
        exit 1
    fi
    [ "$stage" = release ] || result_line "$stage" "$log" $((SECONDS - start))
}

# What came out of a stage, in one line: the tests and the coverage, where there are any.
result_line()
{
    local stage="$1" log="$2" seconds="$3" found
    found="$(grep -E '^(100% tests passed|[0-9]+ tests in |[0-9]+ sources |lines: |branches: |[0-9]+ of [0-9]+ cases passed)' "$log" | tr '\n' ' ' || true)"
    printf '%-9s ok, %d s  %s\n' "$stage" "$seconds" "$found"
}
