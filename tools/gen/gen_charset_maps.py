#!/usr/bin/env python3
"""Generate the per-charset Unicode maps of the converter (src/text/charset_maps.inc).

Inputs (relative to the repository root), one published byte -> Unicode table per member:
  ../shared/data/codepages/iso8859-N.tsv   Unicode ISO 8859 tables 2.0 (8859-7: 3.0 of 2003)
  ../shared/data/codepages/cpNNNN.tsv      Microsoft WINDOWS tables 2.01 (1250-1258, 874)
  ../shared/data/codepages/cpNNN.tsv       Microsoft PC tables 2.00 (437-869)
  ../shared/data/codepages/mac-*.tsv       Apple tables c02/c03 of April 2005 (single-byte
                                           parts of the Far-East sets)
  ../shared/data/codepages/lics.tsv        the Lotus international character set (HP, 1991)
  ../shared/data/codepages/lmbcs-N.tsv     LMBCS groups 1 and 2 (IBM 850 and 851, ICU .ucm)

Output:
  src/text/charset_maps.inc   57 pointers indexed by QXCHARSET, each null or 256 UTF-16 units

The maps are the library's own: each follows its member's published table in the form it had
before the euro sign, under these rules (the rules win where a table disagrees; every value
that differs from the published table is printed when generating):
  * every map keeps 0x00, 0x09, 0x0A and 0x0D and marks the other bytes 0x01-0x1F unmapped,
    except WindowsThai (below);
  * ISO 8859 maps: 0x7F-0x9F unmapped;
  * Windows maps: 0x7F and 0x80 unmapped;
  * DOS maps (and the LMBCS groups, which are DOS pages 850 and 851): 0x7F is U+2302;
  * WindowsThai keeps 0x00-0x1F, maps 0x80-0x9F to themselves except 0x85 and 0x91-0x97,
    and marks 0xDB-0xDE, 0xFC-0xFF with the markers 0xF8C1-0xF8C8;
  * the hand-made exceptions of EXCEPTIONS below.
An unmapped byte holds an UnmappedMarker (0xF000); every unit of 0xF000 or more counts as one,
so a published value there (CodePage864's presentation forms, the Apple logo U+F8FF) is
unmapped too.

Usage: gen_charset_maps.py [--check]
  --check regenerates into a temporary directory and compares byte for byte: exit 0 when
  identical, 1 when not, 77 when the inputs are missing.
"""

import os
import sys

import gencheck  # tools/gen/gencheck.py

DATA = os.path.join(gencheck.SHARED_DATA, "codepages")
OUT = os.path.join(gencheck.ROOT, "src", "text")
OUT_NAME = "charset_maps.inc"

MARKER = 0xF000  # UnmappedMarker: the byte has no character

# The members with a map: (QXCHARSET value, name, data file, family). The others (0 Neutral,
# 17-20 the Windows DBCS sets, 26 MacCroatian, 29 MacThai, 46 LMBCS, 49-53) have none.
MEMBERS = [
    (1, "ISO8859_1", "iso8859-1.tsv", "iso"),
    (2, "ISO8859_2", "iso8859-2.tsv", "iso"),
    (3, "ISO8859_3", "iso8859-3.tsv", "iso"),
    (4, "ISO8859_4", "iso8859-4.tsv", "iso"),
    (5, "ISO8859_5", "iso8859-5.tsv", "iso"),
    (6, "ISO8859_6", "iso8859-6.tsv", "iso"),
    (7, "ISO8859_7", "iso8859-7.tsv", "iso"),
    (8, "ISO8859_8", "iso8859-8.tsv", "iso"),
    (9, "ISO8859_9", "iso8859-9.tsv", "iso"),
    (10, "WindowsLatin1", "cp1252.tsv", "windows"),
    (11, "WindowsLatin2", "cp1250.tsv", "windows"),
    (12, "WindowsArabic", "cp1256.tsv", "windows"),
    (13, "WindowsCyrillic", "cp1251.tsv", "windows"),
    (14, "WindowsGreek", "cp1253.tsv", "windows"),
    (15, "WindowsHebrew", "cp1255.tsv", "windows"),
    (16, "WindowsTurkish", "cp1254.tsv", "windows"),
    (21, "MacRoman", "mac-roman.tsv", "mac"),
    (22, "MacArabic", "mac-arabic.tsv", "mac"),
    (23, "MacGreek", "mac-greek.tsv", "mac"),
    (24, "MacHebrew", "mac-hebrew.tsv", "mac"),
    (25, "MacCentralEuropean", "mac-centeuro.tsv", "mac"),
    (27, "MacCyrillic", "mac-cyrillic.tsv", "mac"),
    (28, "MacIcelandic", "mac-iceland.tsv", "mac"),
    (30, "MacTurkish", "mac-turkish.tsv", "mac"),
    (31, "MacTradChinese", "mac-chintrad.tsv", "mac"),
    (32, "MacJapanese", "mac-japanese.tsv", "mac"),
    (33, "MacKorean", "mac-korean.tsv", "mac"),
    (34, "CodePage437", "cp437.tsv", "dos"),
    (35, "CodePage850", "cp850.tsv", "dos"),
    (36, "CodePage852", "cp852.tsv", "dos"),
    (37, "CodePage857", "cp857.tsv", "dos"),
    (38, "CodePage860", "cp860.tsv", "dos"),
    (39, "CodePage861", "cp861.tsv", "dos"),
    (40, "CodePage863", "cp863.tsv", "dos"),
    (41, "CodePage865", "cp865.tsv", "dos"),
    (42, "CodePage855", "cp855.tsv", "dos"),
    (43, "CodePage864", "cp864.tsv", "dos"),
    (44, "CodePage869", "cp869.tsv", "dos"),
    (45, "LICS", "lics.tsv", "lics"),
    (47, "LMBCS1", "lmbcs-1.tsv", "dos"),
    (48, "LMBCS2", "lmbcs-2.tsv", "dos"),
    (54, "WindowsThai", "cp874.tsv", "thai"),
    (55, "WindowsBalticRim", "cp1257.tsv", "windows"),
    (56, "WindowsVietnamese", "cp1258.tsv", "windows"),
]

# Hand-made exceptions: (member, byte, value or None for unmapped, why). Applied after the
# family rules. They restore each table's form from before the euro sign.
EXCEPTIONS = [
    # ISO 8859-1: the library's Latin 1 leaves the Icelandic letters and the no-break space out.
    ("ISO8859_1", 0xA0, None, "no-break space left out"),
    ("ISO8859_1", 0xC0, None, "left out"),
    ("ISO8859_1", 0xD0, None, "left out"),
    ("ISO8859_1", 0xDE, None, "left out"),
    ("ISO8859_1", 0xF0, None, "left out"),
    ("ISO8859_1", 0xFE, None, "left out"),
    # ISO 8859-7: the 1987 edition, without the 2003 additions.
    ("ISO8859_7", 0xA4, None, "euro sign added in 2003"),
    ("ISO8859_7", 0xA5, None, "drachma sign added in 2003"),
    ("ISO8859_7", 0xAA, None, "ypogegrammeni added in 2003"),
    # Windows Latin 1 and Cyrillic: the letters and the euro added in 1998.
    ("WindowsLatin1", 0x8E, None, "Z caron added with the euro"),
    ("WindowsLatin1", 0x9E, None, "z caron added with the euro"),
    ("WindowsCyrillic", 0x88, None, "euro sign"),
    # Mac Roman, Icelandic, Turkish: currency sign before Mac OS 8.5, ohm sign before 1997
    # (Microsoft's MAC tables).
    ("MacRoman", 0xDB, 0x00A4, "currency sign, not the euro"),
    ("MacRoman", 0xBD, 0x2126, "ohm sign"),
    ("MacIcelandic", 0xDB, 0x00A4, "currency sign, not the euro"),
    ("MacIcelandic", 0xBD, 0x2126, "ohm sign"),
    ("MacTurkish", 0xBD, 0x2126, "ohm sign"),
    # Mac Greek before Mac OS 9.2.2 (Microsoft's MAC table).
    ("MacGreek", 0x9C, 0x00AD, "soft hyphen, not the euro"),
    ("MacGreek", 0xFF, None, "undefined before the euro"),
    ("MacGreek", 0xAF, 0x0387, "ano teleia"),
    # Mac Cyrillic before Mac OS 9.0 (Microsoft's MAC table).
    ("MacCyrillic", 0xA2, 0x00A2, "cent sign"),
    ("MacCyrillic", 0xB6, 0x2202, "partial differential"),
    ("MacCyrillic", 0xFF, 0x00A4, "currency sign, not the euro"),
    # Mac Hebrew before 2002.
    ("MacHebrew", 0x81, 0xFB1F, "yiddish ligature, one character"),
    ("MacHebrew", 0xA8, 0x0028, "parentheses not yet interchanged"),
    ("MacHebrew", 0xA9, 0x0029, "parentheses not yet interchanged"),
    # Mac Japanese as published in 1995: the ellipsis without its variant tag.
    ("MacJapanese", 0xFF, 0x2026, "ellipsis"),
]

THAI_MARKERS = [(0xDB, 0xF8C1), (0xDC, 0xF8C2), (0xDD, 0xF8C3), (0xDE, 0xF8C4),
                (0xFC, 0xF8C5), (0xFD, 0xF8C6), (0xFE, 0xF8C7), (0xFF, 0xF8C8)]
THAI_PUNCTUATION = {0x85} | set(range(0x91, 0x98))


def read_table(name):
    """The published byte -> unit table of a data file (single bytes only)."""
    table = {}
    with open(os.path.join(DATA, name), encoding="utf-8") as f:
        for line in f:
            if line.startswith("#") or not line.strip():
                continue
            code, unit = line.split()
            code = int(code, 16)
            if code <= 0xFF:
                table[code] = int(unit, 16)
    return table


def build_map(name, family, published):
    """The library's map of one member: 256 units, MARKER where unmapped."""
    m = [published.get(b, MARKER) for b in range(256)]
    if family == "thai":
        for b in range(0x20):
            m[b] = b
        for b in range(0x80, 0xA0):
            if b not in THAI_PUNCTUATION:
                m[b] = b
        for b, marker in THAI_MARKERS:
            m[b] = marker
        m[0x7F] = MARKER  # as in the other Windows maps
    else:
        for b in range(0x20):
            m[b] = b if b in (0x00, 0x09, 0x0A, 0x0D) else MARKER
    if family == "iso":
        for b in range(0x7F, 0xA0):
            m[b] = MARKER
    elif family == "windows":
        m[0x7F] = MARKER
        m[0x80] = MARKER
    elif family == "dos":
        m[0x7F] = 0x2302
    for member, b, value, _ in EXCEPTIONS:
        if member == name:
            m[b] = MARKER if value is None else value
    return m


def describe(unit):
    return "unmapped" if unit is None or unit >= MARKER else "U+%04X" % unit


def ranges(codes):
    """'0x7F-0x9F, 0xA4' for a sorted list of bytes."""
    runs = []
    for b in codes:
        if runs and runs[-1][1] == b - 1:
            runs[-1][1] = b
        else:
            runs.append([b, b])
    return ", ".join("0x%02X" % a if a == z else "0x%02X-0x%02X" % (a, z) for a, z in runs)


def overrides(name, published, m):
    """Lines saying where the map differs from its published table."""
    unmapped = []
    lines = []
    for b in range(256):
        old = published.get(b)
        if (old is None and m[b] >= MARKER) or old == m[b]:
            continue
        if m[b] >= MARKER:
            unmapped.append(b)
        else:
            lines.append("%s: 0x%02X %s -> U+%04X" % (name, b, describe(old), m[b]))
    if unmapped:
        lines.insert(0, "%s: unmapped %s" % (name, ranges(unmapped)))
    return lines


def generate(out_dir):
    maps = {}
    report = []
    for value, name, data, family in MEMBERS:
        published = read_table(data)
        m = build_map(name, family, published)
        maps[value] = (name, data, m)
        report.extend(overrides(name, published, m))
    lines = [
        "// generated by tools/gen/gen_charset_maps.py from ../shared/data/codepages; do not edit.",
        "//",
        "// The per-charset Unicode maps: entry b is the UTF-16 unit of byte b; a unit of 0xF000",
        "// or more is an UnmappedMarker. kCharsetUnicodeMaps is indexed by QXCHARSET.",
        "",
    ]
    for value in sorted(maps):
        name, data, m = maps[value]
        lines.append("// %d %s, from %s" % (value, name, data))
        lines.append("constexpr uint16_t kMap%s[256] = {" % name)
        for row in range(0, 256, 8):
            lines.append("    " + " ".join("0x%04X," % u for u in m[row:row + 8]))
        lines.append("};")
        lines.append("")
    lines.append("constexpr const uint16_t* kCharsetUnicodeMaps[57] = {")
    for value in range(57):
        lines.append("    %s, // %d" % ("kMap" + maps[value][0] if value in maps else "nullptr",
                                       value))
    lines.append("};")
    with open(os.path.join(out_dir, OUT_NAME), "w", encoding="ascii", newline="\n") as f:
        f.write("\n".join(lines) + "\n")
    return report


def main(argv):
    def generate_into(directory):
        overrides = generate(directory)
        if directory == OUT:
            for line in overrides:
                print("override " + line)
        return [OUT_NAME]

    return gencheck.run("gen_charset_maps", argv, generate_into, OUT, inputs=[DATA])


if __name__ == "__main__":
    sys.exit(main(sys.argv))
