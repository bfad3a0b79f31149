#!/usr/bin/env python3
"""Writes what installers left in a Wine prefix as a recorded folder.

usage: record.py BEFORE AFTER PREFIX SHORT OUT

BEFORE and AFTER are folders with the registry exports machine.reg and user.reg of the prefix, taken before the first
installer ran and after the last one. PREFIX is the prefix, with its list of files from before as BEFORE/files. SHORT
is a text of short names, one "long<TAB>short" a line, UTF-16. OUT is the folder to write, which must not exist.

The idea: what the installers wrote is the difference between the two moments, so nothing has to know which keys an
installer may touch. To that come the few keys of the system itself that a reader of a machine asks for (KEPT), and from
it go the few that Wine wrote by itself meanwhile (NOISE); what is left out by that list is printed.

What differs from run to run is written as one fixed text, so that the sample made again is the same:
  - "InstallDate" becomes INSTALL_DATE: the installers write the day on which they ran;
  - the cached packages in windows\\Installer, which have names from the clock, are numbered in the order of the packed
    product codes, and the registry's paths to them follow;
  - the dates of the target's folders in shell links become LINK_DATE;
  - the computer's name becomes COMPUTER.
"""
import os
import re
import struct
import sys

INSTALL_DATE = "20240315"
COMPUTER = "SAMPLE-PC"
LINK_DATE = struct.pack("<HH", (2024 - 1980) << 9 | 3 << 5 | 15, 12 << 11)  # 2024-03-15 12:00, as DOS keeps it

HKLM = "HKEY_LOCAL_MACHINE"
CURRENT = r"\Microsoft\Windows\CurrentVersion"
EXPLORER = CURRENT + "\\Explorer"

# Keys of the system itself: the key and the values taken, None for all of them.
KEPT = [
    (HKLM + r"\Software" + CURRENT,
     ["CommonFilesDir", "CommonFilesDir (x86)", "ProgramFilesDir", "ProgramFilesDir (x86)", "ProgramFilesPath"]),
    (HKLM + r"\Software" + CURRENT + r"\Uninstall", None),
    (HKLM + r"\Software\Wow6432Node" + CURRENT + r"\Uninstall", None),
    (HKLM + r"\Software" + EXPLORER + r"\Shell Folders", None),
    (HKLM + r"\Software" + EXPLORER + r"\User Shell Folders", None),
    (HKLM + r"\Software\Wow6432Node" + EXPLORER + r"\Shell Folders", None),
    (HKLM + r"\Software\Wow6432Node" + EXPLORER + r"\User Shell Folders", None),
    (HKLM + r"\Software\Microsoft\Windows NT\CurrentVersion",
     ["CurrentBuild", "CurrentBuildNumber", "CurrentMajorVersionNumber", "CurrentMinorVersionNumber", "CurrentVersion",
      "ProductName", "SystemRoot"]),
    (HKLM + r"\Software\Microsoft\Windows NT\CurrentVersion\ProfileList", None),
    (HKLM + r"\Software\Microsoft\Windows NT\CurrentVersion\ProfileList\S-1-5-21-0-0-0-1000", None),
    (HKLM + r"\System\CurrentControlSet\Control\ComputerName\ComputerName", None),
    (HKLM + r"\System\CurrentControlSet\Control\Session Manager\Environment",
     ["ComSpec", "OS", "PATH", "PATHEXT", "PROCESSOR_ARCHITECTURE", "TEMP", "TMP", "windir"]),
    (r"HKEY_CURRENT_USER\Environment", None),
    (r"HKEY_CURRENT_USER\Software" + EXPLORER + r"\Shell Folders", None),
    (r"HKEY_CURRENT_USER\Software" + EXPLORER + r"\User Shell Folders", None),
]

# What Wine writes by itself between the two moments: the root of each tree, case ignored.
NOISE = [
    HKLM + r"\Hardware",
    HKLM + r"\Software\Microsoft\Cryptography\RNG",
    HKLM + r"\Software\Wine",
    HKLM + r"\System\CurrentControlSet\Control\Class",
    r"HKEY_CURRENT_USER\Software\Wine",
    r"HKEY_CURRENT_USER\Volatile Environment",
]

# Folders of drive C: that are no part of a machine's record: where the installers lay, and temporary files.
LEFT_OUT = ["setup", "windows/temp", "users/sample/Temp", "users/sample/AppData/Local/Temp"]


def read_export(path):
    """An export as {key: {value name as written: data as written, continuation lines and all}}."""
    with open(path, encoding="utf-16") as f:
        lines = f.read().split("\n")
    keys, values, name = {}, None, None
    for line in lines[1:]:
        if line.startswith("[") and line.endswith("]"):
            values, name = keys.setdefault(line[1:-1], {}), None
        elif re.match(r'(@|")', line):
            end = 1 if line[0] == "@" else re.match(r'"(?:[^"\\]|\\.)*"', line, re.S).end()
            name = line[:end]
            values[name] = line[end + 1:]
        elif line.strip() and name is not None:
            values[name] += "\n" + line
    return keys


def linked_keys(prefix):
    """The keys that are links to others (the shared ones of the 32-bit view): their content stands elsewhere."""
    links, key = [], None
    with open(os.path.join(prefix, "system.reg"), encoding="ascii") as f:
        for line in f:
            if line.startswith("["):
                key = line[1:line.rindex("]")].replace("\\\\", "\\")
            elif line.startswith("#link"):
                links.append((HKLM + "\\" + key).lower())
    return links


def below(key, roots):
    key = key.lower()
    return any(key == root or key.startswith(root + "\\") for root in roots)


def difference(before, after):
    """What AFTER has and BEFORE has not, or has otherwise."""
    out = {}
    for key, values in after.items():
        old = before.get(key)
        new = {n: d for n, d in values.items() if old is None or old.get(n) != d}
        if old is None or new:
            out[key] = new
    return out


def recorded_keys(before_dir, after_dir, prefix):
    links = linked_keys(prefix)
    noise = [n.lower() for n in NOISE]
    keys = {}
    for name in ("machine.reg", "user.reg"):
        before, after = (read_export(os.path.join(d, name)) for d in (before_dir, after_dir))
        for key, values in difference(before, after).items():
            if below(key, links):
                continue
            if below(key, noise):
                print("left out:", key, file=sys.stderr)
                continue
            keys[key] = values
        for key, wanted in KEPT:
            if key in after:
                kept = keys.setdefault(key, {})
                for value, data in after[key].items():
                    if wanted is None or value.strip('"') in wanted:
                        kept.setdefault(value, data)
    return keys


def number_packages(keys):
    """The new names of the cached packages, in the order of the products that they belong to."""
    names = {}
    for key in sorted(keys):
        path = keys[key].get('"LocalPackage"', "").strip('"').replace("\\\\", "\\")
        if path:
            old = path.rsplit("\\", 1)[1].lower()
            names.setdefault(old, "%x%s" % (0x1A2B0 + len(names), os.path.splitext(old)[1]))
    return names


def normalise(keys, packages):
    for key, values in keys.items():
        for name, data in values.items():
            if name == '"InstallDate"' and re.fullmatch(r'"\d{8}"', data):
                values[name] = '"%s"' % INSTALL_DATE
            elif name == '"LocalPackage"':
                head, old = data.strip('"').rsplit("\\", 1)
                values[name] = '"%s\\%s"' % (head, packages[old.lower()])
            elif name == '"ComputerName"':
                values[name] = '"%s"' % COMPUTER


def write_registry(keys, folder):
    """One file for each part of the registry, in the form of the Windows registry editor."""
    os.makedirs(folder)
    wow = (HKLM + r"\Software\Wow6432Node").lower()
    parts = {
        "10-machine.reg": [k for k in keys if k.startswith(HKLM) and not below(k, [wow])],
        "20-machine-32.reg": [k for k in keys if below(k, [wow])],
        "30-user.reg": [k for k in keys if k.startswith("HKEY_CURRENT_USER")],
    }
    for name, chosen in parts.items():
        lines = ["Windows Registry Editor Version 5.00", ""]
        for key in sorted(chosen, key=str.upper):
            lines.append("[%s]" % key)
            for value, data in keys[key].items():
                lines += ("%s=%s" % (value, data)).split("\n")
            lines.append("")
        with open(os.path.join(folder, name), "wb") as f:
            f.write(b"\xff\xfe" + ("\r\n".join(lines) + "\r\n").encode("utf-16-le", "surrogatepass"))


def with_fixed_dates(link):
    """A shell link whose list of target items has one date. Items that name a file or folder have type 0x30 to 0x3f; a
    changed date stands 8 bytes in, two more in the block whose offset the item's last two bytes say. A date of zero,
    which is none, stays."""
    link = bytearray(link)
    has_items = struct.unpack_from("<I", link, 20)[0] & 1
    at = 78
    while has_items:
        (size,) = struct.unpack_from("<H", link, at)
        if size == 0:
            break
        if link[at + 2] & 0x70 == 0x30:
            (block,) = struct.unpack_from("<H", link, at + size - 2)
            for date in (at + 8, at + block + 8, at + block + 12):
                if any(link[date:date + 4]):
                    link[date:date + 4] = LINK_DATE
        at += size
    return bytes(link)


def copy_file(source, target):
    with open(source, "rb") as f:
        data = f.read()
    with open(target, "wb") as f:
        f.write(with_fixed_dates(data) if source.endswith(".lnk") else data)


def copy_files(before_dir, prefix, packages, out):
    """Copies the files that were not there before. Returns the recorded paths below the drive, files and folders."""
    drive = os.path.join(prefix, "drive_c")
    with open(os.path.join(before_dir, "files"), encoding="utf-8") as f:
        old = set(f.read().split("\n"))
    recorded = set()
    for folder, dirs, files in os.walk(drive):
        dirs.sort()
        for name in sorted(files):
            source = os.path.join(folder, name)
            path = os.path.relpath(source, drive)
            if path in old or any(path.startswith(skip + "/") for skip in LEFT_OUT):
                continue
            head = os.path.dirname(path)
            target = os.path.join(head, packages.get(name.lower(), name) if head.endswith("Installer") else name)
            os.makedirs(os.path.join(out, head), exist_ok=True)
            copy_file(source, os.path.join(out, target))
            recorded.add(target)
            while head:
                recorded.add(head)
                head = os.path.dirname(head)
    return recorded


def write_ini(path, keys, recorded, short_file):
    version = keys[HKLM + r"\Software\Microsoft\Windows NT\CurrentVersion"]
    build = version['"CurrentBuild"'].strip('"')
    major, minor = (int(version['"Current%sVersionNumber"' % p].split(":")[1], 16) for p in ("Major", "Minor"))
    text = [
        "; Written by tools/make-sample.sh.",
        "[system]", "architecture=x64", "version=%d.%d.%s" % (major, minor, build), "computer=" + COMPUTER,
        "user=sample", "processors=2", "",
        "[environment]", "SystemDrive=C:", "SystemRoot=C:\\windows", "windir=C:\\windows",
        "ProgramFiles=C:\\Program Files", "ProgramFiles(x86)=C:\\Program Files (x86)", "ProgramW6432=C:\\Program Files",
        "CommonProgramFiles=C:\\Program Files\\Common Files",
        "CommonProgramFiles(x86)=C:\\Program Files (x86)\\Common Files",
        "CommonProgramW6432=C:\\Program Files\\Common Files", "ProgramData=C:\\ProgramData",
        "ALLUSERSPROFILE=C:\\ProgramData", "PUBLIC=C:\\users\\Public", "USERNAME=sample",
        "USERPROFILE=C:\\users\\sample", "APPDATA=C:\\users\\sample\\AppData\\Roaming",
        "LOCALAPPDATA=C:\\users\\sample\\AppData\\Local", "",
        "[short]",
    ]
    wanted = {"C:\\" + p.replace("/", "\\") for p in recorded}
    with open(short_file, encoding="utf-16-le") as f:
        pairs = [line.split("\t") for line in f.read().splitlines() if "\t" in line]
    # The cached packages were renamed above: their names are short ones already.
    text += ["%s=%s" % (long, brief) for long, brief in sorted(pairs) if long in wanted]
    with open(path, "w", encoding="utf-8", newline="\r\n") as f:
        f.write("\n".join(text) + "\n")


def main():
    before_dir, after_dir, prefix, short_file, out = sys.argv[1:]
    os.makedirs(out)
    keys = recorded_keys(before_dir, after_dir, prefix)
    packages = number_packages(keys)
    normalise(keys, packages)
    write_registry(keys, os.path.join(out, "registry"))
    recorded = copy_files(before_dir, prefix, packages, os.path.join(out, "drives", "c"))
    write_ini(os.path.join(out, "machine.ini"), keys, recorded, short_file)


if __name__ == "__main__":
    main()
