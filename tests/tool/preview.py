#!/usr/bin/env python3
"""What the tool's preview draws of the examples' lists is what the virtual card drew when they ran.

Arguments: the virtual card, the tool, the folder of the example programs, the examples' data. Each program runs on a card;
its lists and fonts are fetched from there and drawn by the tool, in SVG; PNG and PDF have to be files of their kinds.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

CARD, TOOL, PROGRAMS, DATA = sys.argv[1:]
# Program, arguments, options of the card and of the preview, least number of strokes.
EXAMPLES = [
    ("mark_nameplate", [], [], [], 100),
    ("list_from_text", [DATA + "/rosette.txt"], [], ["--colour", "order"], 10),
    ("list_of_lists", [], ["--beam", "0.15"], ["--beam", "0.15", "--colour", "speed"], 60),
    ("build_font", ["--text", "The laser writes."], [], [], 15),
    ("branch_on_input", [], ["--input", "1=3"], ["--input", "1=3", "--colour", "power"], 7),
]


def strokes_of(svg, group):
    """The strokes of all groups whose names begin so, as points in millimetres, and the unit of their coordinates."""
    strokes, dots, unit = [], [], 1.0
    for name, head, body in re.findall(r"<g id='([\w-]+)'(.*?)>\n(.*?)</g>", svg, re.S):
        if re.sub(r"-\d+$", "", name) != group:
            continue
        unit = float(re.search(r"scale\((\S+) ", head).group(1))
        for points in re.findall(r"points='([^']+)'", body):
            strokes.append([tuple(map(float, point.split(","))) for point in points.split()])
        for path in re.findall(r" d='([^']+)'", body):
            x = y = 0
            for letter, dx, dy in re.findall(r"([Mml])(-?\d+) ?(-?\d+)", path):
                x, y = (int(dx), int(dy)) if letter == "M" else (x + int(dx), y + int(dy))
                if letter != "l":
                    strokes.append([])
                strokes[-1].append((x * unit, y * unit))
        dots += [(float(x) * unit, float(y) * unit) for x, y in re.findall(r"cx='([^']+)' cy='([^']+)'", body)]
    return strokes, dots, unit


def segments(svg, group):
    """Of all strokes: colours put these into another order, and cut them where they change."""
    strokes, dots, unit = strokes_of(svg, group)
    return [s for stroke in strokes for s in zip(stroke, stroke[1:])], [(dot,) for dot in dots], len(strokes), unit


def difference(drawn, expected, unit):
    """The first of two lists of tuples of points that the other one lacks, within the rounding."""
    cells = {}
    cell = lambda point: tuple(int(c // unit) for c in point)
    for one in expected:
        cells.setdefault(cell(one[0]), []).append(one)
    for one in drawn:
        x, y = cell(one[0])
        near = [(key, other) for key in ((x + i, y + k) for i in (-1, 0, 1) for k in (-1, 0, 1))
                for other in cells.get(key, [])
                if all(abs(a - b) <= 0.6 * unit for p, q in zip(one, other) for a, b in zip(p, q))]
        if not near:
            return f"{one} is not expected"
        cells[near[0][0]].remove(near[0][1])
    left = [one for many in cells.values() for one in many]
    return f"{left[0]} is missing" if left else None


def main():
    faults = []
    for program, arguments, card_options, options, least in EXAMPLES:
        with tempfile.TemporaryDirectory() as folder:
            picture = pathlib.Path(folder, "card.svg")
            card = subprocess.Popen([CARD, "--port", "0", "--speed", "max", "--svg", picture, *card_options],
                                    stdout=subprocess.PIPE, text=True)
            try:
                port = card.stdout.readline().rsplit(":", 1)[1].strip()
                subprocess.run([pathlib.Path(PROGRAMS, program), *arguments, "127.0.0.1", port], check=True,
                               stdout=subprocess.DEVNULL, timeout=180)

                def tool(*words, check=True):
                    return subprocess.run([TOOL, *words, "--card", f"127.0.0.1:{port}"], cwd=folder, check=check,
                                          stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, timeout=180).returncode

                tool("list", "get", "1", "-o", "1.txt")
                given = []
                for number in map(str, range(1, 7)):
                    if number != "1" and tool("list", "get", number, "-o", number + ".txt", check=False) == 0:
                        given += ["--with", f"{number}={number}.txt"]
                    if tool("font", "get", number, "-o", number + ".json", check=False) == 0:
                        given += ["--font", f"{number}={number}.json"]
                expected = picture.read_text()
                for end in "svg", "png", "pdf":
                    tool("list", "preview", "1.txt", "-o", "out." + end, *given, *options)
                if program == "build_font":
                    tool("font", "preview", "1.json", "-o", "font.svg")
                    glyphs = strokes_of(pathlib.Path(folder, "font.svg").read_text(), "marks")[0]
                    if len(glyphs) < 95:
                        faults.append(f"the font has {len(glyphs)} strokes")
                drawn = pathlib.Path(folder, "out.svg").read_text()
                if pathlib.Path(folder, "out.png").read_bytes()[1:4] != b"PNG":
                    faults.append(f"{program}: out.png is none")
                if pathlib.Path(folder, "out.pdf").read_bytes()[:5] != b"%PDF-":
                    faults.append(f"{program}: out.pdf is none")
            finally:
                card.terminate()
                card.wait()
        for group in "marks", "jumps":
            ours, our_dots, count, unit = segments(drawn, group)
            theirs, their_dots, expected_count, _ = segments(expected, group)
            fault = difference(ours, theirs, unit) or difference(our_dots, their_dots, unit)
            if fault:
                faults.append(f"{program}, {group}: {fault}")
            if group == "marks" and expected_count < least:
                faults.append(f"{program}: only {expected_count} strokes to compare")
            print(f"{program}: {len(ours)} segments of {count} strokes in {group}")
    for fault in faults:
        print(fault)
    sys.exit(1 if faults else 0)


main()
