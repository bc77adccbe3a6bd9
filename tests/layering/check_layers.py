#!/usr/bin/env python3
"""Fails when an #include in src/ or include/qxutil/ crosses a layer that the
list below does not allow. docs/architecture.md explains the layers and the
reason for every sideways edge.

usage: check_layers.py SOURCE_ROOT
"""
import os
import re
import sys

# Layer of each public header (qxutil/<name>) and private folder (src/<name>).
PUBLIC_HEADERS = {
    "export.h": "platform",
    "wintypes.h": "platform",
    "winlocale.h": "platform",
    "frame.h": "frame",
    "text.h": "text",
    "locale.h": "locale",
    "files.h": "files",
    "geometry.h": "geometry",
    "containers.h": "containers",
    "qxutil.h": "services",
}

# What each layer may include besides itself.
ALLOWED = {
    "platform": set(),
    "frame": {"platform"},
    "text": {"frame", "platform"},
    "locale": {"text", "frame", "platform"},
    "geometry": {"frame", "platform"},
    "files": {"locale", "text", "frame", "platform"},
    "containers": {"geometry", "locale", "text", "frame", "platform"},
    "services": {"containers", "files", "geometry", "locale", "text", "frame", "platform"},
}

# Sideways edges, one file each: (including file, included layer).
SIDEWAYS = {
    # The system character set follows the locale identifier of the locale
    # service; nothing else in text knows about locales.
    ("src/text/charset_info.cpp", "locale"),
    # The default folding table of "WindowsLatin1" follows the user's
    # language, which the locale service knows.
    ("src/text/default_folding.cpp", "locale"),
}

# Operating-system headers: only src/platform may include them.
SYSTEM_HEADERS = re.compile(
    r"^(unistd|pthread|dlfcn|fcntl|dirent|iconv|langinfo|link|elf|pixman|"
    r"sys/.*|linux/.*|asm/.*|execinfo|poll|signal|termios|glob|fnmatch)"
    r"(\.h|-1/pixman\.h)?$|^pixman-1/")

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')


def layer_of_include(name):
    if name.startswith("qxutil/"):
        return PUBLIC_HEADERS.get(name[len("qxutil/"):], "unknown public header")
    first = name.split("/", 1)[0]
    return first if first in ALLOWED and "/" in name else None


def layer_of_file(rel):
    parts = rel.split("/")
    if parts[0] == "include":
        return PUBLIC_HEADERS.get(parts[-1], "unknown public header")
    if parts[0] == "src" and len(parts) > 2:
        return parts[1]
    return None


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    root = sys.argv[1]
    faults = []
    checked = 0
    for top in ("src", os.path.join("include", "qxutil")):
        for folder, _, names in os.walk(os.path.join(root, top)):
            for name in sorted(names):
                if not name.endswith((".cpp", ".h", ".inc")):
                    continue
                path = os.path.join(folder, name)
                rel = os.path.relpath(path, root).replace(os.sep, "/")
                layer = layer_of_file(rel)
                if layer not in ALLOWED:
                    faults.append("%s: folder is in no layer" % rel)
                    continue
                with open(path, encoding="utf-8") as f:
                    for number, line in enumerate(f, 1):
                        m = INCLUDE.match(line)
                        if not m:
                            continue
                        checked += 1
                        kind, target = m.groups()
                        if kind == "<":
                            if layer != "platform" and SYSTEM_HEADERS.match(target):
                                faults.append("%s:%d: <%s> outside src/platform" % (rel, number, target))
                            continue
                        used = layer_of_include(target)
                        if used is None or used == layer or used in ALLOWED[layer]:
                            continue
                        if (rel, used) in SIDEWAYS:
                            continue
                        faults.append("%s:%d: %s includes %s (%s)" % (rel, number, layer, target, used))
    for fault in faults:
        print(fault)
    print("%d includes checked: %s" % (checked, "%d faults" % len(faults) if faults else "ok"))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
