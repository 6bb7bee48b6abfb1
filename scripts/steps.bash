# What the scripts that build and test share: steps with their times, builds of presets, the count of tests.

passed=0
failed=0
skipped=0
failures=()

# Seconds of the processor that what this shell started, and waited for, has used so far.
processor_seconds() {
    local stat
    read -r -a stat <"/proc/$$/stat"
    printf '%d' "$(((stat[15] + stat[16]) / $(getconf CLK_TCK)))"
}

# step HEADING COMMAND...: the command's exit code is the step's.
step_times=()
step() {
    local heading=$1 begin=$SECONDS used ended=
    shift
    used=$(processor_seconds)
    printf '\n== %s\n' "$heading"
    "$@"
    local code=$?
    [ "$code" -eq 0 ] || ended=": FAILED"
    printf '== %s%s: %d s\n' "$heading" "$ended" "$((SECONDS - begin))"
    step_times+=("$(printf '%6d s %6d s  %s%s' "$((SECONDS - begin))" "$(($(processor_seconds) - used))" "$heading" "$ended")")
    return "$code"
}

# One that is no test: a failure counts as one failed.
check() {
    step "$@" || failed=$((failed + 1))
}

# Headers that are precompiled are part of what the cache compares.
export CCACHE_SLOPPINESS=pch_defines,time_macros

# A user without a home has no place for its cache.
can_use_ccache() {
    local cache
    cache=$(ccache --get-config cache_dir 2>/dev/null) && mkdir -p "$cache" 2>/dev/null && [ -w "$cache" ]
}

# build PRESET [OPTION...]: the options are those of "cmake --build"; configure_options may hold some for configuring.
configure_options=()
build() {
    local preset=$1 launcher=()
    shift
    can_use_ccache && launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
    # Results of an earlier run must not be counted should this one not get so far.
    rm -rf "build/$preset/tests.xml" "build/$preset/test-reports"
    cmake --preset "$preset" "${launcher[@]}" "${configure_options[@]}" >"build/$preset-configure.log" 2>&1 || {
        cat "build/$preset-configure.log"
        return 1
    }
    cmake --build --preset "$preset" --parallel "$(nproc)" "$@"
}

# Adds up the cases of a preset's tests: those that are tests of ctest stand in its JUnit report, those of a program that
# is one test in the program's own. A test that could not be run at all stands there as skipped, but it is a failure.
count_tests() {
    local folder=$1 report name all run off bad
    grep '<testcase ' "$folder/tests.xml" >"$folder/tests.txt"
    for report in "$folder"/test-reports/*.xml; do
        [ -s "$report" ] || continue
        name=$(basename "$report" .xml)
        sed -i "/<testcase name=\"$name\"/d" "$folder/tests.txt"
        all=$(grep -c '<testcase ' "$report")
        off=$(grep -cE 'result="skipped"|status="notrun"' "$report")
        bad=$(sed -n 's/^<testsuites .* failures="\([0-9]*\)".*/\1/p' "$report")
        failed=$((failed + bad))
        skipped=$((skipped + off))
        passed=$((passed + all - off - bad))
    done
    all=$(wc -l <"$folder/tests.txt")
    run=$(grep -c ' status="run">' "$folder/tests.txt")
    off=$(grep -cE '<skipped message="SKIP_|<testcase .* status="disabled">' "$folder/tests.xml")
    passed=$((passed + run))
    skipped=$((skipped + off))
    failed=$((failed + all - run - off))
}

run_tests() {
    local folder="$PWD/build/$1" failed_before=$failed
    step "tests, preset $1" ctest --preset "$1" --output-junit "$folder/tests.xml"
    local code=$?
    [ -s "$folder/tests.xml" ] && count_tests "$folder"
    [ "$code" -eq 0 ] || failures+=("$(scripts/failed-tests "$folder")")
    # ctest can fail without a failed test, for example when there are none.
    [ "$code" -eq 0 ] || [ "$failed" -gt "$failed_before" ] || failed=$((failed + 1))
}

build_and_test() {
    if step "build, preset $1" build "$1"; then
        run_tests "$1"
    else
        failed=$((failed + 1))
    fi
}

# The last lines of a script, and its exit code. What failed stands there again: who sees only an end must see it.
summary() {
    [ "${#failures[@]}" -eq 0 ] || printf '\n%s\n' "${failures[@]}"
    printf '\n%8s %8s  step\n' time processor
    printf '%s\n' "${step_times[@]}"
    printf '%6d s %6d s  all steps\n' "$SECONDS" "$(processor_seconds)"
    printf '%d passed, %d failed, %d skipped\n' "$passed" "$failed" "$skipped"
    [ "$failed" -eq 0 ]
}

# Nothing that follows makes sense.
give_up() {
    failed=$((failed + 1))
    summary
    exit 1
}
