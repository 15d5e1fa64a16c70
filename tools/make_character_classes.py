#!/usr/bin/env python3
"""Makes src/platform/text/character_class_table.h, the character classes behind GetStringTypeW, from the
Unicode data of Python's unicodedata. Run from the top of the tree:

    tools/make_character_classes.py > src/platform/text/character_class_table.h

The table in the tree was made with Unicode 14.0. The classes are those of the platform's documentation: symbols
beyond Latin-1 are "defined" and nothing else, marks too.
"""

import unicodedata

UPPER, LOWER, DIGIT, SPACE, PUNCT, CNTRL, BLANK, XDIGIT, ALPHA, DEFINED = (1 << bit for bit in range(10))

BY_CATEGORY = {
    "Lu": UPPER | ALPHA, "Ll": LOWER | ALPHA, "Lt": UPPER | LOWER | ALPHA, "Lm": ALPHA, "Lo": ALPHA, "Nl": ALPHA,
    "Nd": DIGIT, "Cc": CNTRL, "Cf": CNTRL, "Zs": SPACE | BLANK, "Zl": SPACE, "Zp": SPACE,
    "Pc": PUNCT, "Pd": PUNCT, "Pe": PUNCT, "Pf": PUNCT, "Pi": PUNCT, "Po": PUNCT, "Ps": PUNCT,
}
# Latin-1 keeps the classes that it had before Unicode: its symbols are punctuation, and the letters and
# digits among them both.
SYMBOLS = {"Sc", "Sk", "Sm", "So", "No"}
EXTRA = {0x09: SPACE | BLANK, 0x0A: SPACE, 0x0B: SPACE, 0x0C: SPACE, 0x0D: SPACE, 0x85: SPACE, 0xAA: LOWER | PUNCT,
         0xAD: PUNCT, 0xB2: DIGIT, 0xB3: DIGIT, 0xB5: PUNCT, 0xB9: DIGIT, 0xBA: LOWER | PUNCT}
HEX_DIGITS = {ord(digit) + shift for digit in "0123456789ABCDEFabcdef" for shift in (0, 0xFEE0)}
BLOCK = 32


def classes(unit):
    category = unicodedata.category(chr(unit))
    if category == "Cn":
        return 0
    bits = DEFINED | BY_CATEGORY.get(category, 0) | EXTRA.get(unit, 0)
    if unit < 0x100 and category in SYMBOLS:
        bits |= PUNCT
    if unit in HEX_DIGITS:
        bits |= XDIGIT
    return bits


def lines(values):
    line = "   "
    for value in values:
        item = f" {value},"
        if len(line) + len(item) > 110:
            yield line
            line = "   "
        line += item
    yield line


def array(kind, name, values):
    return f"inline constexpr {kind} {name}[{len(values)}] = {{\n" + "\n".join(lines(values)) + "\n};\n"


def main():
    every = [classes(unit) for unit in range(0x10000)]
    kinds = sorted(set(every))
    blocks, index = [], []
    for start in range(0, 0x10000, BLOCK):
        block = [kinds.index(bits) for bits in every[start:start + BLOCK]]
        if block not in blocks:
            blocks.append(block)
        index.append(blocks.index(block))
    print(f"""#ifndef QNLIB_SRC_PLATFORM_TEXT_CHARACTER_CLASS_TABLE_H
#define QNLIB_SRC_PLATFORM_TEXT_CHARACTER_CLASS_TABLE_H

// Made by tools/make_character_classes.py from Unicode {unicodedata.unidata_version}; do not edit.
// The classes of unit u are CLASS_KINDS[CLASS_BLOCKS[CLASS_INDEX[u / {BLOCK}] * {BLOCK} + u % {BLOCK}]].

// clang-format off
namespace qn_platform
{{

inline constexpr unsigned int CLASS_BLOCK_SIZE = {BLOCK};

/// The sets of classes that occur.
{array("unsigned short", "CLASS_KINDS", [f"0x{bits:04X}" for bits in kinds])}
/// Which block serves each {BLOCK} units.
{array("unsigned short" if len(blocks) > 256 else "unsigned char", "CLASS_INDEX", index)}
/// The units of each block as numbers of their kinds.
{array("unsigned char", "CLASS_BLOCKS", [kind for block in blocks for kind in block])}
}} // namespace qn_platform
// clang-format on

#endif""")


main()
