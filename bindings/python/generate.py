#!/usr/bin/env python3
"""Writes what the Python package takes from the public headers. Arguments: the headers' folder, the folder to write to.

  Table.cpp         a line for each function: Python's name, C's function, its parameters, its help
  kelvo/_types.py   enumerations and records
  kelvo/_core.pyi   what the compiled module has
"""
import pathlib
import re
import sys
import textwrap

from faces import AREAS, CLASSES, Faces, record_name, snake

WIDTH = 116
HINTS = {"f64": "float", "i32": "int", "u32": "int", "u16": "int", "u64": "int", "bool": "bool", "char8": "str | int",
         "char16": "str | int", "text": "str | bytes", "path": "str | os.PathLike[str]", "list": "List", "font": "Font",
         "wait": "float | None", "progress": "Callable[[int, int], bool | None] | None", "out_text": "str",
         "out_fixed_text": "str", "out_names": "list[str]", "out_words_of_names": "list[str]", "out_mirror": "bytes",
         "out_array_u8": "bytes"}
NUMBERS = ("Positions and lengths are in field units, speeds in field units per microsecond, times in microseconds, "
           "frequencies per microsecond (0.1 is 100 kHz), angles in radians, positive counter-clockwise seen from +z.")
HEADER = "Made from the public headers by bindings/python/generate.py."


def hint(parameter):
    """A parameter's type in Python."""
    kind = parameter.kind.removeprefix("out_") if parameter.kind not in HINTS else parameter.kind
    if parameter.kind == "out_records":
        return f"list[{record_name(parameter.type)}]"
    if kind in ("record", "changed_record"):
        return record_name(parameter.type)
    if parameter.kind.startswith("out_array_"):
        return "list[int]"
    if kind.startswith("array_"):
        return "_Array"
    return f"{record_name(parameter.type)} | int" if parameter.type else HINTS[kind]


def result(face):
    if face.result:
        return {"int": "int", "list": "List", "font": "Font"}[face.result]
    hints = [hint(out) for out in face.outs]
    waits = any(parameter.kind == "wait" for parameter in face.inputs) and "bytes" not in hints
    text = hints[0] if len(hints) == 1 else f"tuple[{', '.join(hints)}]" if hints else "None"
    return text + " | None" if waits else text


def signatures(faces, method=True):
    """Each way in which a function can be called, as text behind its name."""
    ways = []
    for face in faces:
        words = ["self"] if method and face.owner else []
        for parameter in face.inputs:
            default = f" = {parameter.default}" if parameter.default else ""
            if parameter.kind == "bool" and default:
                default = " = False"
            words.append(f"{parameter.name}: {hint(parameter)}{default}")
        ways.append(f"({', '.join(words)}) -> {result(face)}")
    if any(face.takes_rows for face in faces):
        ways.append(f"({'self, ' if method else ''}rows: _Array) -> None")
    return list(dict.fromkeys(ways))


class Writer:
    def __init__(self, folder, faces):
        self.folder, self.faces, self.headers = folder, faces, faces.headers
        self.groups = {}
        for face in faces.faces:
            self.groups.setdefault((face.owner, face.name), []).append(face)

    def write(self, name, text):
        """Writes a file, unless that is what is there: what depends on it is not built again then."""
        path = self.folder / name
        path.parent.mkdir(parents=True, exist_ok=True)
        if not path.exists() or path.read_text() != text:
            path.write_text(text)

    # ---- Help ----

    def prose(self, text):
        """A header's comment as help for Python: its names, and exceptions in place of results."""
        text = re.sub(r"(?<!\n)\n(?![ \n])", " ", text)
        for pattern, words in (
                (r"Returns 0 or -1(?: \(kelvo\.h,[^)]*\))?\.", ""),
                (r"Returns 0,(?: [^.:;]*?)? or -1:? with\b", "Raises Error with"),
                (r"Returns 0,? (also when[^,]*,)? ?or -1\b", r"Raises Error"),
                (r"Returns 0\. ", ""), (r"Returns 0 (when[^,]*), or -1\b", r"Returns \1; raises Error otherwise"),
                (r"Returns (?:the|its) (?:new )?(\w+ )?handle[^.]*?, or -1\b", r"Raises Error"),
                (r", or -1\b", "; raises Error"),
                (r"Writes (.*?) (?:to|into) `\*\w+`", r"Returns \1"),
                (r"Writes (.*?) into `buffer` of `size` bytes,?(?: and (?:its|their) length[^.]*?`\*length`)?", r"Returns \1"),
                (r"Fetches (.*?) into `buffer` of `size` bytes", r"Fetches \1"),
                (r" `timeout_ms` is in milliseconds.*?(\n\n|$)", r"\1"),
                (r" into `buffer` of `(?:size|capacity)`[^.;]*", ""), (r",? and (?:writes )?(?:its|their) (?:length|number)[^.;]*?"
                                                              r"(?:to )?`\*(?:length|count)`", ""),
                (r" into the array `\w+`, which has room for `capacity` of them \([^)]*\)", ""),
                (r" With a `size` of 0 `buffer` may be null[^.]*\.", ""),
                (r" to `\w+`, an array of `capacity` elements", ""),
                (r"[;,] `\*count` is (?:then )?written all the same, nothing else\. So a `capacity` of 0[^.]*\.", "."),
                (r"Fills `\*(\w+)`", r"Fills `\1`"),
                (r"`\*(\w+)`", r"`\1`"),
                (r"\(kelvo\.h, [^)]*\)", ""), (r"; kelvo\.h, 5\b|or kelvo\.h, 5\b", ""),
                (r" Local\.", ""), (r" ?Remote\.", " Talks to the card.")):
            text = re.sub(pattern, words, text, flags=re.DOTALL)
        text = re.sub(r"\bvl[A-Z]\w+", lambda match: self.python_name(match[0]), text)
        return re.sub(r" +([.;,)])", r"\1", re.sub(r"(\S)  +", r"\1 ", text)).strip()

    def python_name(self, name):
        if name in self.faces.names:
            return self.faces.names[name] + "()"
        for enum in self.headers.enums.values():
            if name.startswith(enum.name + "_"):
                return f"{record_name(enum.name)}.{snake(name.removeprefix(enum.name + '_')).upper()}"
        return record_name(name) if name in self.headers.structs | self.headers.enums else name

    def help(self, faces):
        """The help of a function: how it is called, what the headers say, and which functions of C those are."""
        name = faces[0].name
        parts = ["\n".join(name + way for way in signatures(faces, method=False)).replace("_Array", "Array")]
        parts += dict.fromkeys(paragraph for face in faces
                               for paragraph in self.prose(self.faces.whole_comment(face.function)).split("\n\n"))
        if any(face.takes_rows for face in faces):
            parts.append("An array of float64 with a row for each command, the parameters in its columns, appends them all.")
        if any(parameter.kind == "wait" for face in faces for parameter in face.inputs):
            parts.append("`timeout` is in seconds: 0 only looks, None stands for the connection's. When it is over the result "
                         "is None, of bytes none. Ctrl-C ends the wait. Raises Error when the connection is down.")
        if faces[0].function.name.startswith("vlListAppend"):
            parts.append(NUMBERS)
            parts.append("Raises Error when the list or its connection is gone, or the command would have more than "
                         "921600 bytes.")
        parts.append(f"C: {', '.join(face.function.name for face in faces)}")
        return "\n\n".join("\n".join(textwrap.fill(line, 100, subsequent_indent=re.match(" *", line)[0])
                                     for line in part.split("\n")) for part in parts)

    # ---- The table ----

    @staticmethod
    def literal(text):
        return '"' + text.replace("\\", "\\\\").replace('"', '\\"').replace("\n", '\\n"\n    "') + '"'

    def spec(self, face):
        words = [f"{parameter.name}:{parameter.kind}" + (f"@{record_name(parameter.type)}" if parameter.type else "")
                 + (f"={parameter.default}" if parameter.default else "") for parameter in face.parameters]
        return " ".join(words + ([f"->{face.result}"] if face.result else []))

    def table(self):
        lines = [f"// {HEADER}", '#include "Table.h"', "", '#include "Describe.h"', '#include "kelvo/kelvo.h"', "",
                 "namespace KelvoPython {", ""]
        for struct in self.ordered_structs():
            if struct.is_list:
                lines.append(f"template <> struct Describe<{struct.name}> : ListOf<{struct.name}> {{}};")
                continue
            lines += [f"template <> struct Describe<{struct.name}> {{", "  static constexpr Field fields[] = {"]
            for kind, name, _, comment in struct.members:
                enum = self.field_enum(struct, name, comment)
                lines.append(f'      {{"{snake(name)}", offsetof({struct.name}, {name}), '
                             f'&Describe<decltype({struct.name}::{name})>::type, '
                             + (f'"{record_name(enum)}"}},' if enum else "nullptr},"))
            lines += ["  };", f'  static constexpr Type type = RecordType<{struct.name}>("{record_name(struct.name)}", '
                      "fields);", "};"]
        records = [struct for struct in self.headers.structs.values() if not struct.is_list]
        inits = {face.parameters[0].type: face.function.name for face in self.faces.faces if face.init}
        lines += ["", "const std::vector<Record>& Records() {", "  static const std::vector<Record> records = {"]
        lines += [f"      {{&Describe<{struct.name}>::type, "
                  + (f"[](void* record) {{ {inits[struct.name]}(static_cast<{struct.name}*>(record)); }}}},"
                     if struct.name in inits else "nullptr},") for struct in records]
        lines += ["  };", "  return records;", "}", "", "const std::vector<Row>& Rows() {",
                  "  static const std::vector<Row> rows = {"]
        for group in self.groups.values():
            for face in group:
                if face.init:
                    continue
                text = self.literal(self.help(group)) if face is group[0] else '""'
                lines.append(f'      {{"{face.owner}", "{face.name}", "{self.spec(face)}", Of({face.function.name}), '
                             f"{str(face.unlocked).lower()}, {str(face.takes_rows).lower()},\n    {text}}},")
        areas = ", ".join(f'{{"{name}", "{snake(name)}", {self.literal(self.area_help(area))}}}'
                          for area, name in self.areas())
        lines += ["  };", "  return rows;", "}", "", "const std::vector<Area>& Areas() {",
                  f"  static const std::vector<Area> areas = {{{areas}}};", "  return areas;", "}", "", "}  // namespace KelvoPython", ""]
        self.write("Table.cpp", "\n".join(lines))

    def areas(self):
        return [(area, CLASSES.get(area, area)) for area in AREAS]

    def area_help(self, area):
        header = next((file for file in self.headers.tops if file.startswith(f"Kelvo{area}API")),
                      {"ScannerCommunication": "KelvoScannerAPI.h", "MotfQuadratureDecoder": "KelvoMotfAPI.h"}.get(area))
        return self.prose(self.headers.tops[header])

    def ordered_structs(self):
        """The structs, each behind those that it holds."""
        done = {}

        def add(struct):
            for kind, *_ in struct.members:
                if kind in self.headers.structs:
                    add(self.headers.structs[kind])
            done.setdefault(struct.name, struct)
        for struct in self.headers.structs.values():
            add(struct)
        return list(done.values())

    def field_enum(self, struct, name, comment):
        match = re.match(r"(vl\w+)", comment)
        found = self.faces.enum_of(struct.name, name, "") or match and match[1].split("_")[0]
        return found if found in self.headers.enums else ""

    # ---- Enumerations and records ----

    def field_hint(self, struct, member):
        kind, name, dimensions, comment = member
        enum = self.field_enum(struct, name, comment)
        if kind in self.headers.structs:
            inner = self.headers.structs[kind]
            text = record_name(kind)
            if inner.is_list:
                items = inner.members[1]
                text = self.field_hint(inner, (*items[:2], items[2][1:], items[3]))
                text = f"list[{text}]"
        else:
            text = "str" if kind == "char" else record_name(enum) if enum else HINTS[
                {"double": "f64", "bool": "bool"}.get(kind, "i32")]
            dimensions = dimensions[1:] if kind == "char" else dimensions
        for _ in dimensions:
            text = f"list[{text}]"
        return text

    def types(self):
        lines = [f'"""Enumerations and records. {HEADER}"""', "from __future__ import annotations", "",
                 "import dataclasses", "import enum", "", "from kelvo import _core", "from kelvo._record import Record, unset",
                 ""]
        for enum in self.headers.enums.values():
            kind = "IntFlag" if enum.is_flags else "IntEnum"
            lines += ["", f"class {record_name(enum.name)}(enum.{kind}):",
                      self.docstring(self.prose(enum.comment) or f"Values of {record_name(enum.name)}.", 4), ""]
            lines += [f"    {snake(name).upper()} = {value}" + (f"  #: {self.prose(comment)}" if comment else "")
                      for name, value, comment in enum.constants]
            lines.append("")
        for struct in self.ordered_structs():
            if struct.is_list:
                continue
            lines += ["", "@dataclasses.dataclass", f"class {record_name(struct.name)}(Record):"]
            fields = [f"    {snake(member[1])}: {self.field_hint(struct, member)}"
                      + (f"; {self.prose(member[3])}" if member[3] else "") for member in struct.members]
            text = (self.prose(struct.comment) or "A record.") + "\n\nFields:\n" + "\n".join(fields)
            text += "".join(f"\n\nC, for its defaults: {face.function.name}" for face in self.faces.faces
                            if face.init == struct.name)
            lines += [self.docstring(text, 4), ""]
            lines += [f"    {snake(member[1])}: {self.field_hint(struct, member)} = dataclasses.field(default_factory=unset)" for member in struct.members]
            for method, face in self.faces.record_methods(struct.name):
                static = face.parameters[0].kind not in ("record", "changed_record")
                inputs = face.inputs if static else face.inputs[1:]
                words = [f"{parameter.name}: {hint(parameter)}" for parameter in inputs]
                names = [parameter.name for parameter in inputs]
                lines += ["", "    @staticmethod"] if static else [""]
                lines += [f"    def {method}({', '.join(words if static else ['self', *words])}) -> {result(face)}:",
                          self.docstring(self.prose(self.faces.whole_comment(face.function)) + f"\n\nC: {face.function.name}",
                                         8),
                          f"        return _core.{face.name}({', '.join(names if static else ['self', *names])})"]
            lines.append("")
        self.write("kelvo/_types.py", "\n".join(lines))

    @staticmethod
    def docstring(text, indent):
        blanks = " " * indent
        body = "\n".join(textwrap.fill(line, WIDTH - indent, initial_indent=blanks,
                                       subsequent_indent=blanks + re.match(" *", line)[0] + "    ") if line else ""
                         for line in text.replace("\\", "\\\\").replace('"""', "'''").split("\n"))
        return f'{blanks}"""{body.lstrip()}\n{blanks}"""'

    # ---- The compiled module's stubs ----

    def stub(self):
        names = sorted({record_name(name) for name in self.headers.enums}
                       | {record_name(name) for name, struct in self.headers.structs.items() if not struct.is_list})
        used = (pathlib.Path(__file__).parent / "core.pyi").read_text()
        parts = {owner: [] for owner in ["", "Card", "List", "Font", *(name for _, name in self.areas())]}
        for (owner, name), group in self.groups.items():
            if group[0].init:
                continue
            ways, blanks = signatures(group), "    " if owner else ""
            for way in ways:
                parts[owner] += [f"{blanks}@overload"] if len(ways) > 1 else []
                parts[owner].append(f"{blanks}def {name}{way}: ...")
        for owner in ("Card", "List", "Font"):
            used = used.replace(f"    # methods of {owner}", "\n".join(parts[owner]))
        used = used.replace("    # areas", "\n".join(f"    @property\n    def {snake(name)}(self) -> {name}: ..."
                                                    for _, name in self.areas()))
        classes = [line for _, name in self.areas()
                   for line in ("", f"class {name}(Area):", *(parts[name] or ["    ..."]))]
        words = set(re.findall(r"\w+", used + "\n".join(classes + parts[""])))
        imports = [f"from kelvo._types import {', '.join(name for name in names if name in words)}"]
        self.write("kelvo/_core.pyi", "\n".join([f"# {HEADER}", used.replace("# types", "\n".join(imports)).rstrip(), *classes,
                                                 "", *parts[""], ""]))


def main():
    writer = Writer(pathlib.Path(sys.argv[2]), Faces(sys.argv[1]))
    writer.table()
    writer.types()
    writer.stub()


main()
