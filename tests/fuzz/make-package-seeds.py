#!/usr/bin/env python3
"""Writes the seeds of package_fuzz.cpp: small installer databases of every form that the reader tells apart.

    tests/fuzz/make-package-seeds.py    (writes to tests/fuzz/corpus/package)
"""

import pathlib
import struct

END, FREE, FAT = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFD
CHARACTERS = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz._"


def encode(name, table):
    units = [0x4840] if table else []
    while name:
        pair = [CHARACTERS.find(c) for c in name[:2]]
        if len(pair) == 2 and min(pair) >= 0:
            units.append(0x3800 + pair[0] + 64 * pair[1])
            name = name[2:]
        else:
            units.append(0x4800 + pair[0] if pair[0] >= 0 else ord(name[0]))
            name = name[1:]
    return struct.pack(f"<{len(units)}H", *units)


def compound(streams, shift, kind):
    """streams: names as bytes of UTF-16 and contents."""
    size = 1 << shift
    fat, body = [], b""

    def add(data):
        nonlocal body
        if not data:
            return END
        first, count = len(fat), -(-len(data) // size)
        fat.extend([first + i + 1 for i in range(count - 1)] + [END])
        body += data.ljust(count * size, b"\0")
        return first

    mini_fat, mini, entries = [], b"", []
    for name, data in sorted(streams.items(), key=lambda s: (len(s[0]), s[0])):
        if len(data) >= 4096:
            entries.append((name, add(data), len(data)))
            continue
        first, count = len(mini_fat), -(-len(data) // 64)
        mini_fat.extend([first + i + 1 for i in range(count - 1)] + [END] * (count > 0))
        mini += data.ljust(count * 64, b"\0")
        entries.append((name, first if count else END, len(data)))
    mini_start = add(mini)
    table = struct.pack(f"<{len(mini_fat)}I", *mini_fat).ljust(size, b"\xff")
    table_start = add(table)

    def entry(name, kind_of, left, right, child, class_id, start, length):
        return (name.ljust(64, b"\0") + struct.pack("<HBBIII", len(name) + 2 if name else 0, kind_of, 1, left, right,
                                                     child) + class_id.ljust(36, b"\0") +
                struct.pack("<IQ", start, length))

    root_class = bytes([kind]) + bytes.fromhex("100c0000000000c000000000000046")
    directory = entry("Root Entry".encode("utf-16-le"), 5, FREE, FREE, 1, root_class, mini_start, len(mini))
    for i, (name, start, length) in enumerate(entries):
        right = i + 2 if i + 1 < len(entries) else FREE
        directory += entry(name, 2, FREE, right, FREE, b"", start, length)
    directory_start = add(directory)
    fat_at = len(fat)
    fat.append(FAT)
    assert len(fat) <= size // 4
    header = bytes.fromhex("d0cf11e0a1b11ae1").ljust(24, b"\0")
    header += struct.pack("<5H", 0x3E, 4 if shift == 12 else 3, 0xFFFE, shift, 6).ljust(20, b"\0")
    header += struct.pack("<9I", 1, directory_start, 0, 4096, table_start, len(table) // size, END, 0, fat_at)
    header = header.ljust(512, b"\xff").ljust(size, b"\0")
    return header + body + struct.pack(f"<{len(fat)}I", *fat).ljust(size, b"\xff")


class Pool:
    def __init__(self):
        self.texts = []

    def number(self, text):
        if text is None:
            return 0
        if text not in self.texts:
            self.texts.append(text)
        return self.texts.index(text) + 1


TABLES = {
    "Property": (["Property s*", "Value s"], [["ProductCode", "{90140000-0011-0000-0000-0000000FF1CE}"],
                                              ["ARPPRODUCTICON", "i,1"], ["ProductName", "Gr\u00f6\u00dfe"]]),
    "Icon": (["Name s*", "Data v"], [["i", b"MZ" + bytes(70)]]),
    "File": (["File s*", "Component_ s", "FileName s", "FileSize l", "Attributes i"],
             [["f", "c", "A~1|Long name", 70000, None], ["g", None, "b", None, 1]]),
    "Registry": (["Registry s*", "Root i", "Key s", "Name s", "Value s", "Component_ s"],
                 [["r", 2, "Software\\Tool", None, "#1", "c"]]),
    "Feature": (["Feature s*"], [["Main"]]),
    "MsiAssemblyName": (["Component_ s*", "Name s*", "Value s"], [["c", "version", "1.0"]]),
}
TYPES = {"s": 0x0D00, "i": 0x0502, "l": 0x0104, "v": 0x0900}


def package(page=1252, encoding="cp1252", width=2, shift=9, kind=0x84):
    pool, streams, names, columns = Pool(), {}, b"", [b""] * 4

    def text(value):
        return pool.number(value.encode(encoding) if value is not None else None).to_bytes(width, "little")

    for table, (shape, rows) in TABLES.items():
        names += text(table)
        cells = b""
        for number, column in enumerate(shape):
            name, form = column.split()
            word = TYPES[form[0]] | (0x2000 if form.endswith("*") else 0x1000)
            for i, part in enumerate([text(table), struct.pack("<H", (number + 1) ^ 0x8000), text(name),
                                      struct.pack("<H", word ^ 0x8000)]):
                columns[i] += part
            for row in rows:
                value = row[number]
                if form[0] == "s":
                    cells += text(value)
                elif form[0] == "v":
                    cells += b"\1\0"
                    streams[encode(f"{table}.{row[0]}", False)] = value
                elif form[0] == "i":
                    cells += struct.pack("<H", 0 if value is None else value ^ 0x8000)
                else:
                    cells += struct.pack("<I", 0 if value is None else value ^ 0x80000000)
        streams[encode(table, True)] = cells
    lengths = struct.pack("<I", page | (0x80000000 if width == 3 else 0))
    for value in pool.texts:
        lengths += struct.pack("<HH", len(value), 1)
    streams[encode("_Tables", True)] = names
    streams[encode("_Columns", True)] = b"".join(columns)
    streams[encode("_StringPool", True)] = lengths
    streams[encode("_StringData", True)] = b"".join(pool.texts)
    return compound(streams, shift, kind)


def main():
    folder = pathlib.Path(__file__).parent / "corpus" / "package"
    folder.mkdir(parents=True, exist_ok=True)
    plain = package()
    seeds = {"plain": plain, "utf8": package(65001, "utf-8"),
             "wide": package(width=3, shift=12), "patch": package(0, "cp1252", kind=0x86),
             "cut": plain[:2048]}
    for name, content in seeds.items():
        (folder / name).write_bytes(content)


if __name__ == "__main__":
    main()
