#!/usr/bin/env python3
"""Writes the seeds of fuzz_security into corpus/security: a descriptor, values of the SAM, a key with its descriptor."""
import pathlib
import struct


def sid(authority, *parts):
    return bytes([1, len(parts), 0, 0, 0, 0, 0, authority]) + b"".join(struct.pack("<I", part) for part in parts)


def entry(kind, identifier):
    return struct.pack("<BBHI", kind, 0, 8 + len(identifier), 0xF003F) + identifier


entries = entry(0, sid(5, 32, 545)) + entry(1, sid(5, 18)) + entry(5, sid(1, 0))
access_list = struct.pack("<BBHHH", 2, 0, 8 + len(entries), 3, 0) + entries
descriptor = struct.pack("<BBHIIII", 1, 0, 0x8004, 0, 0, 0, 20) + access_list
members = sid(5, 32, 545) + sid(5, 18)
key = bytearray(4096)
key[4:6] = b"nk"  # names the cell right behind the header
security = bytearray(0x18)
security[4:6] = b"sk"
struct.pack_into("<I", security, 0x14, len(descriptor))

folder = pathlib.Path(__file__).parent / "corpus" / "security"
folder.mkdir(parents=True, exist_ok=True)
(folder / "descriptor").write_bytes(descriptor)
(folder / "alias").write_bytes(bytes(0x28) + struct.pack("<III", 0, len(members), 2) + members)
(folder / "domain").write_bytes(b"front" + sid(5, 21, 1, 2, 3))
(folder / "hive").write_bytes(bytes(key) + bytes(security) + descriptor)
