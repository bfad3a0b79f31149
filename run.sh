#!/usr/bin/env bash
# Builds the program when needed and runs it with the arguments given; without any it lists the sample machine.
# Without --machine and ROUNDUP_MACHINE it acts on the sample machine. Paths are relative to the caller's folder.
set -euo pipefail

root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
build=$root/build/program
mkdir -p "$build"

prepare() {
    "$root/tools/setup-debian.sh" run && cd "$root" && cmake --preset program && cmake --build --preset program
}

[[ -t 2 && ! -x $build/bin/roundup ]] && echo "run.sh: building roundup, which takes some minutes the first time" >&2
(
    flock 9
    if ! (prepare) >"$build/run.log" 2>&1; then
        cat "$build/run.log" >&2
        echo "run.sh: the build failed" >&2
        exit 1
    fi
) 9>"$build/run.lock"

(($#)) || set -- list
machine_given=no
for argument in "$@"; do
    [[ $argument == --machine || $argument == --machine=* ]] && machine_given=yes
done
if [[ $machine_given == no && -z ${ROUNDUP_MACHINE:-} ]]; then
    export ROUNDUP_MACHINE=$root/samples/machine
fi
exec "$build/bin/roundup" "$@"
