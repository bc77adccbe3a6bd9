#!/usr/bin/env python3
"""Generate the BMP character tables of src/platform:

  unicode_tables.inc  the tables behind CharUpperW, CharLowerW, IsCharUpperW,
                      IsCharLowerW, IsCharAlphaW, IsCharAlphaNumericW and the
                      C runtime's iswalpha, iswalnum, iswprint, iswspace and
                      case functions
  unicode_marks.inc   the nonspacing marks, the one definition that
                      CharNextW/CharPrevW and WideCharToMultiByte's
                      WC_COMPOSITECHECK (and gen_codepages.py's composition
                      pairs, through is_nonspacing) all use

Input: Python 3's standard `unicodedata` module. The Unicode version it
carries (unicodedata.unidata_version) is written into the generated files;
`--check` (tools/gen/gencheck.py) exits 77 (skip) when the running Python
carries another Unicode version than the one the committed files were made
from.

How Windows' answers are derived from the Unicode data:

* Case. Windows' default (non-linguistic) case table holds only the simple
  mappings that go both ways: c maps to upper case U only if U maps back to
  lower case c, and the same for lower case. So the micro sign, dotless i,
  long s, final sigma, the Greek symbol variants, the titlecase digraphs and
  the Kelvin, Ohm and Angstrom signs keep their value, and capital I with
  dot above does not lower to i. No Turkish rules.
* Character types follow Windows' CT_CTYPE1 classes (the bits the C
  runtime's iswctype tests): upper = Lu, Lt; lower = Ll, Lt; alpha = any
  letter (L*) or letter number (Nl); digit = Nd; punct = P*; space = Zs, Zl,
  Zp and TAB..CR; plus the hand-made exceptions in EXCEPTIONS below.
* Nonspacing marks: general category Mn (is_nonspacing). Windows' notion of
  a nonspacing character is a character type (CT_CTYPE3's C3_NONSPACING),
  and both the calls that step over marks (CharNextW, CharPrevW) and the
  ones that compose them (WC_COMPOSITECHECK) read that one type. The
  bidirectional class NSM is a direction, not a character type: it adds the
  enclosing marks (Me) and drops two Kannada vowel signs (docs/unicode.md).

Usage: gen_unicode.py [--check]
"""

import os
import sys
import unicodedata

import gencheck  # tools/gen/gencheck.py

OUT = os.path.join(gencheck.ROOT, "src", "platform")
TABLES = "unicode_tables.inc"
MARKS = "unicode_marks.inc"
GENERATOR = "tools/gen/gen_unicode.py"
VERSION_TAG = "// unidata_version: "

# Character-type bits: the C runtime's _UPPER, _LOWER, ... values (which are
# also Windows' C1_ values).
UPPER = 0x0001
LOWER = 0x0002
DIGIT = 0x0004
SPACE = 0x0008
PUNCT = 0x0010
BLANK = 0x0040
ALPHA = 0x0100

CATEGORY_BITS = {
    "Lu": UPPER | ALPHA,
    "Ll": LOWER | ALPHA,
    "Lt": UPPER | LOWER | ALPHA,
    "Lm": ALPHA,
    "Lo": ALPHA,
    "Nl": ALPHA,
    "Nd": DIGIT,
    "Pc": PUNCT,
    "Pd": PUNCT,
    "Ps": PUNCT,
    "Pe": PUNCT,
    "Pi": PUNCT,
    "Pf": PUNCT,
    "Po": PUNCT,
    "Zs": SPACE,
    "Zl": SPACE,
    "Zp": SPACE,
}


def _span(first, last):
    return list(range(first, last + 1))


# Hand-made exceptions: where Windows' character types differ from what the
# Unicode categories give. (code points, bits added, why)
EXCEPTIONS = [
    # The superscript digits of Latin-1 count as digits (iswdigit and
    # iswalnum are true for them), unlike the other superscripts.
    ([0x00B2, 0x00B3, 0x00B9], DIGIT, "superscript two, three, one"),
    # Ordinal indicators and superscript i, n are lower-case letters.
    ([0x00AA, 0x00BA, 0x2071, 0x207F], LOWER, "ordinal indicators, superscript i and n"),
    # The symbols of ASCII and Latin-1 are punctuation (so printable); symbols
    # above U+00FF have no print class.
    ([0x24, 0x2B, 0x3C, 0x3D, 0x3E, 0x5E, 0x60, 0x7C, 0x7E] + _span(0xA2, 0xBE) + [0xD7, 0xF7],
     PUNCT, "ASCII and Latin-1 symbols"),
    # Blanks as the C runtime sees them: space and no-break space from its
    # own Latin-1 table (TAB is not blank there), and Windows' ideographic
    # space and zero-width no-break space above it.
    ([0x20, 0xA0, 0x3000, 0xFEFF], BLANK, "blank characters"),
    # The control characters TAB, LF, VT, FF and CR are white space.
    (_span(0x09, 0x0D), SPACE, "TAB to CR"),
]


def is_nonspacing(c):
    """True for the nonspacing marks: general category Mn. The first is U+0300."""
    return unicodedata.category(chr(c)) == "Mn"


def simple_upper(ch):
    """The simple (one-to-one) upper-case mapping of UnicodeData.txt, or None.

    str.upper() gives the full mapping; where that is longer than one unit
    the simple mapping is the titlecase form when that is one unit (the Greek
    letters with ypogegrammeni), else there is none (sharp s, ligatures).
    """
    up = ch.upper()
    if len(up) == 1:
        return ord(up) if up != ch else None
    title = ch.title()
    if len(title) == 1 and title != ch:
        return ord(title)
    return None


def simple_lower(ch):
    low = ch.lower()
    if len(low) == 1:
        return ord(low) if low != ch else None
    # Only capital I with dot above lowers to two units (i and a combining
    # dot); its simple mapping to i does not go both ways, so it has none.
    assert ord(ch) == 0x0130, hex(ord(ch))
    return None


def build():
    upper = {}
    lower = {}
    for c in range(0x10000):
        if 0xD800 <= c <= 0xDFFF:
            continue
        u = simple_upper(chr(c))
        if u is not None:
            upper[c] = u
        l = simple_lower(chr(c))
        if l is not None:
            lower[c] = l
    # Keep only the mappings that go both ways.
    both_upper = {c: u for c, u in upper.items() if lower.get(u) == c}
    both_lower = {c: l for c, l in lower.items() if upper.get(l) == c}
    for c, v in list(both_upper.items()) + list(both_lower.items()):
        assert v < 0x10000, hex(c)
    assert not set(both_upper) & set(both_lower)

    bits = [0] * 0x10000
    for c in range(0x10000):
        ch = chr(c)
        bits[c] = CATEGORY_BITS.get(unicodedata.category(ch), 0)
    for points, add, _why in EXCEPTIONS:
        for c in points:
            bits[c] |= add

    records = []
    record_index = {}
    per_char = []
    for c in range(0x10000):
        rec = (bits[c], (both_upper.get(c, c) - c) & 0xFFFF, (both_lower.get(c, c) - c) & 0xFFFF)
        if rec not in record_index:
            record_index[rec] = len(records)
            records.append(rec)
        per_char.append(record_index[rec])
    return records, per_char


def two_level(per_char, shift):
    size = 1 << shift
    blocks = []
    block_index = {}
    stage1 = []
    for start in range(0, 0x10000, size):
        block = tuple(per_char[start:start + size])
        if block not in block_index:
            block_index[block] = len(blocks)
            blocks.append(block)
        stage1.append(block_index[block])
    return stage1, blocks


def ctype_for(values):
    top = max(values)
    if top < 0x100:
        return "uint8_t", 1
    if top < 0x10000:
        return "uint16_t", 2
    return "uint32_t", 4


def array(name, ctype, values, width, per_line, storage="static constexpr"):
    lines = ["%s %s %s[%d] = {" % (storage, ctype, name, len(values))]
    for i in range(0, len(values), per_line):
        chunk = values[i:i + per_line]
        lines.append("    " + ", ".join(("0x%0*X" % (width, v)) for v in chunk) + ",")
    lines.append("};")
    return lines


def render():
    records, per_char = build()
    assert len(records) <= 0x10000
    best = None
    for shift in range(4, 10):
        stage1, blocks = two_level(per_char, shift)
        _, s1 = ctype_for(stage1)
        _, s2 = ctype_for(per_char)
        cost = len(stage1) * s1 + len(blocks) * (1 << shift) * s2
        if best is None or cost < best[0]:
            best = (cost, shift, stage1, blocks)
    _cost, shift, stage1, blocks = best
    stage2 = [v for block in blocks for v in block]
    s1_type, _ = ctype_for(stage1)
    s2_type, _ = ctype_for(stage2)

    out = [
        "// generated by %s from Python's unicodedata (Unicode %s); do not edit."
        % (GENERATOR, unicodedata.unidata_version),
        VERSION_TAG + unicodedata.unidata_version,
        "//",
        "// Character types and case of every BMP code point, in two levels:",
        "//   record = kCharRecords[kCharStage2[(kCharStage1[c >> kCharBlockShift]",
        "//                                      << kCharBlockShift) | (c & kCharBlockMask)]]",
        "// A record holds the type bits and the distances (modulo 0x10000) to the upper-",
        "// and lower-case forms. %d records, %d blocks of %d code points."
        % (len(records), len(blocks), 1 << shift),
        "",
        "static constexpr char kUnicodeVersion[] = \"%s\";" % unicodedata.unidata_version,
        "static constexpr unsigned kCharBlockShift = %d;" % shift,
        "static constexpr unsigned kCharBlockMask = 0x%X;" % ((1 << shift) - 1),
        "",
    ]
    out += array("kCharStage1", s1_type, stage1, 2 if s1_type == "uint8_t" else 4, 16)
    out.append("")
    out += array("kCharStage2", s2_type, stage2, 2 if s2_type == "uint8_t" else 4, 16)
    out.append("")
    out.append("// {type bits, upper-case distance, lower-case distance}")
    out.append("static constexpr CharRecord kCharRecords[%d] = {" % len(records))
    for i in range(0, len(records), 4):
        chunk = records[i:i + 4]
        out.append("    " + " ".join("{0x%04X, 0x%04X, 0x%04X}," % r for r in chunk))
    out.append("};")
    return "\n".join(out) + "\n"


def render_marks():
    """The nonspacing marks of the BMP as a two-level bitmap: kMarkBlockOf[u >> 8]
    selects a 256-bit block of kMarkBlocks (four 64-bit words, bit u & 63 of word
    (u >> 6) & 3). Block 0 is empty. External linkage: the conversions and
    CharNextW test marks inline (unicode.h)."""
    blocks, index, block_of = [(0, 0, 0, 0)], {(0, 0, 0, 0): 0}, []
    for h in range(256):
        words = [0, 0, 0, 0]
        for lo in range(256):
            if is_nonspacing((h << 8) | lo):
                words[lo >> 6] |= 1 << (lo & 63)
        block = tuple(words)
        if block not in index:
            index[block] = len(blocks)
            blocks.append(block)
        block_of.append(index[block])
    assert min(c for c in range(0x10000) if is_nonspacing(c)) == 0x300
    out = [
        "// generated by %s from Python's unicodedata (Unicode %s); do not edit."
        % (GENERATOR, unicodedata.unidata_version),
        "//",
        "// The nonspacing marks (general category Mn) of the BMP: kMarkBlockOf[u >> 8] selects a",
        "// block of kMarkBlocks; bit u & 63 of its word (u >> 6) & 3 is set for a mark.",
        "",
    ]
    out += array("kMarkBlockOf", "uint8_t", block_of, 2, 16, storage="constexpr")
    out.append("constexpr uint64_t kMarkBlocks[%d][4] = {" % len(blocks))
    for b in blocks:
        out.append("    {" + ", ".join("0x%016X" % w for w in b) + "},")
    out.append("};")
    return "\n".join(out) + "\n"


def generate(outdir):
    for name, text in ((TABLES, render()), (MARKS, render_marks())):
        with open(os.path.join(outdir, name), "w", encoding="utf-8", newline="") as f:
            f.write(text)
    return [TABLES, MARKS]


def recorded_version():
    try:
        with open(os.path.join(OUT, TABLES), encoding="utf-8") as f:
            for line in f:
                if line.startswith(VERSION_TAG):
                    return line[len(VERSION_TAG):].strip()
    except OSError:
        return None
    return None


def main(argv):
    return gencheck.run("gen_unicode", argv, generate, OUT, recorded=recorded_version,
                        current=unicodedata.unidata_version)


if __name__ == "__main__":
    sys.exit(main(sys.argv))
