#!/usr/bin/env bash
# Checks everything: sources, native builds, sanitizers, fuzz targets, Windows builds under Wine.
#
#   ./test.sh                    all
#   ./test.sh checks asan ...    some of: checks native prefix asan tsan fuzz tidy windows
#
# Every step runs, also when one before it failed. Logs of the steps lie in build/test-logs. The last line is
# "N passed, N failed", counted in steps; the exit status is 1 when one failed.
set -u

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
cd "$root" || exit 1
logs=$root/build/test-logs
jobs=$(nproc)
# Clones in different folders share what the compiler cache holds.
export CCACHE_BASEDIR=$root CCACHE_NOHASHDIR=1
groups=("$@")
((${#groups[@]})) || groups=(checks native prefix asan tsan fuzz tidy windows)

passed=0
failures=()
scratch=$(mktemp -d)
mkdir -p "$logs"

# --- Steps ------------------------------------------------------------------------------------------------------------

# record NAME STATUS SECONDS
record() {
    if (($2 == 0)); then
        passed=$((passed + 1))
        printf 'ok    %-40s %4ds\n' "$1" "$3"
    else
        failures+=("$1")
        printf 'FAIL  %-40s %4ds\n' "$1" "$3"
        grep -vE "^\[[0-9]+/[0-9]+\]" "$logs/${1//\//-}.log" | tail -n 40 | sed 's/^/      /'
    fi
}

# step NAME COMMAND...: runs the command with its output in the step's log.
step() {
    local name=$1 start=$SECONDS status
    shift
    "$@" >"$logs/${name//\//-}.log" 2>&1 </dev/null
    status=$?
    record "$name" "$status" $((SECONDS - start))
    return "$status"
}

# start_step NAME COMMAND...: the same beside others, at most as many as there are processors; finish_steps waits.
started=()
pids=()
start_step() {
    local name=$1
    shift
    ((${#pids[@]} < jobs)) || { wait "${pids[0]}" && pids=("${pids[@]:1}"); }
    started+=("$name")
    (
        begin=$SECONDS
        "$@" >"$logs/${name//\//-}.log" 2>&1 </dev/null
        echo "$? $((SECONDS - begin))" >"$scratch/${name//\//-}.result"
    ) &
    pids+=($!)
}
finish_steps() {
    local name status seconds
    ((${#pids[@]})) && wait "${pids[@]}"
    for name in "${started[@]}"; do
        read -r status seconds <"$scratch/${name//\//-}.result"
        record "$name" "$status" "$seconds"
    done
    started=()
    pids=()
}

not_run() {
    echo "not run, because $2 failed" >"$logs/${1//\//-}.log"
    record "$1" 1 0
}

# build PRESET
build() { step "$1/build" bash -c "cmake --log-level=WARNING --preset $1 && cmake --build --preset $1 -- -k 0 -j $jobs"; }

# run_binaries PRESET COMMAND...: every test binary of a build, each in one process, with the command before it. That
# one process goes through machine after machine shows what outlives its machine; ctest gives each test its own.
run_binaries() {
    local preset=$1 binary
    shift
    for binary in build/"$preset"/bin/test_*; do
        [[ -x $binary && ($binary != *.* || $binary == *.exe) ]] || continue
        step "$preset/$(basename "$binary" .exe)" timeout 400 "$@" "$binary" --gtest_brief=1
    done
}

# --- Groups -----------------------------------------------------------------------------------------------------------

run_checks() {
    step check-includes tools/check-includes
    step check-format tools/check-format
    step check-words tools/check-words
}

run_native() {
    # The sanitizers' builds are the debug builds: one more would find nothing that they do not.
    if build release; then
        step release/ctest ctest --preset release -j "$jobs" --no-tests=error --output-on-failure
    else
        not_run release/ctest release/build
    fi
    step release/exports tools/check-exports build/release/bin/libroundup.so
    step release/kit tools/check-kit build/release
    step release/readme tools/check-readme build/release/bin/roundup
    step release/packages tools/check-packages build/release
    step release/report tools/check-report build/release/bin/roundup samples/machine
}

# Real installers run in a Wine prefix; what the program reads of it from outside is what its registry says inside.
run_prefix() {
    local program=build/release/bin/roundup
    [[ -x $program ]] || build release || return
    if step prefix/make tools/make-sample.sh --prefix "$scratch/sample"; then
        step prefix/compare tools/check-prefix "$program" "$scratch/sample"
    else
        not_run prefix/compare prefix/make
    fi
}

run_tidy() {
    # Only the compile commands of the debug build are needed, of the sources that there are now.
    cmake --preset debug >/dev/null
    step tidy tools/check-tidy --build build/debug --jobs "$jobs" --seconds 240
}

run_asan() {
    export ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1 UBSAN_OPTIONS=print_stacktrace=1
    build asan || return
    run_binaries asan
}

run_tsan() {
    local fixed=()
    # The runtime of the compiler cannot cope with the widest randomisation of addresses that kernels do.
    setarch -R true 2>/dev/null && fixed=(setarch -R)
    export TSAN_OPTIONS=second_deadlock_stack=1
    build tsan || return
    run_binaries tsan "${fixed[@]}"
}

run_fuzz() {
    local binary name
    # Another than GCC compiles what the address sanitizer watches, so that one build serves its tests and the targets.
    [[ -x build/asan/bin/fuzz_link ]] || build asan || return
    for binary in build/asan/bin/fuzz_*; do
        [[ -x $binary ]] || continue
        name=$(basename "$binary")
        name=${name#fuzz_}
        mkdir -p "$scratch/corpus/$name" "$logs/fuzz"
        start_step "fuzz/$name" timeout 120 "$binary" -runs=20000 -max_total_time=20 -timeout=10 -rss_limit_mb=2048 \
            -print_final_stats=1 -artifact_prefix="$logs/fuzz/$name-" "$scratch/corpus/$name" "tests/fuzz/corpus/$name"
    done
    finish_steps
}

wine_started=no
# The prefix of the sample, with Windows 10 and real packages in it: the program's tests meet what installers leave.
start_wine() {
    [[ -d $scratch/sample ]] || tools/make-sample.sh --prefix "$scratch/sample" || return
    # The user whose profile it has.
    export WINEPREFIX=$scratch/sample USER=sample LOGNAME=sample WINEDEBUG=-all
    # Neither .NET nor a browser is wanted, and Wine would ask a person whether to download them.
    export WINEDLLOVERRIDES='mscoree,mshtml='
    if command -v Xvfb >/dev/null; then
        Xvfb -displayfd 3 -screen 0 1024x768x24 -nolisten tcp 3>"$scratch/display" >/dev/null 2>&1 &
        xvfb=$!
        for _ in {1..50}; do
            [[ -s $scratch/display ]] && break
            sleep 0.1
        done
        export DISPLAY=:$(cat "$scratch/display")
    fi
    wine_started=yes
    timeout 180 wine cmd /c ver && wineserver -w
}

# Packages as others ship them, where there are any. Wine cannot install each of them; those that it can are compared
# with the rest.
install_real_packages() {
    local package name
    for package in ../shared/data/msi/*.msi; do
        [[ -f $package ]] || continue
        name=$(basename "$package")
        if timeout 120 wine msiexec /i "Z:$(realpath "$package" | tr / '\\')" /qn; then
            echo "installed: $name"
        else
            echo "not installed: $name"
        fi
    done
    wineserver -w
}

# Stripped, as it is shipped.
check_size() {
    local cpu=x86_64
    [[ $1 == mingw32 ]] && cpu=i686
    $cpu-w64-mingw32-strip -o "$scratch/stripped.dll" "build/$1/bin/Roundup.dll" || return
    echo "$(stat -c %s "$scratch/stripped.dll") bytes"
    (($(stat -c %s "$scratch/stripped.dll") < 3000000))
}

run_windows() {
    local preset built=()
    for preset in mingw64 mingw32; do
        build "$preset" && built+=("build/$preset")
    done
    step wine/prefix start_wine || return
    step wine/real-packages install_real_packages
    # Before the tests leave anything there.
    [[ -x build/release/bin/roundup ]] || build release
    step wine/compare tools/check-windows build/release/bin/roundup "$WINEPREFIX" "${built[@]/%//bin/roundup.exe}"
    for preset in "${built[@]#build/}"; do
        run_binaries "$preset" wine
        step "$preset/exports" tools/check-exports "build/$preset/bin/Roundup.dll"
        step "$preset/size" check_size "$preset"
        step "$preset/kit" tools/check-kit "build/$preset"
        step "$preset/uninstall" tools/check-uninstall "build/$preset/bin"
    done
    ((${#built[@]} < 2)) || step windows/packages tools/check-packages build/release "${built[@]}"
}

finish() {
    if [[ $wine_started == yes ]]; then
        wineserver -k 2>/dev/null
        [[ -n ${xvfb:-} ]] && kill "$xvfb" 2>/dev/null
    fi
    rm -rf "$scratch"
}
trap finish EXIT

step setup tools/setup-debian.sh test
for group in "${groups[@]}"; do
    if ! declare -F "run_$group" >/dev/null; then
        echo "test.sh: no group $group" >&2
        exit 2
    fi
    "run_$group"
done

((${#failures[@]})) && printf '\nFailed: %s\n' "${failures[*]}"
printf '\n%d seconds\n%d passed, %d failed\n' "$SECONDS" "$passed" "${#failures[@]}"
((${#failures[@]} == 0))
