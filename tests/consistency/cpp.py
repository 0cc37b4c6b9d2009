#!/usr/bin/env python3
"""Every C function has its counterpart in C++, under the name and with the arguments that follow from it.

Argument: the folder of the public headers. vlAreaName is Name of class AreaArea (of ListRef or FontRef for what takes
such a handle), or a function outside of all classes; arguments go to it in its order.
"""
import pathlib
import re
import sys

from prototypes import code, headers, prototypes

PREFIXES = {"ListCommands": "List", "ListRef": "List", "FontRef": "Font", "ConfigurationUpdateArea": "Configuration"}
CONFIGURATION = ["InitConfig", "GetConfig", "SetConfig", "LoadConfig", "StoreConfig", "ToStringConfig"]
# Those whose place in C++ is another: in which class, or in which function outside.
ELSEWHERE = {
    "vlConnect": "Card", "vlConnectByCardInfo": "Card", "vlGetLastError": "TakeLastError",
    "vlGetLastErrorLen": "TakeLastError", "vlListAllocate": "List", "vlListAllocateFromString": "List",
    "vlListReleaseHandle": "List", "vlListDeleteHandle": "List", "vlFontAllocate": "Font",
    "vlFontReleaseHandle": "Font", "vlDisconnect": "Card",
    **{f"vlListUnRegister{kind}Callback": "ListArea" for kind in ("Progress", "ListDone", "ListIdle", "ErrorEvent")},
}
# What stands at the left margin: a class with its bases, or a function. And a member of a class.
CLASS = re.compile(r"class (\w+)([^{;]*)\{")
FUNCTION = re.compile(r"(?:inline )?[A-Za-z].*?\b(\w+)(?:::\w+)?\(")
MEMBER = re.compile(r"  [\w\[].*?[ *&>](\w+)\(")
CALL = re.compile(r"\b(Call|Fetch|FetchText|FetchValues|Transfer)<(vl\w+)(?:, [^(]*)?>\(")


def arguments(text):
    """What stands between parentheses, from behind the first of them."""
    depth, all_of_them = 0, [""]
    for sign in text:
        depth += sign in "({" or -(sign in ")}")
        if depth < 0:
            return [argument.strip() for argument in all_of_them]
        if sign == "," and depth == 0:
            all_of_them.append("")
        else:
            all_of_them[-1] += sign
    return []


def plain(name):
    """A parameter's or an argument's name; None for what is none, but an expression."""
    match = re.fullmatch(r"&?([A-Za-z]\w*?)(?:_us|_ms)?(?:\.data\(\))?", name)
    return match and match.group(1)


def main():
    functions = {name: parameters for text in headers(sys.argv[1]) for _, name, parameters, _ in prototypes(text)}
    faults, found = [], set()
    for text in (code(file.read_text()) for file in sorted(pathlib.Path(sys.argv[1]).glob("*.hpp"))):
        area = place = None
        position = 0
        for line in text.splitlines(keepends=True):
            if match := CLASS.match(text, position):
                area, place = match[1], None
                names = [name for name in re.findall(r"\bvl\w+", match[2]) if name in functions]
                expected = [f"vl{area.removesuffix('Area')}{name}" for name in CONFIGURATION]
                if names != expected if "ConfigurationArea" in match[2] else set(map(ELSEWHERE.get, names)) - {area}:
                    faults.append(f"{area}: {', '.join(names)}")
            elif line.startswith("}"):
                area = None
            elif match := MEMBER.match(line) if area else FUNCTION.match(line):
                place = match[1]
            for name in functions.keys() & set(re.findall(r"\bvl\w+", line)):
                found.add(name)
                prefix = PREFIXES.get(area, (area or "").removesuffix("Area"))
                places = {f"vl{prefix}{place}", f"vl{place}"}
                if name not in places and ELSEWHERE.get(name) not in (area, place) and place:
                    faults.append(f"{name} in {area}::{place}")
            position += len(line)
        for call in CALL.finditer(text):
            given = arguments(text[call.end():])[call[1] == "Transfer":]
            for mine, its in zip(given, (name for _, name in functions[call[2]])):
                if plain(mine) and mine not in ("handle_", "card", "nullptr") and plain(mine) != plain(its):
                    faults.append(f"{call[2]} gets {mine} for {its}")
    faults += [f"{name} has no counterpart" for name in sorted(functions.keys() - found)]
    for fault in faults:
        print(fault)
    print(f"{len(functions)} functions, {len(faults)} faults")
    sys.exit(1 if faults or not functions else 0)


main()
