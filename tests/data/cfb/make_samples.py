#!/usr/bin/python3
"""Makes the compound-file samples of tests/data/cfb. Version 3 samples are
written by libgsf's `gsf createole` (libgsf-bin); gsf writes only version 3,
so the version 4 sample is written by make_v4 below. The contents come from
fixed seeds (gsf stamps the time, so its files differ in those bytes only):

    /usr/bin/python3 tests/data/cfb/make_samples.py tests/data/cfb
"""
import os
import random
import struct
import subprocess
import sys
import tempfile


def data(seed, n):
    rng = random.Random(seed)
    return bytes(rng.getrandbits(8) for _ in range(n))


# Each sample: name -> tree (a dict is a storage, bytes a stream).
SAMPLES = {
    "mini.cfb": {"small": b"hello, storage", "Empty": b"", "Notes": data(1, 300)},
    "large.cfb": {"Data": data(2, 100_000), "tail": data(3, 4096), "short": data(4, 4095)},
    "nested.cfb": {
        "Top": {"Middle": {"Leaf": data(5, 70), "Big": data(6, 9000)}, "Side": b"side"},
        "root stream": data(7, 5),
    },
    "workbook.cfb": {"Workbook": data(8, 5000), "Summary": data(9, 100)},
}
V4_SAMPLE = ("v4.cfb", {"Small": data(10, 100), "Large": data(11, 20_000),
                        "Folder": {"Inner": data(12, 1000)}})


def write_tree(root, tree):
    for name, value in tree.items():
        path = os.path.join(root, name)
        if isinstance(value, dict):
            os.mkdir(path)
            write_tree(path, value)
        else:
            with open(path, "wb") as f:
                f.write(value)


def make_with_gsf(target, tree):
    with tempfile.TemporaryDirectory() as tmp:
        write_tree(tmp, tree)
        target = os.path.abspath(target)
        subprocess.run(["gsf", "createole", target] + sorted(tree), cwd=tmp, check=True,
                       stdout=subprocess.DEVNULL)


SECTOR, MINI = 4096, 64
END, FREE, FATSECT, NOSTREAM = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFD, 0xFFFFFFFF


def name_key(name):
    return (len(name), name.upper())


def make_v4(target, tree):
    """Writes `tree` as a version 4 file: sector 0 holds the FAT, then come the
    directory, the mini table, the mini stream and the large streams."""
    entries = []  # [name, type, bytes, child ids, first sector]

    def add(name, value, kind):
        entries.append([name, kind, value if kind == 2 else b"", [], 0 if kind == 1 else END])
        me = len(entries) - 1
        if kind != 2:
            entries[me][3] = [add(n, v, 1 if isinstance(v, dict) else 2) for n, v in value.items()]
        return me

    add("Root Entry", tree, 5)
    links = [[NOSTREAM] * 3 for _ in entries]  # left, right, child

    def balance(ids):  # a storage's children: a balanced tree in name order, all black
        if not ids:
            return NOSTREAM
        mid = len(ids) // 2
        links[ids[mid]][:2] = balance(ids[:mid]), balance(ids[mid + 1:])
        return ids[mid]

    for i, e in enumerate(entries):
        links[i][2] = balance(sorted(e[3], key=lambda c: name_key(entries[c][0])))
    mini_fat, mini = [], b""
    for e in entries:
        if e[1] == 2 and 0 < len(e[2]) < 4096:
            n = -(-len(e[2]) // MINI)
            e[4] = len(mini_fat)
            mini_fat += list(range(len(mini_fat) + 1, len(mini_fat) + n)) + [END]
            mini += e[2].ljust(n * MINI, b"\0")
    body, fat = [], [FATSECT]  # the sectors after the FAT, and the FAT

    def place(data):  # a chain of sectors holding `data`: its first sector
        n = -(-len(data) // SECTOR)
        body.extend(data[i:i + SECTOR].ljust(SECTOR, b"\0") for i in range(0, len(data), SECTOR))
        fat.extend(list(range(len(fat) + 1, len(fat) + n)) + [END] if n else [])
        return len(fat) - n if n else END

    n_dir = -(-128 * len(entries) // SECTOR)
    place(b"\0" * n_dir * SECTOR)  # the directory, filled in below
    mf_first = place(b"".join(struct.pack("<I", x) for x in mini_fat))
    entries[0][2] = mini
    entries[0][4] = place(mini)
    for e in entries[1:]:
        if e[1] == 2 and len(e[2]) >= 4096:
            e[4] = place(e[2])
    assert len(fat) <= SECTOR // 4, "the FAT is one sector"
    d = b"".join(e[0].encode("utf-16-le").ljust(64, b"\0") +
                 struct.pack("<HBB3I", 2 * len(e[0]) + 2, e[1], 1, *link) + b"\0" * 36 +
                 struct.pack("<IQ", e[4], len(e[2])) for e, link in zip(entries, links))
    for i in range(n_dir):
        body[i] = d[i * SECTOR:(i + 1) * SECTOR].ljust(SECTOR, b"\0")
    header = (b"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + b"\0" * 16 +
              struct.pack("<5H6x9I", 0x3E, 4, 0xFFFE, 12, 6, n_dir, 1, 1, 0, 4096, mf_first,
                          -(-4 * len(mini_fat) // SECTOR), END, 0) +
              struct.pack("<109I", 0, *[FREE] * 108))
    with open(target, "wb") as f:
        f.write(header.ljust(SECTOR, b"\0") +
                struct.pack("<1024I", *fat, *[FREE] * (1024 - len(fat))) + b"".join(body))


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for name, tree in SAMPLES.items():
        make_with_gsf(os.path.join(out, name), tree)
    make_v4(os.path.join(out, V4_SAMPLE[0]), V4_SAMPLE[1])
    print("made %d samples in %s" % (len(SAMPLES) + 1, out))


if __name__ == "__main__":
    main()
