#!/usr/bin/env python3
"""Keeps the house: tidy.py ROOT prints every place of the tree that breaks a rule, one per line as
file:line: rule: what: remedy, and exits with 1 if there is any.

A ban is lifted for one line by a comment on it or on the line before: // tidy: allow(rule) reason
"""

import os
import sys

import bans
import described
import floors
import shape
import words
from source import Source

RULES = (floors.check, shape.check, bans.check, described.check, words.check)


def check(path, text):
    """All findings in a file, given its path from the root of the tree and its text."""
    source = Source(path, text)
    found = [finding for rule in RULES for finding in rule(source)]
    return sorted(found, key=lambda finding: (finding.line, finding.rule))


def is_ours(parent, folder):
    """Whether a folder belongs to the tree: not hidden, but for .ci, and not made by a build."""
    if folder.startswith("."):
        return folder == ".ci"
    made = folder in ("build", "out", "__pycache__") or folder.startswith("build-")
    return not made and not os.path.exists(os.path.join(parent, folder, "CMakeCache.txt"))


def files(root):
    """The paths of the tree's files from its root, in order."""
    for parent, folders, names in os.walk(root):
        folders[:] = sorted(folder for folder in folders if is_ours(parent, folder))
        for name in sorted(names):
            yield os.path.relpath(os.path.join(parent, name), root).replace(os.sep, "/")


def read(path):
    """The text of a file, or None if it is none (a capture, a picture)."""
    with open(path, "rb") as file:
        data = file.read()
    return None if b"\0" in data else data.decode("utf-8", "replace")


def main(arguments):
    if len(arguments) != 1 or not os.path.isdir(arguments[0]):
        print("usage: tidy.py ROOT", file=sys.stderr)
        return 2
    count, found = 0, []
    for path in files(arguments[0]):
        text = read(os.path.join(arguments[0], path))
        if text is not None:
            count += 1
            found += check(path, text)
    for finding in found:
        print(finding)
    print(f"{count} files, {len(found)} findings")
    return 1 if found or count == 0 else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
