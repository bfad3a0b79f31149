#!/usr/bin/env bash
# Makes the sample machine from nothing: builds installers, runs them in a new Wine prefix, records what they left.
#
#   tools/make-sample.sh                writes samples/machine again
#   tools/make-sample.sh --out DIR      writes the recorded folder to DIR, which must not exist
#   tools/make-sample.sh --prefix DIR   makes the Wine prefix DIR with everything installed and keeps it; records nothing
#
# Needs Debian's wine, wine32:i386, wixl, msitools, nsis, mingw-w64, faketime and python3, 2 GB of temporary space and
# about half a minute; no display and no network.
# A second run gives the same bytes: the packages are built at a fixed time (faketime), and what the installers take from
# the real clock is made fixed when it is recorded; tools/sample/record.py says which texts these are.
set -euo pipefail

here=$(cd "$(dirname "$0")" && pwd)
sources=$here/sample
out=$here/../samples/machine
prefix=
replace=yes

usage() {
    sed -n '2,7s/^# \{0,1\}//p' "$0" >&2
    exit 2
}

while [ $# -gt 0 ]; do
    case $1 in
        --out) [ $# -ge 2 ] || usage; out=$2; replace=no; shift 2 ;;
        --prefix) [ $# -ge 2 ] || usage; prefix=$2; shift 2 ;;
        *) usage ;;
    esac
done

for tool in wine wineserver wixl msibuild makensis faketime python3 x86_64-w64-mingw32-gcc i686-w64-mingw32-gcc; do
    command -v "$tool" >/dev/null || { echo "make-sample: $tool is not installed" >&2; exit 1; }
done
# The work is done in other folders: a path from the caller's is made a full one.
out=$(realpath -m "$out")
if [ -n "$prefix" ]; then prefix=$(realpath -m "$prefix"); fi
target=${prefix:-$out}
if [ -e "$target" ] && { [ -n "$prefix" ] || [ $replace = no ]; }; then
    echo "make-sample: $target exists" >&2
    exit 1
fi

work=$(mktemp -d)
finish() {
    # Ends the processes of this prefix alone; the user's other ones go on.
    if [ -d "${WINEPREFIX:-}" ]; then wineserver -k 2>/dev/null || true; fi
    rm -rf "$work"
}
trap finish EXIT

build=$work/build
mkdir -p "$build" "$work/home" "$work/before" "$work/after"

# The name, home and display of who runs this stay out of the sample: Wine takes the profile's name from USER and links
# the profile's folders to HOME.
export USER=sample LOGNAME=sample HOME=$work/home WINEDEBUG=-all
export WINEDLLOVERRIDES="mscoree,mshtml,winemenubuilder.exe="
export WINEPREFIX=${prefix:-$work/prefix}
export LC_ALL=C.UTF-8 TZ=UTC
unset DISPLAY WAYLAND_DISPLAY WINEARCH
mkdir -p "$(dirname "$WINEPREFIX")"

# program NAME BITS KIND MAKER PRODUCT VERSION ICON: NAME.exe or NAME.dll (KIND) with its icon and version resource.
program() {
    local name=$1 bits=$2 kind=$3 maker=$4 product=$5 version=$6 icon=$7
    local cpu=x86_64 entry=start type=VFT_APP
    local flags=(-nostdlib -Os -s -Wl,--no-insert-timestamp "-DPROGRAM_NAME=\"$name\"")
    [ "$bits" = 32 ] && cpu=i686
    if [ "$kind" = dll ]; then
        flags+=(-shared)
        type=VFT_DLL
        # The 32-bit calling convention puts the size of the arguments behind the name.
        [ "$bits" = 32 ] && entry=start@12
    fi
    [ "$bits" = 32 ] && entry=_$entry
    sed -e "s|@ICON@|$icon.ico|; s|@MAKER@|$maker|; s|@NAME@|$product|; s|@VERSION@|$version|; s|@FILETYPE@|$type|" \
        -e "s|@COMMAS@|${version//./,}|" "$sources/program.rc.in" >"$name.rc"
    $cpu-w64-mingw32-windres -c 65001 "$name.rc" "$name.o"
    local source=program.c
    [ "$kind" = dll ] && source=library.c
    $cpu-w64-mingw32-gcc "${flags[@]}" -Wl,-e,"$entry" "$sources/$source" "$name.o" -o "$name.$kind" -lkernel32
}

build_programs() {
    local icon="python3 $sources/icons.py"
    # One icon with every form of an image, one with palettes alone, and small ones.
    $icon plotter.ico 210 16:8,32:8,48:8,16:32,32:32,48:32,256:png
    $icon fennmark.ico 25 16:8,32:8,48:8
    $icon ledger.ico 140 16:8,32:32,48:png
    $icon stardiary.ico 260 16:32,32:32
    $icon notes.ico 0 16:8,32:8,32:32
    $icon starmap.ico 240 16:32,32:32,48:32
    $icon journeys.ico 45 32:8,48:png
    $icon otterquill.ico 180 16:8,32:32
    $icon link.ico 320 16:8,32:8

    program plotter 64 exe "Tarnwick Instruments" "Tarnwick Plotter" 2.4.1.0 plotter
    program plotcore 64 dll "Tarnwick Instruments" "Tarnwick Plotter Core" 2.4.1.0 link
    program parts 64 dll "Tarnwick Instruments" "Tarnwick Shared Parts" 2.4.0.0 link
    program ledger 32 exe "Brackenfold & Søn" "Brackenfold Ledger" 7.0.12.0 ledger
    program keeper 32 exe "Brackenfold & Søn" "Brackenfold Ledger Keeper" 7.0.12.0 link
    program ledgerx 32 dll "Brackenfold & Søn" "Brackenfold Ledger Books" 7.0.12.0 link
    program stardiary 64 exe "Εργαστήριο Φαρόπετρα" "Ημερολόγιο Αστέρων" 1.2.0.0 stardiary
    program fennarc 32 exe "Fennmark Tools" "Fennmark Archiver" 4.2.0.118 fennmark
    program fennpack 32 dll "Fennmark Tools" "Fennmark Packing" 4.2.0.118 link
    program preview 32 dll "Fennmark Tools" "Fennmark Preview" 4.2.1.0 link
    program notes 32 exe "Мастерская Пустельгина" "Пустельгин Блокнот" 0.9.7.0 notes
    program starmap 64 exe "架空ほしあかり工房" "星図しらべ" 12.0.0.0 starmap
    program journeys 32 exe "ورشة نخلة الخيال" "دفتر الرحلات" 2.0.0.0 journeys
    program otterquill 32 exe "Lutrine Letters" "Otterquill 🦦" 1.0.3.0 otterquill
    program link64 64 exe "Osmundgate Networks" "Osmundgate Link" 5.1.64.0 link
    program link32 32 exe "Osmundgate Networks" "Osmundgate Link" 5.1.32.0 link
    program letters 32 exe "Lutrine Letters" "Otterquill Letterheads" 1.0.0.0 otterquill
    program spelling 32 dll "Lutrine Letters" "Lutrine Spelling Service" 3.1.0.0 link
    program relay 32 exe "Osmundgate Networks" "Osmundgate Relay" 5.0.0.0 link
    program keys 32 exe "Osmundgate Networks" "Osmundgate Keys" 2.2.0.0 link
    program viewer 32 exe "Fennmark Tools" "Fennmark Viewer" 2.0.0.0 fennmark
    x86_64-w64-mingw32-gcc -municode -Os -s "$sources/shortnames.c" -o shortnames.exe
}

build_texts() {
    printf 'Roll of paper, 24 inches wide\r\n' >roll.txt
    printf 'Grid paper, one line a millimetre\r\n' >grid.txt
    printf 'Fennmark Archiver packs folders into bundles.\r\n' >archiver.txt
    printf 'bundle 1\r\n' >bundle.fmt
    printf 'Rollup 3: bundles of more than 4 GB.\r\n' >changes.txt
    printf 'Образец записи\r\n' >notes.txt
    printf '北斗七星\r\n' >northsky.txt
    printf 'Two otters 🦦🦦\r\n' >otters.txt
}

# package NAME ARCH CODE TITLE: NAME.msi from NAME.wxs; the rest goes to wixl. The builder has no way to say the package
# code, so it is put in afterwards.
package() {
    local name=$1 source=$2 arch=$3 code=$4 title=$5
    shift 5
    cp "$sources/$source.wxs" .
    # Files carry their dates into the cabinet, and the builder writes the time into the summary.
    touch -d 2024-03-15T12:00:00Z ./*
    faketime -f '2024-03-15 12:00:00' wixl -a "$arch" "$@" -o "$name.msi" "$source.wxs"
    local template=x64
    [ "$arch" = x86 ] && template=Intel
    faketime -f '2024-03-15 12:00:00' msibuild "$name.msi" -s "$title" "Sample" "$template;1033" "{$code}"
}

# Latin names stand in the package's source; these queries give the finished package its Greek ones.
translate_stardiary() {
    printf '\r\n\r\n65001\t_ForceCodepage\r\n' >codepage.idt
    local query=()
    set_text() { query+=(-q "UPDATE \`$1\` SET \`$2\` = '$3' WHERE \`$1\` = '$4'"); }
    set_text Property Value 'Ημερολόγιο Αστέρων' ProductName
    set_text Property Value 'Εργαστήριο Φαρόπετρα' Manufacturer
    set_text Directory DefaultDir 'diary|Ημερολόγιο Αστέρων' INSTALLDIR
    set_text File FileName 'stars.exe|αστέρες.exe' stardiary.exe
    set_text Shortcut Name 'diary|Ημερολόγιο Αστέρων' MenuShortcut
    query+=(-q "UPDATE \`Registry\` SET \`Key\` = 'Software\\Φαρόπετρα\\Ημερολόγιο'")
    query+=(-q "UPDATE \`Registry\` SET \`Name\` = 'Έκδοση'")
    faketime -f '2024-03-15 12:00:00' msibuild stardiary.msi -i codepage.idt
    local i
    for ((i = 0; i < ${#query[@]}; i += 2)); do
        faketime -f '2024-03-15 12:00:00' msibuild stardiary.msi "${query[@]:i:2}"
    done
}

build_installers() {
    local plotter=5B0E8D0C-3A3B-4F0E-9C55-2D3C7A1E
    package plotter230 plotter x64 ${plotter}4330 "Tarnwick Plotter" -D Version=2.3.0 -D ProductCode=${plotter}4230
    package plotter241 plotter x64 ${plotter}4341 "Tarnwick Plotter" -D Version=2.4.1 -D ProductCode=${plotter}4241
    package ledger ledger x86 8F2A6B31-0D44-4C6E-A1B7-6E9D5C2F5102 "Brackenfold Ledger"
    package stardiary stardiary x64 C14D9E57-7B62-4A08-8E3F-90B1A4D76202 "Star Diary"
    translate_stardiary
    package sharedparts sharedparts x64 2E7C1F90-64AD-4B1B-B2D8-13F5E8A97302 "Tarnwick Shared Parts"
    cp "$sources"/*.nsi "$sources"/*.nsh .
    local script
    for script in *.nsi; do
        makensis -V1 -NOCD -INPUTCHARSET UTF8 "$script"
    done
}

# A Windows program of the prefix; the limit is there so that one that waits for somebody ends too.
run() {
    timeout 300 wine "$@" >/dev/null 2>&1 || { echo "make-sample: failed: $*" >&2; exit 1; }
}

make_prefix() {
    run wineboot -i
    wineserver -w
    run winecfg -v win10
    wineserver -w
    # The profile's folders are links to HOME at first; as folders they belong to the machine.
    find "$WINEPREFIX/drive_c/users" -type l | while IFS= read -r link; do
        rm "$link"
        mkdir "$link"
    done
}

# export_registry DIR: both trees of the registry. The 64-bit view is asked for by name: plain `wine` starts 32-bit tools.
export_registry() {
    local folder="Z:${1//\//\\}"
    run reg export HKLM "$folder\\machine.reg" /y /reg:64
    run reg export HKCU "$folder\\user.reg" /y /reg:64
}

run_installers() {
    local setup=$WINEPREFIX/drive_c/setup name
    mkdir "$setup"
    cp "$build"/*.msi "$build"/*-setup.exe "$setup"
    cd "$setup"
    # Each from a folder of its own, as from a disk of its maker: the folder that a package came from says who belongs
    # together.
    for name in plotter230 plotter241 ledger stardiary sharedparts; do
        mkdir "$setup/$name"
        mv "$setup/$name.msi" "$setup/$name"
        run msiexec /i "C:\\setup\\$name\\$name.msi" /qn
    done
    # The update comes behind the program that it updates.
    for name in archiver rollup notes starmap journeys otterquill gateway companions; do
        run "C:\\setup\\$name-setup.exe" /S
    done
    wineserver -w
    cd "$build"
    rm -r "$setup"
    python3 "$sources/storepackages.py" "$WINEPREFIX/drive_c" "$work/packages.reg"
    run reg import "Z:${work//\//\\}\\packages.reg" /reg:64
    wineserver -w
}

# write_rules DIR: the rule files, as a host has them beside it: lines with CR LF, rule texts in UTF-16 with a mark.
write_rules() {
    local file target
    (cd "$sources/Config" && find . -type f) | while IFS= read -r file; do
        target=$1/$file
        mkdir -p "$(dirname "$target")"
        if [ "${file##*.}" = ini ]; then
            sed 's/$/\r/' "$sources/Config/$file" >"$target"
        else
            { printf '\xff\xfe' && sed 's/$/\r/' "$sources/Config/$file" | iconv -f UTF-8 -t UTF-16LE; } >"$target"
        fi
    done
}

short_names() {
    local drive=$WINEPREFIX/drive_c
    (cd "$drive" && find . -mindepth 1 | sed 's|^\./|C:/|; s|/|\\|g') | iconv -t UTF-16LE >"$work/long"
    run "$build/shortnames.exe" "Z:${work//\//\\}\\long" "Z:${work//\//\\}\\short"
}

cd "$build"
build_programs
build_texts
build_installers
make_prefix
if [ -n "$prefix" ]; then
    run_installers
    exit 0
fi

export_registry "$work/before"
(cd "$WINEPREFIX/drive_c" && find . -type f | sed 's|^\./||') >"$work/before/files"
run_installers
export_registry "$work/after"
short_names
wineserver -w
# The old sample goes only when the new one is whole.
python3 "$sources/record.py" "$work/before" "$work/after" "$WINEPREFIX" "$work/short" "$work/machine"
write_rules "$work/machine/host/Config"
mkdir -p "$(dirname "$out")"
if [ $replace = yes ]; then rm -rf "$out"; fi
mv "$work/machine" "$out"
