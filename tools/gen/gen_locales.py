#!/usr/bin/env python3
"""Generate the built-in Windows locale database.

Inputs (read-only, ../shared/data/locales relative to the repository root):
  locales.tsv         one row per LCID (142 rows): the text GetLocaleInfoW returns per LCTYPE
  lctypes.tsv         numeric values of the LOCALE_*, TIME_* and DATE_* constants
  locale_sources.tsv  per LCID: which Wine 5.0 locale file and which .NET 4 (Windows 7)
                      culture supplied its values
  variants.tsv        every value where the two sources disagree, and the one chosen
The data folder's README describes the sources and the Windows 7 policy; this generator
adds no values of its own apart from the hand-made constant table below.

Outputs (committed):
  src/platform/locale_tables.inc   string pool, per-LCID string ids, LCTYPE index, provenance
  include/qxutil/winlocale.h       LOCALE_*/TIME_*/DATE_* constants and the locale calls

Usage: gen_locales.py            regenerate the outputs in place
       gen_locales.py --check    regenerate into a temporary place and compare byte for byte:
                                 exit 0 identical, 1 different, 77 inputs not available
Python 3 standard library only.
"""

import csv
import os
import sys
import textwrap

import gencheck  # tools/gen/gencheck.py

ROOT = gencheck.ROOT
DATA = os.path.join(gencheck.SHARED_DATA, "locales")
INPUTS = ["locales.tsv", "lctypes.tsv", "locale_sources.tsv", "variants.tsv"]
OUT_TABLES = os.path.join("src", "platform", "locale_tables.inc")
OUT_HEADER = os.path.join("include", "qxutil", "winlocale.h")
GENERATOR = "tools/gen/gen_locales.py"

# Hand-made additions to the generated header: Windows constants and macros that the
# locale calls need but that lctypes.tsv does not list (public winnt.h / winnls.h values).
# (name, definition, comment)
EXTRA_DEFINES = [
    ("LANG_NEUTRAL", "0x00", "primary language of the special LCIDs"),
    ("LANG_INVARIANT", "0x7F", "primary language of LOCALE_INVARIANT"),
    ("LANG_CHINESE", "0x04", "neutral Chinese maps to zh-CN"),
    ("LANG_SPANISH", "0x0A", "neutral Spanish maps to es-ES (modern sort)"),
    ("SUBLANG_NEUTRAL", "0x00", "language without a region"),
    ("SUBLANG_DEFAULT", "0x01", "the language's default region"),
    ("SUBLANG_SYS_DEFAULT", "0x02", "with LANG_NEUTRAL: the system default"),
    ("SORT_DEFAULT", "0x0", "default sort order"),
    ("LCID_INSTALLED", "0x00000001", "IsValidLocale: installed"),
    ("LCID_SUPPORTED", "0x00000002", "IsValidLocale: supported"),
    ("LOCALE_ALLOW_NEUTRAL_NAMES", "0x08000000", "LCTYPE flag of LocaleNameToLCID"),
    ("LOCALE_NAME_MAX_LENGTH", "85", "longest locale name, terminator included"),
    ("LOCALE_NAME_USER_DEFAULT", "nullptr", "LocaleNameToLCID: the user default"),
    ("LOCALE_NAME_INVARIANT", 'L""', "LocaleNameToLCID: the invariant locale"),
    ("LOCALE_NAME_SYSTEM_DEFAULT", 'L"!x-sys-default-locale"',
     "LocaleNameToLCID: the system default"),
]

# Hand-made declarations of the Windows calls the locale database provides.
CALL_DECLARATIONS = """\
// ---- Calls ----------------------------------------------------------------------

QXUTIL_API int GetLocaleInfoW(LCID Locale, LCTYPE LCType, LPWSTR lpLCData, int cchData);
QXUTIL_API LCID GetThreadLocale();
QXUTIL_API BOOL SetThreadLocale(LCID Locale);
QXUTIL_API LCID GetUserDefaultLCID();
QXUTIL_API LCID GetSystemDefaultLCID();
QXUTIL_API LANGID GetUserDefaultLangID();
QXUTIL_API LANGID GetSystemDefaultLangID();
QXUTIL_API LCID ConvertDefaultLocale(LCID Locale);
QXUTIL_API BOOL IsValidLocale(LCID Locale, DWORD dwFlags);
QXUTIL_API int LCIDToLocaleName(LCID Locale, LPWSTR lpName, int cchName, DWORD dwFlags);
QXUTIL_API LCID LocaleNameToLCID(LPCWSTR lpName, DWORD dwFlags);
"""

# LCTYPE kinds as the runtime tables store them.
KIND_TEXT, KIND_DECIMAL, KIND_HEX = 0, 1, 2


def unescape(value):
    """Undo the data's escapes: \\t \\n \\r \\\\ (README, "File format")."""
    out = []
    i = 0
    while i < len(value):
        c = value[i]
        if c == "\\" and i + 1 < len(value) and value[i + 1] in "tnr\\":
            out.append({"t": "\t", "n": "\n", "r": "\r", "\\": "\\"}[value[i + 1]])
            i += 2
        else:
            out.append(c)
            i += 1
    return "".join(out)


def read_tsv(name):
    with open(os.path.join(DATA, name), encoding="utf-8", newline="") as f:
        lines = f.read().split("\n")
    if lines and lines[-1] == "":
        lines.pop()
    header = lines[0].split("\t")
    rows = []
    for n, line in enumerate(lines[1:], 2):
        fields = line.split("\t")
        if len(fields) != len(header):
            sys.exit("%s:%d: %d fields, expected %d" % (name, n, len(fields), len(header)))
        rows.append(dict(zip(header, [unescape(f) for f in fields])))
    return header, rows


INVISIBLE = [(0x00, 0x1F), (0x7F, 0xA0), (0xAD, 0xAD), (0x070F, 0x070F), (0x200B, 0x200F),
             (0x2028, 0x202F), (0x2060, 0x206F), (0xFEFF, 0xFEFF)]


def show(value):
    """A value for a // comment: invisible characters and backslashes as <U+XXXX>."""
    out = []
    for c in value:
        cp = ord(c)
        if c == "\\" or any(lo <= cp <= hi for lo, hi in INVISIBLE):
            out.append("<U+%04X>" % cp)
        else:
            out.append(c)
    return '"' + "".join(out) + '"'


def cxx_u16(value):
    """The body of a u"" literal for value (BMP only), safe against escape run-on."""
    out = []
    for c in value:
        cp = ord(c)
        if cp > 0xFFFF:
            sys.exit("value outside the BMP: %r" % value)
        if c == '"' or c == "\\":
            out.append("\\" + c)
        elif cp < 0x20 or cp == 0x7F:
            out.append("\\%03o" % cp)  # three octal digits: never runs on
        elif cp < 0x7F:
            out.append(c)
        else:
            out.append("\\u%04X" % cp)  # exactly four hex digits
    return "".join(out)


def load():
    _, lctypes = read_tsv("lctypes.tsv")
    header, locales = read_tsv("locales.tsv")
    _, sources = read_tsv("locale_sources.tsv")
    _, variants = read_tsv("variants.tsv")
    return lctypes, header, locales, sources, variants


def build_tables(lctypes, header, locales, sources, variants):
    value_of = {r["constant"]: int(r["hex"], 16) for r in lctypes}
    kind_of = {r["constant"]: r["kind"] for r in lctypes}
    columns = [c for c in header if c.startswith("LOCALE_")]
    for c in columns:
        if c not in value_of:
            sys.exit("locales.tsv column %s has no constant in lctypes.tsv" % c)
    columns.sort(key=lambda c: value_of[c])
    if len(set(value_of[c] for c in columns)) != len(columns):
        sys.exit("two columns of locales.tsv have the same LCTYPE")

    def kind(c):
        if c == "LOCALE_ILANGUAGE":
            return KIND_HEX
        return KIND_DECIMAL if kind_of[c] == "lctype-integer-as-string" else KIND_TEXT

    for row in locales:
        for c in columns:
            v = row[c]
            if kind(c) == KIND_DECIMAL and not v.isdigit():
                sys.exit("%s %s: %r is not a decimal number" % (row["lcid"], c, v))
            if kind(c) == KIND_HEX and len(v) != 4:
                sys.exit("%s %s: %r is not four hex digits" % (row["lcid"], c, v))

    strings = {"": 0}
    order = [""]
    for row in locales:
        for c in columns:
            if row[c] not in strings:
                strings[row[c]] = len(order)
                order.append(row[c])
    starts = [0]
    for s in order:
        starts.append(starts[-1] + len(s) + 1)
    if starts[-1] > 0xFFFF or len(order) > 0xFFFF:
        sys.exit("string pool too large for 16-bit offsets")

    rows = sorted(locales, key=lambda r: int(r["lcid"]))
    src = {int(r["lcid"]): r for r in sources}
    out = []
    w = out.append
    w("// generated by %s from ../shared/data/locales (locales.tsv, lctypes.tsv," % GENERATOR)
    w("// locale_sources.tsv, variants.tsv); do not edit.")
    w("//")
    w("// What GetLocaleInfoW returns for %d LCIDs and %d LCTYPEs, as Windows 7 returns it"
      % (len(rows), len(columns)))
    w("// (docs/locales.md). Layout: kLocalePool holds every distinct value once, each")
    w("// followed by a terminator; value id i is the text at kLocaleStringStart[i], of length")
    w("// kLocaleStringStart[i + 1] - kLocaleStringStart[i] - 1. kLocaleRows gives, per LCID")
    w("// (ascending), the value id of each LCTYPE in kLocaleFields order (ascending LCTYPE).")
    w("//")
    w("// Provenance, per LCID: the Wine 5.0 locale file; how many fields came from Windows 7")
    w("// (.NET 4) / Wine / were derived from the chosen picture / other; how many day and month")
    w("// names differ between the sources; the .NET 4 calendar and culture (= the LCID's name).")
    name_variants = {}
    for v in variants:
        if "MONTHNAME" in v["lctype"] or "DAYNAME" in v["lctype"]:
            key = int(v["lcid"])
            name_variants[key] = name_variants.get(key, 0) + 1
    for row in rows:
        lcid = int(row["lcid"])
        s = src.get(lcid)
        if s is None:
            sys.exit("locale_sources.tsv has no row for %d" % lcid)
        culture = "=" if s["net4_culture"] == row["name"] else s["net4_culture"]
        w("//   %5d %-12s %-8s %2s/%2s/%s/%-2s %3d  %-19s %s" % (
            lcid, row["name"] or "(invariant)", s["wine_file"], s["fields_from_win7"],
            s["fields_from_wine"], s["fields_derived"], s["fields_other"],
            name_variants.get(lcid, 0), s["net4_calendar"], culture))
    w("//")
    w("// Values chosen where the sources disagree (day and month names left out):")
    w("//   LCID  LCTYPE  chosen (from)  [Wine XP-era / .NET 4 on Windows 7]")
    for v in variants:
        if "MONTHNAME" in v["lctype"] or "DAYNAME" in v["lctype"]:
            continue
        first = "//   %s %s %s %s (%s)" % (v["lcid"], v["name"], v["lctype"][len("LOCALE_"):],
                                         show(v["chosen"]), v["chosen_from"])
        rest = "[%s / %s]" % (show(v["wine_xp_era"]), show(v["net4_win7"]))
        if len(first) + 1 + len(rest) <= 100:
            w(first + " " + rest)
        else:
            w(first)
            w("//       " + rest)
    w("")
    w("constexpr int kLocaleFieldCount = %d;" % len(columns))
    w("constexpr int kLocaleRowCount = %d;" % len(rows))
    w("constexpr int kLocaleStringCount = %d;" % len(order))
    w("")
    w("// How LOCALE_RETURN_NUMBER reads a value: not at all, as decimal, as hexadecimal.")
    w("enum LocaleKind : unsigned char { kLocaleText, kLocaleDecimal, kLocaleHex };")
    w("struct LocaleField {")
    w("  LCTYPE type;")
    w("  LocaleKind kind;")
    w("};")
    w("struct LocaleRow {")
    w("  LCID lcid;")
    w("  uint16_t value[kLocaleFieldCount]; // value ids, in kLocaleFields order")
    w("};")
    w("")
    w("// LCTYPEs in ascending order, with how LOCALE_RETURN_NUMBER reads them.")
    w("constexpr LocaleField kLocaleFields[kLocaleFieldCount] = {")
    kind_name = {KIND_TEXT: "kLocaleText", KIND_DECIMAL: "kLocaleDecimal",
                 KIND_HEX: "kLocaleHex"}
    for c in columns:
        w("    {0x%04X, %s}, // %s" % (value_of[c], kind_name[kind(c)], c))
    w("};")
    w("")
    w("// Every distinct value, each followed by a terminator.")
    w("constexpr char16_t kLocalePool[] =")
    line = "   "
    for s in order:
        piece = ' u"%s\\0"' % cxx_u16(s)
        if len(line) + len(piece) > 98 and line != "   ":
            w(line)
            line = "   "
        line += piece
    w(line + ";")
    w("")
    w("constexpr uint16_t kLocaleStringStart[kLocaleStringCount + 1] = {")
    for i in range(0, len(starts), 12):
        w("    " + ", ".join(str(x) for x in starts[i:i + 12]) + ",")
    w("};")
    w("")
    w("constexpr LocaleRow kLocaleRows[kLocaleRowCount] = {")
    for row in rows:
        ids = [strings[row[c]] for c in columns]
        w("    {%s, // %s" % (row["lcid"], row["name"] or "(invariant)"))
        for i in range(0, len(ids), 14):
            w("     " + ("{" if i == 0 else " ") + ", ".join(str(x) for x in ids[i:i + 14])
              + ("}}," if i + 14 >= len(ids) else ","))
    w("};")
    return "\n".join(out) + "\n"


# Notes in lctypes.tsv speak of the data files; the public header speaks of the library.
PUBLIC_NOTES = [
    (" (row 127 in locales.tsv)", ""),
    (" (see README)", ", as Windows numbers them"),
    ("constant only: no column in locales.tsv", "GetLocaleInfoW has no value for it"),
]


def public_note(note):
    for old, new in PUBLIC_NOTES:
        note = note.replace(old, new)
    if "tsv" in note or "README" in note:
        sys.exit("lctypes.tsv note speaks of the data files: %s" % note)
    return note


def build_header(lctypes):
    out = []
    w = out.append
    w("//===- qxutil/winlocale.h - Windows locale constants and calls --*- C++ -*-===//")
    w("//")
    w("// generated by %s; do not edit." % GENERATOR)
    w("//")
    w("// The LOCALE_*, TIME_* and DATE_* constants with Windows' values, and the locale")
    w("// calls of the built-in locale database (docs/locales.md). A thread's")
    w("// locale is pinned with SetThreadLocale; on Windows <windows.h> supplies")
    w("// all of it.")
    w("//")
    w("//===----------------------------------------------------------------------===//")
    w("#ifndef QXUTIL_WINLOCALE_H")
    w("#define QXUTIL_WINLOCALE_H")
    w("")
    w('#include "qxutil/wintypes.h"')
    w("")
    w("#ifndef _WIN32")
    w("")
    w("typedef WORD LANGID;")
    groups = [
        ("lcid", "Special LCIDs"),
        ("lctype-flag", "Flags OR-ed into an LCTYPE"),
        ("lctype", "LCTYPEs (GetLocaleInfoW)"),
        ("GetTimeFormat-flag", "GetTimeFormatW flags"),
        ("GetDateFormat-flag", "GetDateFormatW flags"),
    ]
    seen = set()
    for prefix, title in groups:
        w("")
        w("// ---- %s %s" % (title, "-" * max(3, 76 - len(title))))
        w("")
        for r in lctypes:
            if not r["kind"].startswith(prefix) or r["constant"] in seen:
                continue
            if prefix == "lctype" and r["kind"] == "lctype-flag":
                continue
            seen.add(r["constant"])
            note = public_note(r["note"])
            width = 10 if r["hex"].startswith("0x") and len(r["hex"]) > 6 else 6
            value = "0x%0*X" % (width - 2, int(r["hex"], 16))
            if note and len("#define %s %s // %s" % (r["constant"], value, note)) > 100:
                for part in textwrap.wrap(note, 96):
                    w("// " + part)
                w("#define %s %s" % (r["constant"], value))
            elif note:
                w("#define %s %s // %s" % (r["constant"], value, note))
            else:
                w("#define %s %s" % (r["constant"], value))
    unknown = [r["constant"] for r in lctypes if r["constant"] not in seen]
    if unknown:
        sys.exit("lctypes.tsv kinds not handled: %s" % ", ".join(unknown))
    w("")
    w("// ---- Language identifiers and locale names " + "-" * 39)
    w("")
    for name, value, comment in EXTRA_DEFINES:
        w("#define %s %s // %s" % (name, value, comment))
    w("")
    w("#define MAKELANGID(p, s) ((WORD)((((WORD)(s)) << 10) | (WORD)(p)))")
    w("#define PRIMARYLANGID(lgid) ((WORD)(lgid) & 0x3FF)")
    w("#define SUBLANGID(lgid) ((WORD)(lgid) >> 10)")
    w("#define MAKELCID(lgid, srtid) ((DWORD)((((DWORD)((WORD)(srtid))) << 16) | (WORD)(lgid)))")
    w("#define LANGIDFROMLCID(lcid) ((WORD)(lcid))")
    w("#define SORTIDFROMLCID(lcid) ((WORD)((((DWORD)(lcid)) >> 16) & 0xF))")
    w("")
    w(CALL_DECLARATIONS.rstrip("\n"))
    w("")
    w("#endif // _WIN32")
    w("")
    w("#endif // QXUTIL_WINLOCALE_H")
    return "\n".join(out) + "\n"


def generate(root):
    data = load()
    outputs = {
        OUT_TABLES: build_tables(*data),
        OUT_HEADER: build_header(data[0]),
    }
    for rel, text in outputs.items():
        path = os.path.join(root, rel)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "w", encoding="utf-8", newline="\n") as f:
            f.write(text)
    return list(outputs)


def main(argv):
    return gencheck.run("gen_locales", argv, generate, ROOT,
                        inputs=[os.path.join(DATA, n) for n in INPUTS])


if __name__ == "__main__":
    sys.exit(main(sys.argv))
