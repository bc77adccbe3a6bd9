#!/usr/bin/python3
"""Makes the compound-file samples of tests/data/cfb (the storage tests
compare what the library reads in them with what olefile reads).

Version 3 samples are written by libgsf's `gsf createole` (libgsf-bin) from
directory trees; gsf writes only version 3, so the version 4 sample is
written by the small writer below (4,096-byte sectors, a mini stream, a
nested storage). The contents are generated from fixed seeds, so a run
makes the same trees again (gsf stamps the time, so its files differ in those bytes):

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


# ---- The version 4 writer ---------------------------------------------------

SECTOR = 4096
MINI = 64
END, FREE, FATSECT = 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFD
NOSTREAM = 0xFFFFFFFF


def name_key(name):
    return (len(name), name.upper())


def make_v4(target, tree):
    entries = [{"name": "Root Entry", "type": 5, "children": [], "data": b""}]

    def add(tree_, parent):
        for name, value in tree_.items():
            e = {"name": name, "children": [], "data": b""}
            entries.append(e)
            entries[parent]["children"].append(len(entries) - 1)
            if isinstance(value, dict):
                e["type"] = 1
                add(value, len(entries) - 1)
            else:
                e["type"], e["data"] = 2, value

    add(tree, 0)
    for e in entries:  # each storage's children: a balanced tree in name order, all black
        e["left"] = e["right"] = e["child"] = NOSTREAM

    def balance(ids):
        if not ids:
            return NOSTREAM
        mid = len(ids) // 2
        entries[ids[mid]]["left"] = balance(ids[:mid])
        entries[ids[mid]]["right"] = balance(ids[mid + 1:])
        return ids[mid]

    for e in entries:
        e["child"] = balance(sorted(e["children"], key=lambda i: name_key(entries[i]["name"])))

    mini_stream, mini_fat = b"", []
    for e in entries[1:]:
        if e["type"] == 2 and 0 < len(e["data"]) < 4096:
            n = (len(e["data"]) + MINI - 1) // MINI
            e["start"] = len(mini_fat)
            mini_fat += list(range(len(mini_fat) + 1, len(mini_fat) + n)) + [END]
            mini_stream += e["data"].ljust(n * MINI, b"\0")
    sectors = []  # (kind, payload) after the FAT sectors

    def chain_of(payload):
        n = (len(payload) + SECTOR - 1) // SECTOR
        first = len(sectors)
        for i in range(n):
            sectors.append(payload[i * SECTOR:(i + 1) * SECTOR].ljust(SECTOR, b"\0"))
        return first, n

    directory_bytes = b"\0" * (128 * len(entries))  # placed first, filled in later
    dir_first, dir_n = chain_of(directory_bytes.ljust(((len(directory_bytes) + 127) // 128) * 128))
    mf = b"".join(struct.pack("<I", x) for x in mini_fat)
    mf_first, mf_n = chain_of(mf) if mf else (END, 0)
    ms_first, ms_n = chain_of(mini_stream) if mini_stream else (END, 0)
    entries[0]["start"], entries[0]["data"] = ms_first, mini_stream
    big = []
    for e in entries[1:]:
        if e["type"] == 2 and len(e["data"]) >= 4096:
            e["start"], n = chain_of(e["data"])
            big.append((e["start"], n))
        elif e["type"] != 2 or not e["data"]:
            e.setdefault("start", END if e["type"] == 2 else 0)
    per_fat = SECTOR // 4
    fat_n = 1
    while fat_n * per_fat < fat_n + len(sectors):
        fat_n += 1
    shift = fat_n  # data sectors follow the FAT sectors
    fat = [FATSECT] * fat_n
    runs = [(dir_first, dir_n), (mf_first, mf_n), (ms_first, ms_n)] + big
    nxt = {}
    for first, n in runs:
        if n:
            for i in range(n):
                nxt[first + i] = first + i + 1 if i + 1 < n else None
    for i in range(len(sectors)):
        v = nxt.get(i, "free")
        fat.append(FREE if v == "free" else END if v is None else v + shift)
    fat += [FREE] * (fat_n * per_fat - len(fat))
    for e in entries:
        if e.get("start") not in (None, END) and (e["type"] == 5 or len(e["data"]) >= 4096):
            e["start"] += shift
    d = b""
    for e in entries:
        name = e["name"].encode("utf-16-le")
        size = len(e["data"]) if e["type"] in (2, 5) else 0
        start = e.get("start", END) if e["type"] != 1 else 0
        d += (name.ljust(64, b"\0") + struct.pack("<HBB", len(name) + 2, e["type"], 1) +
              struct.pack("<III", e["left"], e["right"], e["child"]) + b"\0" * 16 +
              b"\0" * 4 + b"\0" * 16 + struct.pack("<IQ", start, size))
    d = d.ljust(dir_n * SECTOR, b"\0")
    for i in range(dir_n):
        sectors[dir_first + i] = d[i * SECTOR:(i + 1) * SECTOR]
    header = (b"\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1" + b"\0" * 16 +
              struct.pack("<HHHHH", 0x3E, 4, 0xFFFE, 12, 6) + b"\0" * 6 +
              struct.pack("<IIIIIIIII", dir_n, fat_n, dir_first + shift, 0, 4096,
                          mf_first + shift if mf_n else END, mf_n, END, 0))
    difat = [i for i in range(fat_n)] + [FREE] * (109 - fat_n)
    header += b"".join(struct.pack("<I", x) for x in difat)
    out = header.ljust(SECTOR, b"\0")
    out += b"".join(struct.pack("<I", x) for x in fat)
    out += b"".join(sectors)
    with open(target, "wb") as f:
        f.write(out)


def main():
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.dirname(os.path.abspath(__file__))
    for name, tree in SAMPLES.items():
        make_with_gsf(os.path.join(out, name), tree)
    make_v4(os.path.join(out, V4_SAMPLE[0]), V4_SAMPLE[1])
    print("made %d samples in %s" % (len(SAMPLES) + 1, out))


if __name__ == "__main__":
    main()
