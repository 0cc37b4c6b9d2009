#!/usr/bin/env python3
"""Exported = declared = documented = tested = in the package's list of symbols.

Arguments: the shared library, the folder of the public headers, the folder of the tests.
Every exported symbol has one prototype with a comment in a public header, every prototype is exported, and each is used
in a test: its name in a comment or a text does not count. The package lists it with its version node.
"""
import pathlib
import re
import subprocess
import sys

from prototypes import code, headers, prototypes


def exported(library):
    """Names with their version nodes, as in name@NODE; a node itself is a symbol, too."""
    lines = subprocess.run(["nm", "-D", "--defined-only", library], check=True, capture_output=True, text=True).stdout
    symbols = [line.split()[1:] for line in lines.splitlines()]
    return {f"{name}@{name}" if kind == "A" else name.replace("@@", "@") for kind, name in symbols}


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
    package = tests.parent / "debian/libkelvo3.symbols"
    versioned = exported(library)
    listed = set(re.findall(r"^ (\S+)", package.read_text(), re.MULTILINE))
    symbols = {name for name, node in (symbol.split("@") for symbol in versioned) if name != node}
    names, bare = declared(folder)
    words = tested(tests)
    faults = [f"exported, though no vl function: {name}" for name in sorted(symbols) if not name.startswith("vl")]
    faults += [f"exported but not declared: {name}" for name in sorted(symbols - set(names))]
    faults += [f"declared but not exported: {name} (src/capi/exports.map)" for name in sorted(set(names) - symbols)]
    faults += [f"exported but not in {package.name}: {symbol}" for symbol in sorted(versioned - listed)]
    faults += [f"in {package.name} but not exported: {symbol}" for symbol in sorted(listed - versioned)]
    faults += [f"declared twice: {name}" for name in sorted({name for name in names if names.count(name) > 1})]
    faults += [f"not documented: {name}" for name in bare]
    faults += [f"not tested: {name}" for name in sorted(set(names) - words)]
    for fault in faults:
        print(fault)
    print(f"{len(symbols)} exported, {len(names)} declared, {len(faults)} faults")
    sys.exit(1 if faults or not symbols else 0)


main()
