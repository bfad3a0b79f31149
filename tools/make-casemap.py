#!/usr/bin/env python3
"""Writes utility/casemap_table.cpp: the simple case mappings of the basic plane, from Python's own copy of the Unicode
Character Database.

Python answers full mappings. Where the full upper case has several characters, the simple one is the title case
(U+1F80 to U+1F88), and where that has several too, there is none (U+00DF, U+0149).

A mapping is kept where it goes both ways, so that the texts that are equal in lower case are those that are equal in
upper case. That leaves out what Windows' own table leaves out too: U+0130 and U+0131 beside the letter i, U+017F
beside s, the signs of kelvin, ohm and micro, U+1E9E, the title forms U+01C5 to U+01F2, the symbol forms of Greek
letters. The one exception is the final sigma, whose upper case U+03A3 Windows knows: its lower case is U+03C3 here, so
that the two sigmas are one letter in both directions.
"""

import pathlib
import unicodedata

PAGE = 64
ROW = 16
TARGET = pathlib.Path(__file__).resolve().parent.parent / "utility" / "casemap_table.cpp"


def one(text):
    return ord(text) if len(text) == 1 and ord(text) < 0x10000 else None


def upper_of(c):
    return one(chr(c).upper()) or one(chr(c).title()) or c


def lower_of(c):
    return one(chr(c).lower()) or c


def mappings():
    units = [c for c in range(0x10000) if not 0xD800 <= c < 0xE000]
    upper = {c: upper_of(c) for c in units if upper_of(c) != c and lower_of(upper_of(c)) == c}
    lower = {c: lower_of(c) for c in units if lower_of(c) != c and upper_of(lower_of(c)) == c}
    upper[0x03C2] = 0x03A3
    lower[0x03C2] = 0x03C3
    return upper, lower


def pages_of(mapping):
    """The number of the page of every PAGE units, and the pages: what is added to a unit, modulo 65536."""
    index, pages = [], []
    for start in range(0, 0x10000, PAGE):
        page = [(mapping.get(c, c) - c) % 0x10000 for c in range(start, start + PAGE)]
        if page not in pages:
            pages.append(page)
        index.append(pages.index(page))
    return index, pages


def rows(values):
    for start in range(0, len(values), ROW):
        yield "    " + ",".join(values[start:start + ROW]) + ","


def table(name, mapping):
    index, pages = pages_of(mapping)
    yield f"const std::uint8_t k{name}Index[{len(index)}] = {{"
    yield from rows([str(number) for number in index])
    yield "};"
    yield ""
    yield f"const std::uint16_t k{name}Offsets[{len(pages)} * kPageSize] = {{"
    for page in pages:
        yield from rows([str(offset) if offset < 10 else f"0x{offset:04X}" for offset in page])
    yield "};"


def main():
    upper, lower = mappings()
    lines = [
        f"// Made by tools/make-casemap.py from Unicode {unicodedata.unidata_version}; change that and run it again.",
        '#include "utility/casemap_table.h"',
        "",
        "// clang-format off",
        "namespace roundup::casemap_detail {",
        "",
        *table("Upper", upper),
        "",
        *table("Lower", lower),
        "",
        "}  // namespace roundup::casemap_detail",
    ]
    TARGET.write_text("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
