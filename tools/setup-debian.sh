#!/usr/bin/env bash
# Installs what is missing on a Debian 12 machine.
#
#   tools/setup-debian.sh run     what building and running the program needs
#   tools/setup-debian.sh test    that, and what ./test.sh needs (the default)
#
# Needs root or sudo only when something is missing. Writes nothing when all is there.
set -euo pipefail

level=${1:-test}
packages=(g++ cmake ninja-build pkg-config
    libhivex-dev libpng-dev
    libcli11-dev nlohmann-json3-dev)
optional=()
case $level in
run) ;;
test)
    # clang 16 is the first one that knows std::source_location; clang-format 14 is what the tree is formatted with.
    packages+=(git python3 ccache binutils dpkg-dev xz-utils expect
        libgtest-dev libgmock-dev googletest libbenchmark-dev
        clang-16 clang-tidy-16 libclang-rt-16-dev clang-format-14
        libmsi-dev libglib2.0-dev liblnk-dev libbfio-dev
        libhivex-bin msitools wixl nsis faketime
        g++-mingw-w64-x86-64-posix g++-mingw-w64-i686-posix
        wine wine64 wine32:i386 xvfb)
    # Opens the report as a reader would; without it that one step says so and passes.
    optional=(chromium)
    ;;
*)
    echo "usage: $0 [run|test]" >&2
    exit 2
    ;;
esac

if ! command -v dpkg-query >/dev/null; then
    echo "setup: not a Debian machine; install by hand what is missing of: ${packages[*]}" >&2
    exit 0
fi

wanted=()
native=$(dpkg --print-architecture)
missing=()
list_missing() {
    local package architecture status
    local -A installed=()
    while read -r package architecture status; do
        [[ $status == installed ]] || continue
        [[ $architecture == "$native" || $architecture == all ]] && installed[$package]=1
        installed[$package:$architecture]=1
    done < <(dpkg-query -W -f '${Package} ${Architecture} ${db:Status-Status}\n' "${packages[@]}" 2>/dev/null)
    missing=()
    for package in "${packages[@]}"; do
        [[ -n ${installed[$package]:-} ]] || missing+=("$package")
    done
}

list_missing
for package in "${optional[@]}"; do
    [[ $(dpkg-query -W -f '${db:Status-Status}' "$package" 2>/dev/null) == installed ]] || wanted+=("$package")
done
((${#missing[@]} + ${#wanted[@]})) || exit 0

root=()
if [[ $(id -u) != 0 ]]; then
    if ! command -v sudo >/dev/null; then
        ((${#missing[@]})) || exit 0
        echo "setup: these packages are missing, and only root can install them: ${missing[*]}" >&2
        exit 1
    fi
    root=(sudo)
fi

log=$(mktemp)
trap 'rm -f "$log"' EXIT
quietly() { "${root[@]}" env DEBIAN_FRONTEND=noninteractive "$@" >>"$log" 2>&1 </dev/null; }
install() { quietly apt-get install -y --no-install-recommends -o DPkg::Lock::Timeout=300 "$@" "${missing[@]}"; }

if [[ " ${missing[*]} " == *:i386* && $(dpkg --print-foreign-architectures) != *i386* ]]; then
    quietly dpkg --add-architecture i386
    quietly apt-get update || true
fi
# A machine's package lists can be old, or fetched while the mirror was changing. The last try leaves the updates
# aside: a library that is there for two architectures cannot be raised for one of them.
release=$(. /etc/os-release && echo "${VERSION_CODENAME:-stable}")
((${#missing[@]} == 0)) || install || { quietly apt-get update || true; install; } || install -t "$release" || true

list_missing
if ((${#missing[@]})); then
    cat "$log" >&2
    echo "setup: could not install: ${missing[*]}" >&2
    exit 1
fi
missing=("${wanted[@]}")
((${#missing[@]} == 0)) || install || { quietly apt-get update || true; install; } || true
