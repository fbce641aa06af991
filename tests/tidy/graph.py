#!/usr/bin/env python3
"""Draws who includes whom: graph.py ROOT prints the rooms and their shelves as a graph for Graphviz, an
arrow from each that includes to each that is included, with the number of includes.

    tests/tidy/graph.py . | dot -Tsvg >house.svg
"""

import collections
import sys

import floors
import tidy
from source import Source


def place(path):
    """The shelf of a file or, where its room has none, the room; None outside the house."""
    room = path.split("/")[0]
    if room not in floors.ROOMS or "/" not in path:
        return None
    return path.rpartition("/")[0] if room in floors.SHELVES else room


def arrows(sources):
    """How often each place includes each other one."""
    count = collections.Counter()
    for source in sources:
        here = place(source.path)
        for include in source.includes:
            there = place(include.name) if include.quoted else None
            if here and there and here != there:
                count[here, there] += 1
    return count


def drawn(count):
    """The graph, with a frame around the shelves of a room."""
    places = {name for arrow in count for name in arrow}
    lines = ["digraph house {", "  rankdir=BT;", "  node [shape=box];"]
    for room in floors.ROOMS:
        lines.append(f'  subgraph "cluster_{room}" {{ label="{room}/";')
        lines += [f'    "{name}";' for name in sorted(places) if name.split("/")[0] == room]
        lines.append("  }")
    lines += [f'  "{here}" -> "{there}" [label={number}];'
              for (here, there), number in sorted(count.items())]
    return "\n".join(lines + ["}"])


def main(arguments):
    if len(arguments) != 1:
        print("usage: graph.py ROOT", file=sys.stderr)
        return 2
    root = arguments[0]
    texts = ((path, tidy.read(f"{root}/{path}")) for path in tidy.files(root))
    print(drawn(arrows(Source(path, text) for path, text in texts
                       if text is not None and path.endswith((".h", ".cpp")))))
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
