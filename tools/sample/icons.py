#!/usr/bin/env python3
"""Draws the icons of the sample programs.

usage: icons.py OUT.ico HUE IMAGES

HUE is a number of degrees that sets the colours, IMAGES a comma list of SIZE:KIND with KIND one of
8 (palette of 256 colours and a mask), 32 (colours with alpha and a mask) and png (compressed). The same
arguments give the same bytes, so that a sample made again differs in nothing.
"""
import colorsys
import struct
import sys
import zlib


def pixel(size, x, y, hue):
    """One pixel as (r, g, b, a): a shaded disc with a lighter diagonal bar, clear outside of the disc."""
    cx, cy = (2 * x + 1 - size) / size, (2 * y + 1 - size) / size
    if cx * cx + cy * cy > 0.95:
        return 0, 0, 0, 0
    light = 0.85 - 0.35 * (cy + 1) / 2
    saturation = 0.25 if abs(cx + cy) < 0.35 else 0.8
    r, g, b = colorsys.hsv_to_rgb(hue / 360.0, saturation, light)
    return round(r * 255), round(g * 255), round(b * 255), 255


def rows(size, hue):
    return [[pixel(size, x, y, hue) for x in range(size)] for y in range(size)]


def mask(picture):
    """The 1-bit mask, bottom row first, each row filled up to four bytes; a set bit is a clear pixel."""
    out = bytearray()
    for row in reversed(picture):
        bits = int("".join("1" if p[3] == 0 else "0" for p in row), 2)
        width = (len(row) + 31) // 32 * 32
        out += (bits << (width - len(row))).to_bytes(width // 8, "big")
    return bytes(out)


def header(size, bits, colours, data_size):
    # The height of an icon's bitmap counts the colour part and the mask.
    return struct.pack("<IiiHHIIiiII", 40, size, 2 * size, 1, bits, 0, data_size, 0, 0, colours, 0)


def image8(size, hue):
    picture = rows(size, hue)
    colours = sorted({p[:3] for row in picture for p in row})[:256]
    index = {c: i for i, c in enumerate(colours)}
    palette = b"".join(bytes((b, g, r, 0)) for r, g, b in colours) + bytes(4 * (256 - len(colours)))
    body = b"".join(bytes(index.get(p[:3], 0) for p in row).ljust((size + 3) // 4 * 4, b"\0") for row in reversed(picture))
    return header(size, 8, 256, len(body)) + palette + body + mask(picture)


def image32(size, hue):
    picture = rows(size, hue)
    body = b"".join(bytes((b, g, r, a)) for row in reversed(picture) for r, g, b, a in row)
    return header(size, 32, 0, len(body)) + body + mask(picture)


def image_png(size, hue):
    raw = b"".join(b"\0" + bytes(v for p in row for v in p) for row in rows(size, hue))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    head = struct.pack(">IIBBBBB", size, size, 8, 6, 0, 0, 0)
    return b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", head) + chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b"")


KINDS = {"8": (image8, 8), "32": (image32, 32), "png": (image_png, 32)}


def main():
    out, hue, wanted = sys.argv[1], int(sys.argv[2]), sys.argv[3].split(",")
    images = []
    for item in wanted:
        size, kind = item.split(":")
        make, bits = KINDS[kind]
        images.append((int(size), bits, make(int(size), hue)))
    offset = 6 + 16 * len(images)
    directory = struct.pack("<HHH", 0, 1, len(images))
    for size, bits, data in images:
        # A size of 256 is written as 0, a palette of 256 colours as 0 too.
        directory += struct.pack("<BBBBHHII", size % 256, size % 256, 0, 0, 1, bits, len(data), offset)
        offset += len(data)
    with open(out, "wb") as f:
        f.write(directory + b"".join(data for _, _, data in images))


if __name__ == "__main__":
    main()
