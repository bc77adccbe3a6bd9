"""The command line shared by the generators in tools/gen.

Every generator takes the same arguments:
  gen_NAME.py            rewrite the committed outputs
  gen_NAME.py --check    regenerate into a temporary directory and compare
                         every output, byte for byte, with the committed one:
                         exit 0 when identical, 1 when not, 77 (skipped)
                         when the inputs are not available here
"""

import os
import sys
import tempfile

# What --check returns when the generator's inputs are not available here
# (CTest counts it as skipped).
SKIP = 77

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SHARED_DATA = os.path.normpath(os.path.join(ROOT, "..", "shared", "data"))


def matches_committed(tool, generate_into, committed_dir):
    """Runs generate_into(directory), which returns the paths it wrote relative
    to that directory, and compares them with the same paths under
    committed_dir. Prints each one that differs; returns 0 when all match,
    1 otherwise."""
    status = 0
    with tempfile.TemporaryDirectory() as tmp:
        for rel in generate_into(tmp):
            with open(os.path.join(tmp, rel), "rb") as f:
                fresh = f.read()
            try:
                with open(os.path.join(committed_dir, rel), "rb") as f:
                    committed = f.read()
            except OSError:
                committed = None
            if fresh != committed:
                sys.stderr.write("%s: %s differs from the generator's output\n" % (tool, rel))
                status = 1
    return status


def run(tool, argv, generate_into, out_dir, inputs=(), recorded=None, current=None):
    """The whole command line of a generator; returns its exit code.

    generate_into(directory) writes the outputs under `directory` and returns
    their paths relative to it; out_dir is where the committed outputs live.
    `inputs`: paths that must exist (else --check skips and a plain run fails).
    `recorded`: a function giving the version of the input data the committed
    outputs were made from; --check skips when it differs from `current`
    (the result would legitimately differ); a missing record compares (and
    fails)."""
    args = argv[1:]
    if any(a != "--check" for a in args):
        sys.stderr.write("usage: %s [--check]\n" % tool)
        return 2
    check = "--check" in args
    missing = [p for p in inputs if not os.path.exists(p)]
    if missing:
        sys.stderr.write("%s: %s not found\n" % (tool, os.path.normpath(missing[0])))
        return SKIP if check else 2
    if not check:
        for rel in generate_into(out_dir):
            print("wrote " + os.path.relpath(os.path.join(out_dir, rel), ROOT))
        return 0
    if recorded is not None:
        version = recorded()
        if version is not None and version != current:
            sys.stderr.write("%s: the committed outputs were made from %s, this run has %s: skipped\n"
                             % (tool, version, current))
            return SKIP
    return matches_committed(tool, generate_into, out_dir)
