#!/usr/bin/env python3
"""Makes the reference of the public headers: HTML by Doxygen, and a man page for each function and each header.

Arguments: the project's folder, the folder for html/ and man/man3/, the version. Fails when something has no comment.
"""
import pathlib
import re
import shutil
import subprocess
import sys
import textwrap

sys.dont_write_bytecode = True
from filter import COMMENT, HEADING, PROTOTYPE, named  # noqa: E402


def html(project, output, version):
    settings = (project / "docs/reference/Doxyfile").read_text()
    settings += f"PROJECT_NUMBER = {version}\nOUTPUT_DIRECTORY = {output}\nSTRIP_FROM_PATH = {project}/include\n"
    for kind in (".h", ".hpp"):
        settings += f'FILTER_PATTERNS += "*{kind}={project}/docs/reference/filter.py"\n'
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
    lines = [re.sub(r"^ ?\*? ?", "", line).rstrip() for line in comment.strip(" \n*").split("\n")]
    margin = min((len(line) - len(line.lstrip()) for line in lines[1:] if line), default=0)
    dash, out = None, []  # how far the list that goes on is indented
    for i, line in enumerate(lines):
        indent = len(line) - len(line.lstrip()) - (margin if i else 0)
        words = re.sub(r"`([^`]*)`", r"\\fI\1\\fP", line.strip().replace("\\", "\\e"))
        item = re.match(r"(-|\d+\.) +(.*)", words)
        if item:
            dash = indent
            out += [r".IP \(bu 2" if item[1] == "-" else f".IP {item[1]} 4", item[2]]
        elif not words or (dash is not None and indent <= dash):
            dash = None
            out += [".PP", words] if words else [".PP"]
        elif dash is None and indent >= 4:
            out += [".nf", words, ".fi"]
        else:
            out.append(words)
    return [r"\&" + line if re.match(r"'|\.(?!(PP|IP|nf|fi)\b)", line) else line for line in out]


def declaration(comment, rest):
    """A type or a constant as it stands in its header."""
    is_block = rest.split("\n")[0].endswith("{")
    text = rest[:rest.index("\n", rest.index("\n}") + 1 if is_block else 0)]
    return [".PP", *paragraphs(comment), ".PP", ".nf", *text.replace("\\", "\\e").split("\n"), ".fi"]


def page(output, version, name, about, synopsis, sections):
    """Writes a man page; sections are (heading, lines), of which those without lines are left out."""
    title = re.split(r"[.:;](?:\s|$)| \(", " ".join(re.sub(r"\n \*|`", " ", about).split()))[0].replace("\\", "\\e")
    out = [f'.TH {name} 3 "" "KELVO {version}" "KELVO client library"',
           ".SH NAME", f"{name} \\- {title[:1].lower()}{title[1:]}", ".SH SYNOPSIS", ".nf", *synopsis, ".fi"]
    for heading, lines in [("DESCRIPTION", paragraphs(about)), *sections]:
        if any(lines):
            out += [f".SH {heading}", *lines]
    (output / f"{name}.3").write_text("\n".join(out) + "\n")


def pages(output, version, header, headers):
    """Writes the pages of a header's functions, and its own."""
    text, include = header.read_text(), f"#include <kelvo/{header.name}>"
    top, notes, described, functions, types = "", [], "", [], []
    for match in COMMENT.finditer(text):
        comment, rest = match[2], text[match.end():]
        heading, prototype = HEADING.match(comment), PROTOTYPE.match(rest)
        if not match.start():
            top = comment
        elif heading or rest.startswith("\n"):  # what holds for all functions that follow
            words = heading[2] if heading else comment
            notes = paragraphs(words) if words.strip(" \n*") else []
        elif prototype:
            about = named(comment, described)
            described = prototype[2] if about == comment else described
            synopsis = textwrap.wrap(" ".join(prototype[1].split()) + ";", 72, subsequent_indent="    ")
            page(output, version, prototype[2], about, [include, "", *synopsis],
                 [("NOTES", notes), ("SEE ALSO", [f"{header.name}(3), kelvo.h(3)"])])
            functions.append(f"{prototype[2]}(3)")
        elif re.match(r"typedef|#define", rest):
            types += declaration(comment, rest)
    others = [f"{other.name}(3)" for other in headers if other != header]
    page(output, version, header.name, top, [include],
         [("TYPES AND CONSTANTS", types), ("SEE ALSO", [", ".join(functions or others)])])


def main():
    project, output, version = pathlib.Path(sys.argv[1]).resolve(), pathlib.Path(sys.argv[2]).resolve(), sys.argv[3]
    html(project, output, version)
    manual = output / "man/man3"
    shutil.rmtree(manual, ignore_errors=True)
    manual.mkdir(parents=True)
    headers = sorted((project / "include/kelvo").glob("*.h"))
    for header in headers:
        pages(manual, version, header, headers)


main()
