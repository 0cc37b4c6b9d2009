"""What the public headers say: enumerations, structs and functions, each with its comment."""
import dataclasses
import pathlib
import re

COMMENT = re.compile(r"/\*(.*?)\*/", re.DOTALL)
ENUM = re.compile(r"typedef enum (\w+) \{(.*?)\n\} \1;", re.DOTALL)
CONSTANT = re.compile(r"^\s*(\w+) = (-?\w+),?\s*(/\*.*?\*/)?", re.DOTALL | re.MULTILINE)
STRUCT = re.compile(r"typedef struct (\w+) \{(.*?)\n\} \1;", re.DOTALL)
MEMBER = re.compile(r"^\s*(\w+)\s+(\w[^;/]*);[ \t]*(/\*.*?\*/)?", re.DOTALL | re.MULTILINE)
FUNCTION = re.compile(r"^KELVO_API\s+(\w+)\s+(\w+)\s*\(([^;]*?)\);", re.MULTILINE)


@dataclasses.dataclass
class Enum:
    name: str
    comment: str
    constants: list[tuple[str, str, str]]  # name, value, comment

    @property
    def is_flags(self):
        return bool(re.search(r"\bflags\b", self.comment, re.IGNORECASE))


@dataclasses.dataclass
class Struct:
    name: str
    comment: str
    members: list[tuple[str, str, list[str], str]]  # type, name, dimensions, comment

    @property
    def is_list(self):
        return [member[1] for member in self.members] == ["Count", "Items"]


@dataclasses.dataclass
class Function:
    name: str
    comment: str
    result: str
    parameters: list[tuple[str, str]]  # type, name


def plain(comment):
    """A comment's text without its marks."""
    lines = COMMENT.fullmatch(comment.strip()).group(1).split("\n")
    return "\n".join(re.sub(r"^ ?\* ?", "", line) if i else line.strip() for i, line in enumerate(lines)).strip()


def above(text, start):
    """The text of the comment that ends right above a place."""
    head = text[:start].rstrip(" ")
    if not head.endswith("*/\n"):
        return ""
    comment = plain(head[head.rindex("/*"):].strip())
    return "" if comment.startswith("----") else comment


class Headers:
    def __init__(self, folder):
        self.enums, self.structs, self.functions, self.tops = {}, {}, {}, {}
        for file in sorted(pathlib.Path(folder).glob("*.h")):
            text = file.read_text()
            self.tops[file.name] = plain(COMMENT.search(text).group())
            for match in ENUM.finditer(text):
                constants = [(name.removeprefix(match[1] + "_"), value, plain(comment) if comment else "")
                             for name, value, comment in CONSTANT.findall(match[2])]
                self.enums[match[1]] = Enum(match[1], above(text, match.start()), constants)
            for match in STRUCT.finditer(text):
                self.structs[match[1]] = Struct(match[1], above(text, match.start()), list(self._members(match[2])))
            for match in FUNCTION.finditer(text):
                words = [" ".join(word.split()) for word in match[3].split(",")]
                parameters = [re.fullmatch(r"(.*\W)(\w+)", word).groups() for word in words if word != "void"]
                self.functions[match[2]] = Function(match[2], above(text, match.start()), match[1],
                                                    [(kind.strip(), name) for kind, name in parameters])

    @staticmethod
    def _members(body):
        for kind, names, comment in MEMBER.findall(body):
            for name in names.split(","):
                word, *dimensions = re.findall(r"\w+", name)
                yield kind, word, dimensions, plain(comment) if comment else ""
