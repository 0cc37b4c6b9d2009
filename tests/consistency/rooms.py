#!/usr/bin/env python3
"""Includes run one way: neither folders nor files include each other in a circle.

Arguments: folders of sources, in which names of includes begin.
"""
import pathlib
import re
import sys

def in_circles(edges):
    """What is left of a graph when whatever leads nowhere, or is led to from nowhere, is taken out again and again."""
    edges = {node: targets - {node} for node, targets in edges.items()}
    while True:
        reached = set().union(*edges.values())
        kept = {node: targets & edges.keys() for node, targets in edges.items() if node in reached}
        kept = {node: targets for node, targets in kept.items() if targets}
        if kept == edges:
            return kept
        edges = kept


def main():
    files, rooms = {}, {}
    for folder in map(pathlib.Path, sys.argv[1:]):
        for file in (file for file in folder.rglob("*") if file.suffix in (".h", ".cpp")):
            named = (pathlib.Path(root) / name for name in re.findall(r'^#include "(.+)"', file.read_text(), re.M)
                     for root in sys.argv[1:])
            files[file] = {name for name in named if name.exists()}
            rooms.setdefault(file.parent, set()).update(name.parent for name in files[file])
    faults = [f"{place} includes {', '.join(map(str, sorted(targets)))}, and so on, and that includes it back"
              for edges in (in_circles(rooms), in_circles(files)) for place, targets in edges.items()]
    for fault in faults:
        print(fault)
    print(f"{len(rooms)} rooms, {len(files)} files")
    sys.exit(1 if faults or not files else 0)


main()
