#!/usr/bin/env bash
# Builds the benchmarks and the program, runs them all, and prints what each reaches beside what it shall reach.
#
#   bench/run.sh              all areas
#   bench/run.sh gather ...   some of them
set -eu

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
cd "$root"
"$root/tools/setup-debian.sh" test >/dev/null
cmake --log-level=WARNING --preset release >/dev/null
cmake --build --preset release -- -j "$(nproc)" >/dev/null
exec python3 "$root/bench/table.py" "$root/build/release/bin" "$@"
