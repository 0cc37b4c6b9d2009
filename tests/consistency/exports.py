#!/usr/bin/env python3
"""Exported = declared = documented = tested.

Arguments: the shared library, the folder of the public headers, the folder of the tests.
Every exported symbol has one prototype with a comment in a public header, every prototype is exported, and each is used
in a test: its name in a comment or a text does not count.
"""
import pathlib
import re
import subprocess
import sys

from prototypes import code, headers, prototypes


def exported(library):
    lines = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    return {line.split()[-1].split("@")[0] for line in lines.splitlines()}


def declared(folder):
    """Names of prototypes, and of those that have no comment right above them."""
    names, bare = [], []
    for text in headers(folder):
        for start, name, *_ in prototypes(text):
            names.append(name)
            if not text[:start].rstrip(" ").endswith("*/\n"):
                bare.append(name)
    return names, bare


def tested(tests):
    words = set()
    for file in tests.rglob("*.[ch]*"):
        words.update(re.findall(r"\bvl\w+", code(file.read_text())))
    return words


def main():
    library, folder, tests = sys.argv[1], sys.argv[2], pathlib.Path(sys.argv[3])
    symbols = exported(library)
    names, bare = declared(folder)
    words = tested(tests)
    faults = [f"exported, though no vl function: {name}" for name in sorted(symbols) if not name.startswith("vl")]
    faults += [f"exported but not declared: {name}" for name in sorted(symbols - set(names))]
    faults += [f"declared but not exported: {name}" for name in sorted(set(names) - symbols)]
    faults += [f"declared twice: {name}" for name in sorted({name for name in names if names.count(name) > 1})]
    faults += [f"not documented: {name}" for name in bare]
    faults += [f"not tested: {name}" for name in sorted(set(names) - words)]
    for fault in faults:
        print(fault)
    print(f"{len(symbols)} exported, {len(names)} declared, {len(faults)} faults")
    sys.exit(1 if faults or not symbols else 0)


main()
