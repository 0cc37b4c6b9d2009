"""The rules by which C functions become Python's: whose method, under which name, with which parameters.

A parameter of Python stands for one or several of C: a text's buffer, its size and its length are one result. Each has a
kind, which the table names and src/Parameters.cpp converts; a function with a parameter that no rule knows is a fault.
"""
import dataclasses
import re

from headers import Headers

# The areas of a card, by what the names of their functions begin with; the first that fits counts.
AREAS = ("MotfQuadratureDecoder", "ScannerCommunication", "HeadCorrection", "PowerCorrection", "AdapterBoard",
         "SerialPort", "Configuration", "Laser", "Scanner", "System", "Motf", "Process", "Event", "File", "Gpio", "Spi",
         "Sfio", "Variable", "Internal", "List", "Font")
CLASSES = {"List": "Lists", "Font": "Fonts"}  # the areas; List and Font are what they hold

# What src/ calls itself, because it is the life of an object.
LIVES = {"vlConnect", "vlConnectByCardInfo", "vlDisconnect", "vlListAllocate", "vlListAllocateFromString",
         "vlListReleaseHandle", "vlFontAllocate", "vlFontReleaseHandle", "vlGetLastError"}
LIVES |= {f"vlList{act}{event}Callback" for act in ("Register", "UnRegister")
          for event in ("Progress", "ListDone", "ListIdle", "ErrorEvent")}
# What Python does without.
WITHOUT = {"vlListDeleteHandle": "a List releases its handle itself, once, by vlListReleaseHandle",
           "vlGetLastErrorLen": "an Error has the text already"}

# Enumerations that the comments name elsewhere than beside the parameter: what "FUNCTION PARAMETER" looks like.
ENUMS = {r"vlScanHeadAxes Items|vl\w+ axes": "vlAxes", r"vl\w+ axis": "vlAxis", r"vlSfio\w+ register_number": "vlSfRegister",
         r"vl\w+ directory": "vlDirectorySelector", r"vlScannerHeadFormat\w+ format": "vlScanHeadFormat",
         r"vlGpio\w+ port": "vlIOPort", r"vl\w+ action": "vlPinAction", r"vl\w+SkyWritingMode mode": "vlSkyWritingMode", r"vl\w+OperatingState state": "vlOperatingState",
         "vlLaserGetPowerScale target": "vlPowerTarget"}
DEFAULTS = {"channel": "0", "append": "0", "list_field": "-1"}

ELEMENTS = {"double": "f64", "uint8_t": "u8", "uint16_t": "u16", "uint32_t": "u32", "int32_t": "i32",
            "vlPoint2D": "f64x2", "vlPoint3D": "f64x3", "vlPoint2DInt": "i32x2", "vlPoint3DInt": "i32x3"}
SCALARS = {"double": "f64", "int32_t": "i32", "uint32_t": "u32", "uint16_t": "u16", "uint64_t": "u64", "bool": "bool",
           "char": "char8"}
COUNTS = re.compile(r"count|length|\w+_count")
RECORD_METHODS = re.compile(r"vl(?:(?:Gpio|Scanner|Motf)Config|ProcessWobble|OpticalParameters|\w+?(?=ToString))(\w+)")
INIT = re.compile(r"vl\w+?Init(?:Config|Variables|OpticalParameters)")


def snake(name):
    name = name.replace("IDs", "Ids").replace("CoH", "Coh")
    return re.sub(r"(?<=[a-z])(?=[A-Z])|(?<=[A-Z0-9])(?=[A-Z][a-z])", "_", name).lower()


def record_name(struct):
    return re.sub(r"^vl(tb)?|_Struct$", "", struct)


@dataclasses.dataclass
class Parameter:
    name: str
    kind: str
    slots: int = 1          # how many parameters of C it stands for
    type: str = ""          # the record or enumeration
    default: str = ""

    @property
    def is_out(self):
        return self.kind.startswith("out_")


@dataclasses.dataclass
class Face:
    function: object
    owner: str              # the class, "" for functions of the module
    name: str
    parameters: list
    result: str             # what C returns, if that is no status: "int", "list" or "font"
    unlocked: bool          # whether the interpreter's lock is released meanwhile
    init: str = ""          # the record whose defaults it makes

    @property
    def inputs(self):
        return [parameter for parameter in self.parameters if not parameter.is_out]

    @property
    def outs(self):
        return [parameter for parameter in self.parameters if parameter.is_out]

    @property
    def takes_rows(self):
        """Whether an array may stand for the numbers: a command for each of its rows."""
        return (self.function.name.startswith("vlListAppend") and len(self.parameters) > 1
                and all(parameter.kind == "f64" for parameter in self.parameters))


class Faces:
    def __init__(self, folder):
        self.headers = Headers(folder)
        self.faces = [self._face(function) for name, function in self.headers.functions.items()
                      if name not in LIVES | WITHOUT.keys()]
        self.names = {face.function.name: f"{face.owner}.{face.name}".lstrip(".") for face in self.faces}

    def enum_of(self, owner, name, text):
        """The enumeration that a comment gives for a name."""
        for pattern, enum in ENUMS.items():
            if re.fullmatch(pattern, f"{owner} {name}"):
                return enum
        match = re.search(rf"`{name}` (?:\((vl\w+)\b(?![^(]*\) to `\*)|is (?:a|one of) (vl\w+))"
                          rf"|\((vl\w+)\) to `\*{name}`|`\*{name}` \((vl\w+)\)", " ".join(text.split()))
        found = match and next(filter(None, match.groups()))
        return found if found in self.headers.enums else ""

    def _parameter(self, function, at):
        kinds = function.parameters + [("", "")] * 3
        kind, name = kinds[at]
        names = [other for _, other in kinds[at + 1:at + 4]]
        bare = kind.removeprefix("const ").removesuffix("*")
        if kind == "vlFileProgressCallback":
            return Parameter(name, "progress", 2, default="" if function.name.endswith("WithProgress") else "None")
        if kind == "const char*":
            return Parameter(name, "path" if name == "path" else "text")
        if kind == "char*" and names == ["size", "length", "count"]:
            return Parameter(name, "out_names", 4)
        if kind == "char*" and names[:2] == ["size", "length"]:
            return Parameter(name, "out_text", 3)
        if kind == "char*" and names[0] == "size":
            return Parameter(name, "out_fixed_text", 2)
        if kind == "uint32_t*" and names[:2] == ["size", "count"]:
            return Parameter(name, "out_words_of_names", 3)
        if kind.startswith("const ") and COUNTS.fullmatch(names[0]):
            return Parameter(name, "array_" + ELEMENTS[bare], 2)
        if kind.endswith("*") and names[:2] == ["capacity", "count"]:
            if bare in self.headers.structs:
                return Parameter(name, "out_records", 3, bare)
            return Parameter(name, "out_array_" + ELEMENTS[bare], 3)
        if bare in self.headers.structs:
            own = at == 0 and not INIT.fullmatch(function.name)
            return Parameter(name, "record" if kind.startswith("const ") else "changed_record" if own else "out_record",
                             type=bare)
        if kind == "uint8_t*" and name == "received":
            return Parameter(name, "out_mirror")
        enum = self.enum_of(function.name, name, function.comment) if bare in ("int32_t", "uint32_t") else ""
        if kind.endswith("*") and bare in SCALARS:
            return Parameter(name, "out_" + SCALARS[bare], type=enum)
        if name == "timeout_ms" and "negative: the connection's time-out" in " ".join(self.whole_comment(function).split()):
            return Parameter("timeout", "wait", default="None")
        if name == "character" and kind == "uint16_t":
            return Parameter(name, "char16")
        if kind == "int64_t":
            return Parameter(name, "font" if name == "font" else "list")
        return Parameter(name, SCALARS[kind], type=enum, default=DEFAULTS.get(name, ""))

    def whole_comment(self, function):
        """A comment, with that of the function to which it says that this one is the same."""
        if named := re.match(r"(vl\w+) with ", function.comment):
            return function.comment + "\n\n" + self.whole_comment(self.headers.functions[named[1]])
        if not re.match(r"The same\b", function.comment):
            return function.comment
        before = None
        for other in self.headers.functions.values():
            if other is function:
                return function.comment + ("\n\n" + self.whole_comment(before) if before else "")
            before = other
        return function.comment

    def _face(self, function):
        first = function.parameters[0] if function.parameters else ("", "")
        short = function.name.removeprefix("vl")
        owner, at, init = "", 1, ""
        if first == ("int64_t", "list"):
            owner, name = "List", re.sub(r"[23]D$", "", re.sub(r"^List(?:Append(?=Mark|[A-Z]))?", "", short))
            name = {"List": "AppendList", "CommandFromString": "AppendCommandFromString"}.get(name, name)
        elif first == ("int64_t", "font"):
            owner, name = "Font", short.removeprefix("Font")
        elif first == ("int32_t", "handle"):
            area = next((area for area in AREAS if short.startswith(area)), "")
            owner, name = CLASSES.get(area, area) or "Card", short.removeprefix(area).removesuffix("WithProgress")
        else:
            name, at = short, 0
            if INIT.fullmatch(function.name):
                init = first[0].removesuffix("*")
        parameters = []
        while at < len(function.parameters):
            try:
                parameters.append(self._parameter(function, at))
            except KeyError as kind:
                raise SystemExit(f"{function.name}: no rule for the parameter '{function.parameters[at][1]}' ({kind}), "
                                 "see bindings/python/faces.py") from None
            at += parameters[-1].slots
        returned = re.match(r"Returns the (number|length)", function.comment) and "int"
        if function.result == "int64_t" and not returned:
            returned = "font" if function.name == "vlFontGet" else "list"
        name = snake(name)
        if owner == "" and RECORD_METHODS.fullmatch(function.name) and not init:
            name = "_" + name  # a method of the record calls it
        return Face(function, owner, name, parameters, returned or "", owner not in ("List", "Font", "")
                    or "Local." not in function.comment and owner == "", init)

    def record_methods(self, struct):
        """What is asked of a record without a card: (method, face)."""
        for face in self.faces:
            if face.owner == "" and not face.init and face.parameters:
                first = face.parameters[0]
                match = RECORD_METHODS.fullmatch(face.function.name)
                if first.type == struct and first.kind in ("record", "changed_record"):
                    name = snake(match[1])
                    yield ("to_string" if name.startswith("to_string") else name), face
                elif match and face.parameters[-1].type == struct and face.parameters[-1].kind == "out_record":
                    yield snake(match[1]), face
