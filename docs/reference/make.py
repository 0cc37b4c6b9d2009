#!/usr/bin/env python3
"""Makes the reference of the public headers: HTML by Doxygen, and a man page for each function and each header.

Arguments: the project's folder, the folder for html/ and man/man3/, the version. Fails when something is not documented.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import textwrap

sys.dont_write_bytecode = True
from filter import COMMENT, HEADING  # noqa: E402

PROTOTYPE = re.compile(r"KELVO_API\s+([^;]*?\b(vl\w+)\([^;]*\));")


def html(project, output, version):
    settings = (project / "docs/reference/Doxyfile").read_text()
    settings += f"PROJECT_NUMBER = {version}\nOUTPUT_DIRECTORY = {output}\nSTRIP_FROM_PATH = {project}/include\n" + "".join(
        f'FILTER_PATTERNS += "*{kind}={project}/docs/reference/filter.py"\n' for kind in (".h", ".hpp"))
    shutil.rmtree(output / "html", ignore_errors=True)
    done = subprocess.run(["doxygen", "-"], input=settings, text=True, cwd=project / "include", check=False)
    if done.returncode != 0:
        sys.exit("The reference is not complete: see above.")
    # The folder's page is named after a hash of the whole path.
    for file in [*output.glob("html/**/*.html"), *output.glob("html/**/*.js")]:
        file.write_text(re.sub(r"dir_[0-9a-f]{32}", "dir_kelvo", file.read_text()))
        if file.name.startswith("dir_"):
            file.rename(file.with_name("dir_kelvo" + file.suffix))


def paragraphs(comment):
    """A comment as lines of a man page."""
    lines = [re.sub(r"^ ?\*? ?", "", line).rstrip() for line in comment.rstrip().split("\n")]
    margin, dash, out = min((len(line) - len(line.lstrip()) for line in lines[1:] if line), default=0), None, []
    for i, line in enumerate(lines):
        indent = len(line) - len(line.lstrip()) - (margin if i else 0)
        words = re.sub(r"`([^`]*)`", r"\\fI\1\\fP", line.strip().replace("\\", "\\e"))
        item = re.match(r"(-|\d+\.) +(.*)", words)
        if not words:
            out.append(".PP")
            dash = None
        elif item:
            dash = indent
            out += [f'.IP "{item[1] if item[1] != "-" else chr(92) + "(bu"}" {4 if item[1] != "-" else 2}', item[2]]
        elif dash is None and indent >= 4:
            out += [".nf", words, ".fi"]
        else:
            if dash is not None and indent <= dash:
                out.append(".PP")
                dash = None
            out.append(words)
    return [line if line[:1] != "'" and (line[:1] != "." or re.match(r"\.(PP|IP|nf|fi)\b", line)) else "\\&" + line for line in out]


def page(output, name, version, about, synopsis, sections):
    """Writes a man page; sections are (heading, lines)."""
    about = re.split(r"[.:;](?:\s|$)| \(", " ".join(re.sub(r"\n \*|`", " ", about).split()))[0].replace("\\", "\\e")
    out = [f'.TH {name} 3 "" "KELVO {version}" "KELVO client library"', ".SH NAME",
           f"{name} \\- {about[:1].lower()}{about[1:]}",
           ".SH SYNOPSIS", ".nf", *synopsis, ".fi"]
    for heading, lines in sections:
        out += [f'.SH "{heading}"', *lines]
    (output / f"{name}.3").write_text("\n".join(out) + "\n")


def manual(project, output, version):
    output = output / "man/man3"
    shutil.rmtree(output, ignore_errors=True)
    output.mkdir(parents=True)
    for header in sorted((project / "include/kelvo").glob("*.h")):
        text, section, previous, functions, declarations = header.read_text(), [], "", [], []
        include = [f"#include <kelvo/{header.name}>"]
        for match in COMMENT.finditer(text):
            rest, heading = text[match.end():], HEADING.match(match[2])
            prototype = PROTOTYPE.match(rest)
            if heading:
                section = paragraphs(re.sub(r"^[\s*]+", " ", heading[2]))
            if re.match(r"typedef enum|typedef struct|#define KELVO_(?!API|EXTERN|STATIC)", rest):
                end = rest.index("\n", rest.index("\n}") + 1 if rest.startswith("typedef") and "{" in rest.split("\n")[0] else 0)
                declarations += [".PP", *paragraphs(match[2]), ".PP", ".nf", *(rest[:end].replace("\\", "\\e")).split("\n"), ".fi"]
            if prototype:
                about = re.sub(r"^\s*The same\b", f" {previous}", match[2])
                previous = prototype[2] if about == match[2] else previous
                sections = [("DESCRIPTION", paragraphs(about))]
                if any(section):
                    sections.append(("NOTES", section))
                sections.append(("SEE ALSO", [f"{header.name}(3), kelvo.h(3)"]))
                synopsis = textwrap.wrap(" ".join(prototype[1].split()) + ";", 72, subsequent_indent="    ")
                page(output, prototype[2], version, about, [*include, "", *synopsis], sections)
                functions.append(f"{prototype[2]}(3)")
        top = COMMENT.match(text)[2]
        sections = [("DESCRIPTION", paragraphs(top))]
        if declarations:
            sections.append(("TYPES AND CONSTANTS", declarations))
        sections.append(("SEE ALSO", [", ".join(functions) or ", ".join(
            f"{other.name}(3)" for other in sorted(header.parent.glob("*.h")) if other != header)]))
        page(output, header.name, version, top, include, sections)


def main():
    project, output, version = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve(), sys.argv[3]
    html(project, output, version)
    manual(project, output, version)


main()
