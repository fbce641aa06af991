#!/usr/bin/env python3
"""Keeps the layout: formatted.py ROOT prints every place of the tree that clang-format would lay out
in another way than it is, by .clang-format, and exits with 1 if there is any.

    clang-format-14 -i FILE...

lays files out. Another version of it would lay some out in another way, so that it has to be this one.
"""

import os
import subprocess
import sys

import tidy

FORMATTER = "clang-format-14"


def sources(root):
    """The paths of the tree's C++ files."""
    return [os.path.join(root, path) for path in tidy.files(root) if path.endswith((".h", ".cpp"))]


def main(arguments, formatter=FORMATTER):
    if len(arguments) != 1 or not os.path.isdir(arguments[0]):
        print("usage: formatted.py ROOT", file=sys.stderr)
        return 2
    found = sources(arguments[0])
    if not found:
        print("no C++ file here: this proves nothing")
        return 1
    try:
        done = subprocess.run([formatter, "--dry-run", "-Werror", *found],
                              stderr=subprocess.STDOUT, stdout=subprocess.PIPE, text=True)
    except FileNotFoundError:
        print(f"{formatter} isn't installed: run scripts/install-packages")
        return 1
    print(done.stdout, end="")
    print(f"{len(found)} files, {done.stdout.count(' error: ')} places to lay out anew")
    return 1 if done.returncode else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
