#!/usr/bin/env python3
"""Writes the seeds of fuzz_msicache into corpus/msicache: one file of each kind, behind the byte that tells the kind."""

import pathlib
import struct


def text(value):
    data = (value + "\0").encode("utf-16-le")
    return struct.pack("<I", len(data)) + data


def cache(magic, rest):
    return struct.pack("<II", magic, 8 + len(rest)) + rest


components = cache(0x00606001, text("{AAAAAAAA-0000-0000-0000-000000000001}") + text("{B}"))
group = struct.pack("<I", 1) + text("{L}") + struct.pack("<I", 2)
group += text("1.0") + text("Interface\\{I}") + text("2.0") + text("Interface\\{J}")
libraries = cache(0x00606002, struct.pack("<II", 1, 64) + group)
rules = b"\xff\xfe" + "REG: HKLM,SOFTWARE\\Vendor,Name\r\nReg:UINS,Tool\nDIR: C:\\Tool\n;x\nDRIVER: a,b".encode("utf-16-le")

folder = pathlib.Path(__file__).parent / "corpus" / "msicache"
folder.mkdir(parents=True, exist_ok=True)
for kind, (name, data) in enumerate([("components", components), ("libraries", libraries), ("rules", rules)]):
    (folder / name).write_bytes(bytes([kind]) + data)
