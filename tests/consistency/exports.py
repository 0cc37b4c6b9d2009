#!/usr/bin/env python3
"""Exported = declared = documented = tested.

Arguments: the shared library, the folder of the public headers, the folder of the tests.
Every exported symbol has one prototype with a comment in a public header, every prototype is exported, and the name of
each stands in a test.
"""
import pathlib
import re
import subprocess
import sys

PROTOTYPE = re.compile(r"^KELVO_API\s[^(;]*?\b(\w+)\s*\(", re.MULTILINE)


def exported(library):
    lines = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    return {line.split()[-1].split("@")[0] for line in lines.splitlines()}


def declared(headers):
    """Names of prototypes, and of those that have no comment right above them."""
    names, bare = [], []
    for header in sorted(headers.glob("*.h")):
        text = header.read_text()
        for match in PROTOTYPE.finditer(text):
            names.append(match.group(1))
            if not text[: match.start()].rstrip(" ").endswith("*/\n"):
                bare.append(match.group(1))
    return names, bare


def tested(tests):
    words = set()
    for file in tests.rglob("*.c*"):
        words.update(re.findall(r"\bvl\w+", file.read_text()))
    return words


def main():
    library, headers, tests = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
    symbols = exported(library)
    names, bare = declared(headers)
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
