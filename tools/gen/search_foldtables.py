#!/usr/bin/env python3
"""Search for the bytes of the folding tables whose identifiers the rules alone do not reproduce.

Inputs: those of gen_foldtables.py (the code pages 1250-1254 in ../shared/data/codepages, the
rules in gen_foldtables.py, Python's unicodedata); nothing is read from ../shared/data/foldtables.

A folding table's identifier is the CRC-16/ARC of its 256 bytes. A table built from its rules
either reproduces its identifier or not; when not, the true bytes differ from the rules in
ways nobody wrote down. This script searches, for each table, the *principled* variants of its
rules: a hypothesis is a base table (the rule-built one, or one built on another revision of the
Western table), and a list of independent option groups, each a small set of alternative
treatments of one letter (or one class of symbols) that a person writing the table could
naturally have chosen: fold it, keep it distinct from its base letter, leave it alone, or keep
what the Western table had at that byte. Choosing a non-base alternative costs 1 (a departure).

CRC-16/ARC has initial value 0 and no final XOR, so it is linear over GF(2): for tables of equal
length, crc(x XOR y) = crc(x) XOR crc(y). Each alternative is a change to a set of bytes that no
other group touches, so its effect on the checksum is a fixed 16-bit delta, and a combination's
checksum is crc(base) XOR the deltas chosen. A meet-in-the-middle join (the groups split in two
halves, each enumerated up to the cost bound) finds every combination that hits the identifier.

Each hypothesis reports, for every cost k up to the bound: how many combinations cost exactly k,
how many of them hit, and how many hits chance alone would give (combinations / 65,536). A hit
counts as found only where the expected number of chance hits at its cost and below is well below
1; anything else is what 1 in 65,536 arbitrary tables gives anyway.

Usage: search_foldtables.py [--max-cost K] [TABLE...]
  TABLE: 1 (the calibration: the method must find it), 2, 3, 4, 5; default all.
  --max-cost: departures explored, default 4. Exit 77 when ../shared/data is missing.

It is deterministic, needs only the standard library, and takes well under a minute of CPU for
the default set.
"""

import os
import sys
import time

import gen_foldtables as gen  # tools/gen/gen_foldtables.py: the rules and the code pages
import gencheck

QUOTE_MARKS = gen.QUOTES  # 82 84 91-94
ANGLE_QUOTES = gen.ANGLE_QUOTES  # 8B 9B AB BB

# A hit counts as found when the combinations at its cost and below would give at most this many
# chance hits; above it, a hit is what arbitrary tables give at the rate of 1 in 65,536.
SIGNIFICANT = 0.05


# ---- Option groups ------------------------------------------------------------------------------

class Group:
    """Alternatives for one set of bytes; alternative 0 is the base table itself (cost 0)."""

    def __init__(self, name):
        self.name = name
        self.alternatives = []  # (label, {byte: value}, cost)

    def add(self, label, changes, cost=1):
        self.alternatives.append((label, dict(changes), cost))
        return self

    def finish(self, base):
        """Drops the alternatives that change nothing or repeat another; returns self or None."""
        seen, kept = set(), []
        for label, changes, cost in self.alternatives:
            real = {b: v for b, v in changes.items() if base[b] != v}
            key = tuple(sorted(real.items()))
            if not real or key in seen:
                continue
            seen.add(key)
            kept.append((label, real, cost))
        self.alternatives = kept
        return self if kept else None

    def bytes(self):
        return set(b for _, changes, _ in self.alternatives for b in changes)


def letter_pairs(page_name):
    """(capital byte, small byte or None, capital character) for the letters of a page in
    80-FF; a letter without a case partner in the page is its own capital."""
    page = gen.read_page(page_name)
    byte_of = {}
    for b in sorted(page):
        byte_of.setdefault(page[b], b)
    pairs, done = [], set()
    for b in range(0x80, 0x100):
        ch = page.get(b)
        if ch is None or not gen.is_letter(ch) or b in done:
            continue
        cap = gen.upper(ch)
        cap_b = byte_of.get(cap)
        low = ch.lower() if len(ch.lower()) == 1 else ch
        low_b = byte_of.get(low)
        if cap_b is None:
            cap_b, cap = b, ch
        small_b = low_b if low_b not in (None, cap_b) else None
        done.update(x for x in (cap_b, small_b) if x is not None)
        pairs.append((cap_b, small_b, cap))
    return pairs


def letter_groups(page_name, western, extra=None):
    """One group per letter of the page: the ways a person could have treated it."""
    groups = []
    for cap_b, small_b, cap in letter_pairs(page_name):
        both = [x for x in (cap_b, small_b) if x is not None]
        base = gen.base_letter(cap)
        g = Group("%s (%s)" % (cap, " ".join("%02X" % x for x in both)))
        g.add("kept distinct", {x: cap_b for x in both})
        g.add("left alone", {x: x for x in both})
        if base:
            g.add("stripped to %s" % base, {x: ord(base) for x in both})
        if western is not None:
            g.add("the Western table's bytes", {x: western[x] for x in both})
        for label, changes in (extra or {}).get(cap_b, []):
            g.add(label, changes)
        groups.append(g)
    return groups


def symbol_groups(page_name):
    """Quotation marks and superscripts, which some tables fold: only the bytes of the page that
    hold those characters."""
    page = gen.read_page(page_name)
    holds = lambda b, ch: page.get(b) == ch
    quotes = [b for b in QUOTE_MARKS if b in page]
    angles = [b for b, ch in zip(ANGLE_QUOTES, "\u2039\u203a\u00ab\u00bb") if holds(b, ch)]
    q = Group("quotation marks")
    q.add("82 84 91-94 to '\"'", {b: 0x22 for b in quotes})
    q.add("all quotation marks to '\"'", {b: 0x22 for b in quotes + angles})
    q.add("single ones to \"'\", double ones to '\"'",
          {b: 0x27 if page[b] in "\u201a\u2018\u2019" else 0x22 for b in quotes})
    q.add("closing to opening", {0x92: 0x91, 0x94: 0x93})
    s = Group("superscripts")
    sups = {b: ord(d) for b, d in ((0xB2, "2"), (0xB3, "3"), (0xB9, "1"))
            if holds(b, "\u00b2\u00b3\u00b9"["231".index(d)])}
    s.add("to the digits", sups)
    return [q, s]


# ---- Hypotheses ---------------------------------------------------------------------------------

def western_revisions():
    """The Western table in its three revisions: without the 80-9F folds (5607), with them but 9C
    kept (the base of tables 6 and 8), and as shipped (44414)."""
    shipped = gen.build_all()[1]
    rev0 = list(shipped)
    for b in (0x8A, 0x9A, 0x8C, 0x9C, 0x9F):
        rev0[b] = b
    rev1 = list(shipped)
    rev1[0x9C] = 0x9C
    return {"5607": rev0, "9C kept": rev1, "44414": shipped}


def hypotheses(n):
    """[(name, base table, groups)] for table n."""
    tables = gen.build_all(departures=False)  # each table by its rules alone
    revisions = western_revisions()
    out = []
    if n == 1:
        base = tables[1]  # the rules alone give revision 5607
        groups = []
        for name, pair, target in (("S caron", (0x8A, 0x9A), "S"), ("OE", (0x8C, 0x9C), "O"),
                                   ("Z caron", (0x8E, 0x9E), "Z")):
            g = Group(name)
            g.add("both to %s" % target, {b: ord(target) for b in pair})
            g.add("capital only", {pair[0]: ord(target)})
            g.add("small to capital", {pair[1]: pair[0]})
            groups.append(g)
        groups.append(Group("Y diaeresis (9F)").add("to Y", {0x9F: ord("Y")}))
        groups += symbol_groups("cp1252.tsv")
        groups.append(Group("ordinals").add("AA BA to A O", {0xAA: ord("A"), 0xBA: ord("O")}))
        groups.append(Group("micro sign").add("B5 to M", {0xB5: ord("M")}))
        out.append(("revision 5607 of the Western table", base, groups))
    elif n == 2:
        for rev_name, western in [("rules alone", None)] + list(revisions.items()):
            groups = letter_groups("cp1250.tsv", western)
            groups += symbol_groups("cp1250.tsv")
            groups.append(Group("dot above (FF)").add("to Y as in the Western table", {0xFF: ord("Y")}))
            name = "rule-built 1250" + ("" if western is None else
                                        ", Western revision %s as the alternative" % rev_name)
            out.append((name, tables[2], groups))  # the rules alone give 15491
        # A rule-level alternative: every Polish letter stays distinct, not only the four named.
        polish = list(tables[2])
        for capital, small in ((0xA5, 0xB9), (0xA3, 0xB3), (0x8C, 0x9C), (0x8F, 0x9F), (0xAF, 0xBF)):
            polish[capital] = polish[small] = capital
        groups = letter_groups("cp1250.tsv", None) + symbol_groups("cp1250.tsv")
        out.append(("1250 with all nine Polish letters distinct", polish, groups))
    elif n == 3:
        extra = {}
        cyr = gen.read_page("cp1251.tsv")
        byte_of = {ch: b for b, ch in cyr.items()}
        # A letter of another Slavic language folded to the Russian letter it is written from.
        russian = {"\u0401": "\u0415", "\u0407": "\u0406", "\u040E": "\u0423", "\u0403": "\u0413",
                   "\u040C": "\u041A", "\u0490": "\u0413", "\u0404": "\u0415", "\u0406": "\u0418"}
        for cap, base in russian.items():
            cb = byte_of[cap]
            small = byte_of.get(cap.lower())
            target = byte_of.get(base)
            if target is None:
                continue
            extra.setdefault(cb, []).append(("to the Russian %s" % base,
                                             {x: target for x in (cb, small) if x is not None}))
        for rev_name, western in [("rules alone", None)] + list(revisions.items()):
            groups = letter_groups("cp1251.tsv", western, extra)
            groups += symbol_groups("cp1251.tsv")
            groups.append(Group("numero sign (B9)").add("to N", {0xB9: ord("N")}))
            groups.append(Group("dashes").add("96 97 to '-'", {0x96: 0x2D, 0x97: 0x2D}))
            groups.append(Group("no-break space").add("A0 to ' '", {0xA0: 0x20}))
            name = "rule-built 1251" + ("" if western is None else
                                        ", Western revision %s as the alternative" % rev_name)
            out.append((name, tables[3], groups))
    elif n == 4:
        base = tables[4]
        groups = []
        g = Group("Omicron forms (BC CF EF FC)")
        g.add("to CF", {b: 0xCF for b in (0xBC, 0xCF, 0xEF, 0xFC)})
        g.add("small to capital, tonos kept", {0xEF: 0xCF, 0xFC: 0xBC, 0xBC: 0xBC, 0xCF: 0xCF})
        groups.append(g)
        g = Group("Upsilon-dialytika forms (DB FB E0)")
        g.add("to DB", {b: 0xDB for b in (0xDB, 0xFB, 0xE0)})
        g.add("DB FB to DB, E0 to BE", {0xDB: 0xDB, 0xFB: 0xDB, 0xE0: 0xBE})
        groups.append(g)
        g = Group("Iota-dialytika forms (DA FA C0)")
        g.add("to DA", {b: 0xDA for b in (0xDA, 0xFA, 0xC0)})
        g.add("DA FA to DA, C0 to BA", {0xDA: 0xDA, 0xFA: 0xDA, 0xC0: 0xBA})
        groups.append(g)
        groups.append(Group("final sigma (F2)").add("kept", {0xF2: 0xF2}))
        groups.append(Group("micro sign (B5)").add("to Mu (CC)", {0xB5: 0xCC}))
        for vowel, forms in (("Alpha", (0xA2, 0xC1, 0xDC, 0xE1)), ("Epsilon", (0xB8, 0xC5, 0xDD, 0xE5)),
                             ("Eta", (0xB9, 0xC7, 0xDE, 0xE7)), ("Omega", (0xBF, 0xD9, 0xF9, 0xFE))):
            capital = forms[1]
            groups.append(Group(vowel).add("to the capital without tonos", {b: capital for b in forms}))
        q = Group("quotation marks")
        q.add("only 82 84 91-94 to '\"'", {b: b for b in ANGLE_QUOTES})
        q.add("none", {b: b for b in QUOTE_MARKS + ANGLE_QUOTES})
        groups.append(q)
        groups.append(Group("superscripts").add("kept", {0xB2: 0xB2, 0xB3: 0xB3}))
        groups.append(Group("tonos marks (A1 B4)").add("to the space", {0xA1: 0x20, 0xB4: 0x20}))
        out.append(("its rules alone (every quotation mark; Omicron to BC)", base, groups))
    elif n == 5:
        for rev_name, western in revisions.items():
            base = list(western)
            turkish = {0xD0: ord("G"), 0xF0: ord("G"), 0xDD: ord("I"), 0xFD: ord("I"),
                       0xDE: ord("S"), 0xFE: ord("S"), 0xC6: 0xC6, 0xE6: 0xC6}
            for b, v in turkish.items():
                base[b] = v
            groups = letter_groups("cp1254.tsv", western)
            groups += symbol_groups("cp1254.tsv")
            groups.append(Group("ordinals").add("AA BA to A O", {0xAA: ord("A"), 0xBA: ord("O")}))
            out.append(("Western revision %s with the Turkish rules" % rev_name, base, groups))
    return out


# ---- The search ---------------------------------------------------------------------------------

def delta(base, changes):
    t = list(base)
    for b, v in changes.items():
        t[b] = v
    return gen.crc16_arc(t) ^ gen.crc16_arc(base)


def enumerate_half(groups, deltas, max_cost):
    """{crc delta: [(cost, choices)]} for every combination of `groups` up to max_cost."""
    out = {}

    def walk(i, crc, cost, choices):
        if i == len(groups):
            out.setdefault(crc, []).append((cost, choices))
            return
        walk(i + 1, crc, cost, choices)
        for k, (_, _, c) in enumerate(groups[i].alternatives):
            if cost + c <= max_cost:
                walk(i + 1, crc ^ deltas[i][k], cost + c, choices + ((i, k),))

    walk(0, 0, 0, ())
    return out


def combination_counts(groups, max_cost):
    """How many combinations cost exactly k, for k = 0..max_cost."""
    counts = [1] + [0] * max_cost
    for g in groups:
        new = list(counts)
        for _, _, c in g.alternatives:
            for k in range(max_cost - c + 1):
                new[k + c] += counts[k]
        counts = new
    return counts


def search(name, target, base, groups, max_cost):
    groups = [g for g in (g.finish(base) for g in groups) if g]
    owner = {}
    for g in groups:
        for b in g.bytes():
            assert b not in owner, "bytes %02X in %s and %s" % (b, owner[b], g.name)
            assert not 32 <= b <= 126, "a variant must keep the printable identifier"
            owner[b] = g.name
    deltas = [[delta(base, ch) for _, ch, _ in g.alternatives] for g in groups]
    half = len(groups) // 2
    left = enumerate_half(groups[:half], deltas[:half], max_cost)
    right = enumerate_half(groups[half:], deltas[half:], max_cost)
    need = target ^ gen.crc16_arc(base)
    hits = []
    for crc, combos in left.items():
        for cost_r, choices_r in right.get(crc ^ need, ()):
            for cost_l, choices_l in combos:
                if cost_l + cost_r <= max_cost:
                    hits.append((cost_l + cost_r, choices_l + tuple((half + i, k) for i, k in choices_r)))
    hits.sort()
    counts = combination_counts(groups, max_cost)
    print("\n%s -> %d: %d groups, %d alternatives; the base gives %d"
          % (name, target, len(groups), sum(len(g.alternatives) for g in groups), gen.crc16_arc(base)))
    cumulative, expected = 0, []
    for k in range(max_cost + 1):
        cumulative += counts[k]
        expected.append(cumulative / 65536)
        print("  cost %d: %9d combinations, %3d hit; chance hits expected at cost <= %d: %.3f"
              % (k, counts[k], sum(1 for c, _ in hits if c == k), k, expected[k]))
    significant = [(c, ch) for c, ch in hits if expected[c] <= SIGNIFICANT]
    for cost, choices in significant:
        print("  FOUND at cost %d (%.3f chance hits expected): %s" % (cost, expected[cost], "; ".join(
            "%s: %s" % (groups[i].name, groups[i].alternatives[k][0]) for i, k in choices) or "the base"))
    if len(hits) > len(significant):
        print("  %d hits where chance gives as many" % (len(hits) - len(significant)))
    return sum(counts), [(c, expected[c]) for c, _ in significant]


def main(argv):
    args = argv[1:]
    max_cost = 4
    if "--max-cost" in args:
        i = args.index("--max-cost")
        max_cost = int(args[i + 1])
        del args[i:i + 2]
    wanted = [int(a) for a in args] or [1, 2, 3, 4, 5]
    if not os.path.isdir(gen.PAGES):
        sys.stderr.write("search_foldtables.py: %s not found\n" % gen.PAGES)
        return gencheck.SKIP
    start = time.process_time()
    total, summary = 0, []
    for n in wanted:
        target = gen.TABLES[n]["id"]
        best = None
        for name, base, groups in hypotheses(n):
            combos, found = search("table %d, %s" % (n, name), target, base, groups, max_cost)
            total += combos
            for cost, chance in found:
                if best is None or (cost, chance) < best[:2]:
                    best = (cost, chance, name)
        summary.append("table %d: %s" % (n, "found with %d departure(s) (%.3f chance hits "
                                          "expected), from %s" % best if best else "not found"))
    print("\n" + "\n".join(summary))
    print("%d combinations in all, %.1f s of CPU" % (total, time.process_time() - start))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv))
