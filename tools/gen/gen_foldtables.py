#!/usr/bin/env python3
"""Generate the eleven built-in folding tables of the string normalizers (src/text/folding_tables.inc).

Inputs (relative to the repository root):
  ../shared/data/codepages/cp1250.tsv .. cp1254.tsv  Microsoft WINDOWS tables 2.01: the character of
                                                     each byte of the pages whose letters are folded
  ../shared/data/foldtables/tableN.hex               the bytes of the tables whose identifiers have
                                                     been reproduced so far (0, 1, 4, 6, 7, 8, 9, 10);
                                                     compared, never copied
  Python's unicodedata (Unicode 14.0 with Python 3.11; only the canonical decompositions and simple
  upper-case mappings of the Latin, Greek and Cyrillic letters of those pages, unchanged since
  Unicode 3.0)

Output:
  src/text/folding_tables.inc   the 256 bytes of each table, its listed identifier and whether its
                                bytes are confirmed by that identifier

A table is identified by the CRC-16/ARC of its 256 bytes (`id`) and of its entries 32..126
(`printableId`). Every table is built here from its rules, step by step (TABLES below); a change
that no stated rule gives is a *departure*, written as data with the evidence for it. A table is
*confirmed* when its bytes reproduce its listed identifier: those of ../shared/data/foldtables,
and those found by tools/gen/search_foldtables.py (marked found_here). A table that is not confirmed is built
from its rules alone and answers to its listed identifier anyway: it is the default of its
character set and must exist, but its sort order may differ from the one hosts know by that number.

The generator fails unless: every table with a file in ../shared/data/foldtables equals that
file byte for byte and reproduces its `id`; every table marked found_here reproduces its `id`;
every other table does *not* (if one ever does, it has been found and must be marked); and every
table has its listed `printableId`.

Usage: gen_foldtables.py [--check]
  --check regenerates into a temporary directory and compares byte for byte: exit 0 when
  identical, 1 when not, 77 when the inputs are missing.
"""

import os
import sys
import unicodedata

import gen_charset_maps  # tools/gen/gen_charset_maps.py: the reader of the code-page files
import gencheck  # tools/gen/gencheck.py

PAGES = os.path.join(gencheck.SHARED_DATA, "codepages")
FOUND = os.path.join(gencheck.SHARED_DATA, "foldtables")
OUT = os.path.join(gencheck.ROOT, "src", "text")
OUT_NAME = "folding_tables.inc"

PRINTABLE_ID = 24861  # the printableId of every table whose entries 32..126 only up-case a-z


def crc16_arc(data):
    """CRC-16/ARC: reflected polynomial 0xA001, initial value 0, no final XOR."""
    crc = 0
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = (crc >> 1) ^ 0xA001 if crc & 1 else crc >> 1
    return crc


def read_page(name):
    """byte -> character of a code-page file (single bytes; unmapped bytes absent)."""
    return {code: chr(unit) for code, unit in gen_charset_maps.read_table(name).items()}


def read_found(n):
    """The bytes of ../shared/data/foldtables/tableN.hex, or None when there is no such file."""
    path = os.path.join(FOUND, "table%d.hex" % n)
    if not os.path.exists(path):
        return None
    with open(path, encoding="ascii") as f:
        return list(bytes.fromhex(f.read()))


# ---- Rules -------------------------------------------------------------------------------------
#
# A rule is a function from a table (a list of 256 values) to the changes it makes, as a dict
# byte -> value. Each returns its changes so that the steps of a table can be printed.

def ascii_upper():
    """a-z -> A-Z; every other byte to itself (table 0, and the start of every table)."""
    return {b: b - 32 for b in range(0x61, 0x7B)}


def spans(*items):
    """The map of `items`, each (first, last, value) or (byte, value)."""
    out = {}
    for item in items:
        if len(item) == 3:
            first, last, value = item
        else:
            (first, value), last = item, item[0]
        for b in range(first, last + 1):
            out[b] = value if isinstance(value, int) else ord(value)
    return out


def western_letters():
    """The C0-FF block of the Western layout (code page 1252): accented capitals to their base
    letters, and the lower-case block E0-FF the same way (F7 kept, FF -> Y)."""
    capitals = spans((0xC0, 0xC6, "A"), (0xC7, "C"), (0xC8, 0xCB, "E"), (0xCC, 0xCF, "I"),
                     (0xD0, "D"), (0xD1, "N"), (0xD2, 0xD6, "O"), (0xD8, "O"), (0xD9, 0xDC, "U"),
                     (0xDD, "Y"), (0xDE, "T"), (0xDF, "S"))
    out = dict(capitals)
    out.update({b + 0x20: v for b, v in capitals.items()})
    out[0xFF] = ord("Y")
    return out


# Letters without a canonical decomposition that accent stripping still takes to a base letter:
# a stroke counts as an accent, and sharp s is S, as in the Western block.
STROKED = {"\u0141": "L", "\u0110": "D", "\u00DF": "S"}


def upper(ch):
    """The simple upper-case mapping of one character (itself when it has none)."""
    u = ch.upper()
    return u if len(u) == 1 else ch


def base_letter(ch):
    """The ASCII letter an accented Latin letter is written from, or None."""
    if ch in STROKED:
        return STROKED[ch]
    first = unicodedata.normalize("NFD", ch)[0]
    return first if first != ch and "A" <= first <= "Z" else None


def is_letter(ch):
    """A letter, not a compatibility variant of one (the micro sign, the ordinal indicators)."""
    return ch.isalpha() and not unicodedata.decomposition(ch).startswith("<compat>")


def page_letters(page_name, strip, kept=()):
    """Up-casing of the letters of a page, in bytes 80-FF: each small letter maps to the byte of
    its capital; with `strip`, every capital (and through it every small letter) whose base is an
    ASCII letter maps to that letter, except the capitals in `kept` (bytes), which stay distinct."""
    page = read_page(page_name)
    byte_of = {}
    for b in sorted(page):
        byte_of.setdefault(page[b], b)
    out = {}
    for b in range(0x80, 0x100):
        ch = page.get(b)
        if ch is None or not is_letter(ch):
            continue
        cap = upper(ch)
        cap_byte = byte_of.get(cap, b)
        base = base_letter(cap) if strip and cap_byte not in kept else None
        if base:
            out[b] = ord(base)
        elif cap_byte != b:
            out[b] = cap_byte
    return out


# The quotation marks of the Cyrillic and Greek pages in 80-BF: single and double low-9, left and
# right single and double, and the single and double angle quotation marks.
QUOTES = (0x82, 0x84, 0x91, 0x92, 0x93, 0x94)
ANGLE_QUOTES = (0x8B, 0x9B, 0xAB, 0xBB)


def quotes_to_double_quote():
    return {b: 0x22 for b in QUOTES + ANGLE_QUOTES}


def greek_vowel_forms():
    """Code page 1253: every form of a vowel (small or capital, with or without tonos or
    dialytika) to its capital with tonos: Alpha A2, Epsilon B8, Eta B9, Iota BA, Omicron BC,
    Upsilon BE, Omega BF."""
    page = read_page("cp1253.tsv")
    with_tonos = {"\u0391": 0xA2, "\u0395": 0xB8, "\u0397": 0xB9, "\u0399": 0xBA,
                  "\u039F": 0xBC, "\u03A5": 0xBE, "\u03A9": 0xBF}
    out = {}
    for b, ch in page.items():
        if not is_letter(ch) or b < 0x80:
            continue
        base = upper(unicodedata.normalize("NFD", ch)[0])
        if base in with_tonos:
            out[b] = with_tonos[base]
    return out


def punctuation_classes():
    """Runs of non-letters, each mapped to its first member: [ \\ ] _ ` -> ^; | } ~ 7F 80-89 -> {;
    8E-99 -> 8D; 9E -> 9D; A1-BF -> A0."""
    return spans((0x5B, 0x5F, 0x5E), (0x60, 0x5E), (0x7C, 0x89, 0x7B), (0x8E, 0x99, 0x8D),
                 (0x9E, 0x9D), (0xA1, 0xBF, 0xA0))


def nordic(after_z, also):
    """Three letters sorting after Z in the order given: `after_z` is a list of (capital, small,
    value); `also` maps further letters (capital and small byte) to a value."""
    out = {}
    for cap, small, value in after_z:
        out[cap] = out[small] = value
    for (cap, small), value in also.items():
        out[cap] = out[small] = value
    return out


# ---- The tables --------------------------------------------------------------------------------
#
# Each table: number, listed id, printable id, base (a table number or None for the ASCII table),
# rules (name, changes) and departures (name, changes, evidence). Steps apply in order; a step
# may take bytes from the table being built (the lambdas receive it).

AE, AA, AUML, OSL, OUML, UUML = 0xC6, 0xC5, 0xC4, 0xD8, 0xD6, 0xDC
SMALL = 0x20

TABLES = [
    dict(n=0, id=65496, base=None, rules=[], departures=[]),
    dict(n=1, id=44414, base=0, rules=[("C0-FF: accented letters to their base capitals",
                                        lambda t: western_letters())],
         departures=[("8A, 9A -> S; 8C, 9C -> O; 9F -> Y (8E, 9E kept)",
                      lambda t: spans((0x8A, "S"), (0x9A, "S"), (0x8C, "O"), (0x9C, "O"),
                                      (0x9F, "Y")),
                      "the one hit among 1,687 variants of at most 4 departures "
                      "(search_foldtables.py); the table without it is 5607, the identifier hosts "
                      "know this table by; tables 7 and 10 then hit at the first try")]),
    dict(n=2, id=40623, base=0,
         rules=[("code page 1250: up-casing and accent stripping; C6, CA, D1, D3 stay distinct",
                 lambda t: page_letters("cp1250.tsv", True, kept=(0xC6, 0xCA, 0xD1, 0xD3)))],
         departures=[]),
    dict(n=3, id=55762, base=0, found_here=True,
         rules=[("code page 1251: small letters to capitals (80-FF), no stripping",
                 lambda t: page_letters("cp1251.tsv", False)),
                ("quotation marks to '\"'", lambda t: quotes_to_double_quote())],
         departures=[("Ghe with upturn (A5, B4) -> Ghe (C3)", lambda t: {0xA5: 0xC3, 0xB4: 0xC3},
                      "the one variant of 61 with at most one departure that hits "
                      "(search_foldtables.py; 0.001 chance hits expected)")]),
    dict(n=4, id=32694, base=0,
         rules=[("code page 1253: small letters to capitals", lambda t: page_letters("cp1253.tsv", False)),
                ("quotation marks to '\"'", lambda t: quotes_to_double_quote()),
                ("superscript two and three to the digits", lambda t: spans((0xB2, "2"), (0xB3, "3"))),
                ("vowel forms to the capital with tonos", lambda t: greek_vowel_forms())],
         departures=[("the angle quotation marks (8B, 9B, AB, BB) kept", lambda t: {
                         b: b for b in ANGLE_QUOTES}, "with the two below, the one hit among 2,099 "
                      "variants of at most 4 departures (search_foldtables.py; 0.01 chance hits "
                      "expected at 3)"),
                     ("every Omicron form -> CF (the capital without tonos)",
                      lambda t: {b: 0xCF for b in (0xBC, 0xCF, 0xEF, 0xFC)},
                      "the listed capitals with tonos leave Omicron out"),
                     ("the Upsilon-dialytika forms DB, FB, E0 -> DB",
                      lambda t: {b: 0xDB for b in (0xDB, 0xFB, 0xE0)},
                      "unexplained; needed for the identifier")]),
    dict(n=5, id=21121, base=1,
         rules=[("Turkish letters: D0 -> G, DD -> I, DE -> S (small forms alike)",
                 lambda t: spans((0xD0, "G"), (0xF0, "G"), (0xDD, "I"), (0xFD, "I"),
                                 (0xDE, "S"), (0xFE, "S"))),
                ("C6 stays (E6 -> C6)", lambda t: {AE: AE, AE + SMALL: AE})],
         departures=[]),
    dict(n=6, id=34070, base=1,
         rules=[("Danish and Norwegian: AE, A-umlaut -> C5; O-slash, O-umlaut -> C6; A-ring -> D8;"
                 " U-umlaut -> Y",
                 lambda t: nordic([], {(AE, AE + SMALL): AA, (AUML, AUML + SMALL): AA,
                                       (OSL, OSL + SMALL): AE, (OUML, OUML + SMALL): AE,
                                       (AA, AA + SMALL): OSL, (UUML, UUML + SMALL): ord("Y")}))],
         departures=[("9C kept as 9C", lambda t: {0x9C: 0x9C},
                      "the literal table misses; of all 65,280 single-byte changes exactly one "
                      "hits, and it is the change table 8 needs too")]),
    dict(n=7, id=41909, base=1,
         rules=[("AE -> '[', O-slash -> '\\', A-ring -> ']'",
                 lambda t: nordic([(AE, AE + SMALL, 0x5B), (OSL, OSL + SMALL, 0x5C),
                                   (AA, AA + SMALL, 0x5D)], {}))],
         departures=[]),
    dict(n=8, id=1298, base=1,
         rules=[("Finnish and Swedish: A-ring stays C5; A-umlaut, AE -> C6; O-umlaut, O-slash -> D8;"
                 " U-umlaut -> Y",
                 lambda t: nordic([], {(AA, AA + SMALL): AA, (AUML, AUML + SMALL): AE,
                                       (AE, AE + SMALL): AE, (OUML, OUML + SMALL): OSL,
                                       (OSL, OSL + SMALL): OSL, (UUML, UUML + SMALL): ord("Y")}))],
         departures=[("9C kept as 9C", lambda t: {0x9C: 0x9C}, "as table 6")]),
    dict(n=9, id=56485, printable=44564, base=10,
         rules=[("punctuation classes", lambda t: punctuation_classes())],
         departures=[]),
    dict(n=10, id=54273, base=1,
         rules=[("A-ring -> '[', A-umlaut -> '\\', O-umlaut -> ']'",
                 lambda t: nordic([(AA, AA + SMALL, 0x5B), (AUML, AUML + SMALL, 0x5C),
                                   (OUML, OUML + SMALL, 0x5D)], {}))],
         departures=[]),
]


def build_all(departures=True):
    """Every table's 256 bytes, in order; each table's base is built first. Without
    `departures`, each table follows its rules alone (on its base's rules alone)."""
    built = {}

    def build(n):
        if n in built:
            return built[n]
        recipe = TABLES[n]
        if recipe["base"] is None:
            table = [ascii_upper().get(b, b) for b in range(256)]
        else:
            table = list(build(recipe["base"]))
        for _, step in recipe["rules"]:
            for b, v in step(table).items():
                table[b] = v
        for _, step, _ in recipe["departures"] if departures else ():
            for b, v in step(table).items():
                table[b] = v
        built[n] = table
        return table

    return [build(recipe["n"]) for recipe in TABLES]


def verify(tables):
    """The checks of the module docstring; returns the list of failures and each table's status."""
    failures, status = [], []
    for recipe, table in zip(TABLES, tables):
        n = recipe["n"]
        got_id, got_printable = crc16_arc(table), crc16_arc(table[32:127])
        want_printable = recipe.get("printable", PRINTABLE_ID)
        confirmed = got_id == recipe["id"]
        if got_printable != want_printable:
            failures.append("table %d: printableId %d, listed %d" % (n, got_printable, want_printable))
        found = read_found(n)
        if found is not None and found != table:
            diff = [b for b in range(256) if found[b] != table[b]]
            failures.append("table %d differs from table%d.hex at %s"
                            % (n, n, ", ".join("%02X" % b for b in diff)))
        if found is not None and not confirmed:
            failures.append("table %d: id %d, listed %d" % (n, got_id, recipe["id"]))
        if found is None and confirmed != recipe.get("found_here", False):
            failures.append("table %d: id %d, listed %d; %s" % (
                n, got_id, recipe["id"], "it was found here" if recipe.get("found_here") else
                "it now reproduces its identifier: mark it found_here and say how"))
        status.append((confirmed, got_id))
    return failures, status


def cpp_table(recipe, table, confirmed, got_id):
    lines = []
    state = "confirmed: its bytes reproduce the identifier" if confirmed else (
        "rule-built, not yet confirmed: its bytes give %d" % got_id)
    lines.append("    // %d: %s" % (recipe["n"], state))
    for name, _ in recipe["rules"]:
        lines.append("    //   rule: %s" % name)
    for name, _, why in recipe["departures"]:
        lines.append("    //   departure: %s (%s)" % (name, why))
    lines.append("    {%d, %s, {" % (recipe["id"], "true" if confirmed else "false"))
    for row in range(16):
        cells = ", ".join("0x%02X" % v for v in table[row * 16:row * 16 + 16])
        lines.append("        " + cells + ",")
    lines.append("    }},")
    return lines


def generate_into(directory):
    tables = build_all()
    failures, status = verify(tables)
    if failures:
        for f in failures:
            sys.stderr.write("gen_foldtables.py: %s\n" % f)
        sys.exit(1)
    out = [
        "// generated by tools/gen/gen_foldtables.py from ../shared/data/codepages (1250-1254) and",
        "// the table rules in the generator; do not edit.",
        "//",
        "// The eleven built-in folding tables in their fixed order: the identifier a host knows the",
        "// table by, whether the table's bytes are confirmed by it (CRC-16/ARC of the 256 bytes), and",
        "// the bytes. A table not confirmed follows its stated rules and answers to its identifier.",
        "",
        "constexpr FoldingTableData kFoldingTableData[11] = {",
    ]
    for recipe, table, (confirmed, got_id) in zip(TABLES, tables, status):
        out.extend(cpp_table(recipe, table, confirmed, got_id))
    out.append("};")
    os.makedirs(directory, exist_ok=True)
    with open(os.path.join(directory, OUT_NAME), "w", encoding="ascii", newline="\n") as f:
        f.write("\n".join(out) + "\n")
    return [OUT_NAME]


if __name__ == "__main__":
    inputs = [os.path.join(PAGES, "cp%d.tsv" % cp) for cp in range(1250, 1255)] + [FOUND]
    sys.exit(gencheck.run("gen_foldtables.py", sys.argv, generate_into, OUT, inputs=inputs))
