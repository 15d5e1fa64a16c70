#!/usr/bin/env python3
"""Makes src/platform/providers/advapi32/case_table.h, by which names of keys and values match without regard to
case, from the Unicode data of Python's unicodedata. Run from the top of the tree:

    tools/make_case_pairs.py > src/platform/providers/advapi32/case_table.h

The table in the tree was made with Unicode 14.0. It must stay as it is: stores keep names that were folded by it, and
another table needs another format of the stores. A capital and a small letter of 16 bits are a pair when each is the
other's counterpart; so U+0131 is no I, and the micro sign no letter of Greek.
"""

import unicodedata

BLOCK = 64


def capital_of(unit):
    """The capital that makes a pair with this small letter, or the unit itself."""
    letter = chr(unit)
    for capital in (letter.upper(), letter.title()):
        if len(capital) == 1:
            return ord(capital) if capital != letter and capital.lower() == letter else unit
    return unit


def lines(values):
    line = "   "
    for value in values:
        item = f" {value},"
        if len(line) + len(item) > 110:
            yield line
            line = "   "
        line += item
    yield line


def array(comment, kind, name, values):
    print(f"/// {comment}")
    print(f"inline constexpr {kind} {name}[{len(values)}] = {{")
    print("\n".join(lines(values)))
    print("};")
    print()


def main():
    deltas = [0 if 0xD800 <= unit < 0xE000 else capital_of(unit) - unit & 0xFFFF for unit in range(0x10000)]
    blocks, index = [], []
    for start in range(0, 0x10000, BLOCK):
        block = deltas[start:start + BLOCK]
        if block not in blocks:
            blocks.append(block)
        index.append(blocks.index(block))
    print(f"""\
#ifndef QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_CASE_TABLE_H
#define QNLIB_SRC_PLATFORM_PROVIDERS_ADVAPI32_CASE_TABLE_H

// Made by tools/make_case_pairs.py from Unicode {unicodedata.unidata_version}; do not edit.
// The capital of unit u is u + CASE_BLOCKS[CASE_INDEX[u / {BLOCK}] * {BLOCK} + u % {BLOCK}], in 16 bits.

// clang-format off
namespace qn_advapi32
{{

inline constexpr unsigned int CASE_BLOCK_SIZE = {BLOCK};
""")
    array(f"Which block serves each {BLOCK} units.", "unsigned char", "CASE_INDEX", index)
    array("How far the capital is.", "unsigned short", "CASE_BLOCKS", [delta for block in blocks for delta in block])
    print("} // namespace qn_advapi32\n// clang-format on\n\n#endif")


main()
