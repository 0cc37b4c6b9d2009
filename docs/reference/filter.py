#!/usr/bin/env python3
"""Writes a public header as Doxygen reads it: its comments, which are plain ones, as documentation.

Comments begin with no special sign in the headers, because they stand where documentation does: above what they are
about, or behind it on its line. The comment at the top is the header's; one with a heading ("---- Heading ----") begins
a section; one that is followed by an empty line belongs to the header as a whole. In C++ what has no comment of its own
is documented by the C function that it calls.
"""
import pathlib
import re
import sys

COMMENT = re.compile(r"^( *)/\*(.*?)\*/\n", re.DOTALL | re.MULTILINE)
BEHIND = re.compile(r"^( *[^\s/*][^\n]*?) +/\*([^\n]*?)\*/$", re.MULTILINE)
HEADING = re.compile(r"\s*---- (.+?) ----(.*)", re.DOTALL)
# What a field is at first, as comments behind fields begin.
AT_FIRST = re.compile(r"(-?\d[\d.e-]*|true|false|NaN|vl\w+_\w+|\"[^\"]*\"|\([\d, ]+\)|the identity|its defaults|none|empty)"
                      r"(?:[;:] (.*))?$")
PROTOTYPE = re.compile(r"KELVO_API\s+([^;]*?\b(vl\w+)\([^;]*\));")
# In C++, what begins a name: a member, a function, a type.
CPP_START = re.compile(r"(  )?(?!return|throw|using \w+::)"
                       r"(using|enum|class|struct|template|inline|static|explicit|[A-Za-z\[][^/;={]* [&*]?\w+\()")


# What stands as it is: code, and quoted texts, which may run over a line's end.
LITERAL = re.compile(r"`[^`]*`|\"(?:\\.|[^\"\\])*\"", re.DOTALL)


def escaped(text):
    return re.sub(r"[\\\\%#@<>]", r"\\\g<0>", text)


def plain(text):
    """Signs that mean something to Doxygen stand for themselves."""
    out, position = [], 0
    for match in LITERAL.finditer(text):
        words = re.sub(r"\s*\n \*\s*", " ", match[0])
        if words[0] == '"' and escaped(words) != words:
            words = escaped(words).replace('"', "&quot;")  # between quotes Doxygen would show the signs of escape, too
        out += [escaped(text[position:match.start()]), words]
        position = match.end()
    return "".join(out) + escaped(text[position:])


def spaced(text):
    """What follows a list is no part of its last item."""
    out, dash = [], None
    for line in text.split("\n"):
        indent = len(line) - len(line.lstrip(" *"))
        if dash is not None and line.strip(" *") and indent <= dash and not line[indent:].startswith("-"):
            out.append(" *")
            dash = None
        if re.match(r" \*? +- ", line):
            dash = line.index("- ")
        out.append(line)
    return "\n".join(out)


def linked(text):
    """A comment's text; mentions of the conventions lead to them."""
    text = spaced(plain(text))
    return re.sub(r"\bkelvo\.h, (\d+)(?: and (\d+))?", lambda match: " and ".join(
        f'@ref convention{number} "{words}{number}"'
        for number, words in zip(match.groups(), ("kelvo.h, ", "")) if number), text)


def sentence(text):
    return text[:1].upper() + text[1:] + "." * (text[-1:] not in ".!?")


def behind(match):
    """A comment behind a field or a constant."""
    text = match[2].strip()
    first = AT_FIRST.match(text) if "=" not in match[1] else None
    if re.search(r"\bConfigVersion;", match[1]):
        text = f"Version of the struct. At first {text}."
    elif first:
        text = (sentence(first[2]) + " " if first[2] else "") + f"At first {first[1]}."
    return f"{match[1]} /**< {plain(sentence(text))} */"


def examples(folder):
    """The programs, which Doxygen links with the functions that they call."""
    for file in sorted(folder.glob("**/*.c*")):
        about = re.match(r"/\*(.*?)\*/|((?://[^\n]*\n)+)", file.read_text(), re.DOTALL)
        if about and file.suffix in (".c", ".cpp"):
            words = re.sub(r"\n( \*|//)", "\n *", about[1] or about[2][2:])
            yield f"/** @example {file.relative_to(folder)}\n *{plain(words)}*/\n"


def named(comment, described):
    """A comment that begins "The same" says the same as what."""
    return re.sub(r"^\s*The same\b", f" {described}", comment)


def c(name, text):
    """A C header."""
    out, position, section, described = [], 0, "", ""
    for match in COMMENT.finditer(text):
        comment, rest, before = match[2], text[match.end():], text[position:match.start()]
        out.append(BEHIND.sub(behind, before))
        position = match.end()
        heading = HEADING.match(comment)
        if match.start() == 0 and name == "kelvo.h":
            first, conventions = spaced(plain(comment)).split("\n", 1)
            conventions = re.sub(r"^ \* +(\d+)\. ", r" *\n * @anchor convention\1\n * **\1.** ", conventions,
                                 flags=re.MULTILINE).replace("\n *     ", "\n * ")
            out.append(f"/** @file\n *{first} */\n/** @mainpage Conventions\n *{first}\n{conventions}*/\n")
        elif match.start() == 0:
            out.append(f"/** @file\n *{linked(comment)}*/\n")
        elif heading:
            title = " ".join(heading[1].replace("*", " ").split())
            out.append(f"{section}/** @name {title}\n *{linked(heading[2])}*/\n/** @{{ */\n")
            section = "/** @} */\n"
        elif rest.startswith("\n"):
            out.append(f"/** @file\n *{linked(comment)}*/\n")
        else:
            about = named(comment, described)
            prototype = PROTOTYPE.match(rest)
            described = prototype[2] if prototype and about == comment else described
            out.append(f"{match[1]}/**{linked(about)}*/\n")
    rest = BEHIND.sub(behind, text[position:])
    end = rest.rindex("KELVO_EXTERN_C_END" if "KELVO_EXTERN_C_END" in rest else "#endif")
    whole = "".join(out) + rest[:end] + section + rest[end:]
    return re.sub(r"^#define KELVO_(EXTERN|STATIC|API).*", "", whole, flags=re.MULTILINE)  # of the headers alone


def cpp(text):
    """A C++ header: comments in // are documentation, and so is the name of the C function that a member calls."""
    lines, out = text.split("\n"), []
    starts = [i for i, line in enumerate(lines) if CPP_START.match(line)]
    for i, line in enumerate(lines):
        comment = re.match(r"( *)//(?: ?)(.*)", line)
        constant = re.match(r"  \w+ = (vl\w+),$", line)
        field = re.match(r"(  [\w:]+ \w+;) +// (.*)", line)
        if field:
            out.append(f"{field[1]} ///< {sentence(field[2])}")
        elif comment:
            out.append(("/// @file\n" if not out else "") + f"{comment[1]}/// {plain(comment[2])}")
        elif constant:
            out.append(f"{line} ///< {constant[1]}")
        else:
            if i in starts and lines[i - 1].lstrip()[:2] != "//" and not lines[i - 1].startswith("template"):
                end = next((j for j in starts if j > i), len(lines))
                called = re.findall(r"\bvl[A-Z]\w+", "\n".join(lines[i:end]))
                area = re.match(r"class (\w+)Area|  (\w+)Area \w+\(\) const", line)
                if area:
                    out.append(f"  /// The functions vl{area[1] or area[2]}..., as `card.{area[1] or area[2]}()`.")
                elif called:
                    out.append(f"  /// As {called[0]}().")
            out.append(line)
    return "\n".join(out)


def main():
    file = pathlib.Path(sys.argv[1])
    print(c(file.name, file.read_text()) if file.suffix == ".h" else cpp(file.read_text()), end="")
    if file.name == "kelvo.h":
        print("".join(examples(file.resolve().parents[2] / "examples")))


if __name__ == "__main__":
    main()
