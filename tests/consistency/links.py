#!/usr/bin/env python3
"""Every link of the Markdown pages leads somewhere: to a file of the project, and to a heading in it.

Argument: the project's folder. Paths between backticks count as links, too, and the map of all pages has to have every
page of docs/.
"""
import pathlib
import re
import sys

LINK = re.compile(r"\]\(<?([^)\s>]+)>?\)")
ROOMS = r"\.ci|bench|cmake|docs|examples|fuzz|include|scripts|src|tests|tools|virtual-card"
PATH = re.compile(rf"`((?:{ROOMS})/[\w./*-]*)(?: [^`]*)?`")
CODE = re.compile(r"^(?:```.*?^```|    [^\n]*)$", re.DOTALL | re.MULTILINE)


def anchors(page):
    """What the headings of a page are called in links."""
    headings = re.findall(r"^#+ +(.*?) *$", re.sub(CODE, "", page.read_text()), re.MULTILINE)
    plain = [re.sub(r"\[([^]]*)\]\([^)]*\)", r"\1", heading).lower() for heading in headings]
    return {re.sub(r"[^\w\- ]", "", heading).replace(" ", "-") for heading in plain}


def main():
    project = pathlib.Path(sys.argv[1]).resolve()
    pages = [page for page in project.rglob("*.md")
             if not any(part == "build" or part.startswith(".") for part in page.relative_to(project).parts)]
    faults, links = [], 0
    for page in pages:
        text = CODE.sub("", page.read_text())
        for link in LINK.findall(text):
            if re.match(r"\w+:", link):
                continue
            links += 1
            name, _, anchor = link.partition("#")
            target = page.parent / name if name else page
            if not target.exists():
                faults.append(f"{page.relative_to(project)}: {link} is not there")
            elif anchor and (target.suffix != ".md" or anchor not in anchors(target)):
                faults.append(f"{page.relative_to(project)}: {link} has no such heading")
        for path in PATH.findall(text):
            if re.search(r"/[A-Z]+$", path):  # a word for what the reader names
                continue
            links += 1
            if not any(project.glob(path.rstrip("/"))) and not any(page.parent.glob(path.rstrip("/"))):
                faults.append(f"{page.relative_to(project)}: {path} is not there")
    mapped = {(project / "docs" / link).resolve() for link in LINK.findall((project / "docs/README.md").read_text())}
    faults += [f"docs/README.md does not mention {page.name}" for page in project.glob("docs/*.md")
               if page.resolve() not in mapped and page.name != "README.md"]
    for fault in faults:
        print(fault)
    print(f"{len(pages)} pages, {links} links, {len(faults)} faults")
    sys.exit(1 if faults or not links else 0)


main()
