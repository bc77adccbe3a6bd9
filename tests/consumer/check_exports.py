#!/usr/bin/env python3
"""Checks a built libqxutil against its public headers.

usage: check_exports.py LIBRARY INCLUDE_DIR

Every symbol the library exports (nm -D --defined-only) must belong to a
declaration marked QXUTIL_API in INCLUDE_DIR/qxutil/*.h: a free function of
that name (or a marked variable), or a member, vtable or typeinfo of such a class. Every marked free
function must be exported with as many overloads as the headers declare, and
every marked class must export something. Instantiations of the C++ standard
library's own templates (std::, __gnu_cxx::) are not the library's and are
passed over. Exits 1 and lists the differences when they disagree.
"""
import glob
import os
import re
import subprocess
import sys


def strip_templates(name):
    out, depth = [], 0
    for ch in name:
        if ch == "<":
            depth += 1
        elif ch == ">":
            depth -= 1
        elif depth == 0:
            out.append(ch)
    return "".join(out)


def public_declarations(include_dir):
    """(classes, functions): marked class names and {function name: overloads}."""
    classes, functions = set(), {}
    for path in sorted(glob.glob(os.path.join(include_dir, "qxutil", "*.h"))):
        namespace = []
        text = open(path, encoding="utf-8").read()
        # Join declarations that continue on the next lines.
        for line in text.split("\n"):
            ns = re.match(r"namespace ([\w:]+) \{", line)
            if ns:
                namespace.append(ns.group(1))
                continue
            if re.match(r"\} // namespace", line) and namespace:
                namespace.pop()
                continue
            if "QXUTIL_API" not in line or line.startswith(("#", "//")):
                continue
            prefix = "::".join(namespace + [""]) if namespace else ""
            m = re.search(r"\b(?:class|struct) QXUTIL_API (\w+)", line)
            if m:
                classes.add(prefix + m.group(1))
                continue
            m = (re.match(r"QXUTIL_API .*?(\w+)\(", line) or
                 re.match(r"QXUTIL_API extern .*?(\w+);", line))
            if m:
                name = prefix + m.group(1)
                functions[name] = functions.get(name, 0) + 1
    return classes, functions


def exported_symbols(library):
    out = subprocess.run(["nm", "-DC", "--defined-only", library], check=True,
                         capture_output=True, text=True).stdout
    symbols = []
    for line in out.splitlines():
        parts = line.split(" ", 2)
        if len(parts) == 3 and parts[1] not in ("A",):
            symbols.append(parts[2])
    return symbols


def main():
    library, include_dir = sys.argv[1], sys.argv[2]
    classes, functions = public_declarations(include_dir)
    exported_overloads, owners, private = {}, set(), []
    for symbol in exported_symbols(library):
        name = re.sub(r"^(typeinfo name for|typeinfo for|vtable for|VTT for|"
                      r"guard variable for|construction vtable for) ", "", symbol)
        name = strip_templates(name.split("(")[0]).strip()
        if name.startswith(("std::", "__gnu_cxx::")) or name.startswith("_"):
            continue
        parts = name.split("::")
        owner = next((("::".join(parts[:i])) for i in range(len(parts), 0, -1)
                      if "::".join(parts[:i]) in classes), None)
        if owner:
            owners.add(owner)
        elif name in functions:
            exported_overloads.setdefault(name, set()).add(symbol)
        else:
            private.append(symbol)
    problems = ["exported but not public: " + s for s in sorted(private)]
    for name, count in sorted(functions.items()):
        have = len(exported_overloads.get(name, ()))
        if have < count:
            problems.append("public but not exported: %s (%d of %d overloads)" % (name, have, count))
    for name in sorted(classes - owners):
        problems.append("public class exports nothing: " + name)
    for p in problems:
        print(p)
    print("%d exported symbols checked against %d classes and %d functions: %s"
          % (len(exported_symbols(library)), len(classes), len(functions),
             "%d problems" % len(problems) if problems else "ok"))
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
