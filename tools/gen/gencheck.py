"""The --check step shared by the generators in tools/gen.

A generator's --check regenerates into a temporary directory and compares
every file it writes, byte for byte, with the committed one.
"""

import os
import sys
import tempfile

# What --check returns when the generator's inputs are not available here
# (CTest counts it as skipped).
SKIP = 77


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
