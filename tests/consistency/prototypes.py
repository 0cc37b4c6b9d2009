"""The prototypes of the public headers, and C and C++ without what is no code."""
import pathlib
import re

PROTOTYPE = re.compile(r"^KELVO_API\s+([^(;]*?)\s*\b(\w+)\s*\(([^;]*)\);", re.MULTILINE)
CALLBACK = re.compile(r"^typedef [^;]*?\(\*(\w+)\)", re.MULTILINE)
# Comments, and what may look as if it held one: texts, raw ones first, and characters (a digit's ' is none).
NO_CODE = re.compile(r'R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|\B\'(?:\\.|[^\'\\\n])+\'|//[^\n]*|/\*.*?\*/', re.DOTALL)


def code(text):
    """The text with blanks in place of comments and literals, so that what is left stands where it stood."""
    return NO_CODE.sub(lambda match: re.sub(r"[^\n]", " ", match.group()), text)


def headers(folder):
    """The texts of the headers in a folder."""
    return [header.read_text() for header in sorted(pathlib.Path(folder).glob("*.h"))]


def prototypes(text):
    """Of each prototype in a header: where it begins, its name, the (type, name) of its parameters, and its result."""
    for match in PROTOTYPE.finditer(code(text)):
        words = [" ".join(parameter.split()) for parameter in match.group(3).split(",")]
        parameters = [re.fullmatch(r"(.*\W)(\w+)", word).groups() for word in words if word != "void"]
        yield match.start(), match.group(2), [(kind.strip(), name) for kind, name in parameters], match.group(1)
