#!/usr/bin/env python3
"""The virtual card's page in a browser.

Arguments: what to do, the virtual card, the tool.
  run      it shows a run as the card's SVG does, and acts on the card
  access   keyboard and screen reader reach all of it, says axe-core from AXE_FOLDER
  measure  how evenly it moves while a list of 200,000 marks runs, is panned and zoomed; prints the figures
Ends with 77 where there is no browser, or no axe-core.
"""
import contextlib
import os
import pathlib
import re
import statistics
import subprocess
import sys
import tempfile
import time

import browser

WHAT, CARD, TOOL = sys.argv[1:]
BEAM = 0.5
# It waits in the middle, having told its progress, until pin 2 of port 2 is set.
LIST = """{ JA, P2D[ 0 0 ] }, { MA, P2D[ 40 0 ] }, { MA, P2D[ 40 20 ] }, { PI, I32[ 1 ] },
{ WI, U32[ 4 ], I32[ 2 ], Bool[ True ], Bool[ True ], U32[ 4 ], I32[ -1 ] },
{ MA, P2D[ 0 20 ] }, { MA, P2D[ 0 0 ] }, { JA, P2D[ 10 10 ] }, { MA, P2D[ 30 15 ] }
"""
# The cells, of a grid of so many a side, in which something is dark enough to be a mark.
GRID = 60
INKED = """
const picture = arguments[0], grid = arguments[1], canvas = document.createElement("canvas");
canvas.width = canvas.height = 480;
const context = canvas.getContext("2d");
context.fillStyle = "#fff";
context.fillRect(0, 0, 480, 480);
return picture.startsWith("<") ? fromSvg() : fromPage();

async function fromSvg() {
  const image = new Image();
  image.src = "data:image/svg+xml;base64," + btoa(picture);
  await image.decode();
  const scale = Math.min(480 / image.width, 480 / image.height), w = image.width * scale, h = image.height * scale;
  context.drawImage(image, (480 - w) / 2, (480 - h) / 2, w, h);
  return cells();
}
function fromPage() {
  const done = document.getElementById("done");
  context.drawImage(done, 0, 0, done.width, done.height, 0, 0, 480, 480);
  return cells();
}
function cells() {
  const pixels = context.getImageData(0, 0, 480, 480).data, found = new Set(), size = 480 / grid;
  for (let y = 0; y < 480; ++y) for (let x = 0; x < 480; ++x) {
    const at = 4 * (480 * y + x);
    if (pixels[at] < 128 && pixels[at + 1] < 128 && pixels[at + 2] < 128) found.add(Math.floor(y / size) * grid + Math.floor(x / size));
  }
  return [...found].sort((a, b) => a - b);
}
"""
VARIABLES = "return document.getElementById('variables').textContent"
CONTROLS = "button, input, select, a, [tabindex]"
# What axe-core finds, each with the places where.
AXE = """
const tell = arguments[arguments.length - 1];
axe.run(document, { resultTypes: ["violations"] }).then(
  all => tell(all.violations.map(one => `${one.id}: ${one.nodes.map(node => node.html.slice(0, 120)).join(" ")}`)),
  error => tell([String(error)]));
"""
# The milliseconds between frames, of so many, doing something in each.
FRAMES = """
const what = arguments[0], most = arguments[1], tell = arguments[2], stage = document.getElementById("stage"), times = [];
const box = stage.getBoundingClientRect(), place = { clientX: box.left + 200, clientY: box.top + 150, bubbles: true };
const does = {
  watch() {},
  pan: i => stage.dispatchEvent(new KeyboardEvent("keydown", { key: i % 40 < 20 ? "ArrowLeft" : "ArrowRight" })),
  zoom: i => stage.dispatchEvent(new WheelEvent("wheel", { ...place, deltaY: i % 40 < 20 ? -30 : 30, cancelable: true })),
  rest: i => { if (i % 30 === 0) does.pan(i % 60 ? 0 : 30); },
};
let before = 0;
requestAnimationFrame(function next(now) {
  if (before) times.push(now - before);
  before = now;
  if (times.length === most) return tell(times);
  does[what](times.length);
  requestAnimationFrame(next);
});
"""


class Card:
    def __init__(self, folder, *arguments):
        self.svg = pathlib.Path(folder) / "run.svg"
        self.process = subprocess.Popen([CARD, "--port", "0", "--http", "0", "--svg", self.svg, "--beam", str(BEAM),
                                         *arguments], stdout=subprocess.PIPE, text=True)
        self.address = self._told("Listening on ")
        self.url = self._told("Page at ")

    def _told(self, head):
        while not (line := self.process.stdout.readline()).startswith(head):
            assert line, "the virtual card has not come up"
        return line.removeprefix(head).strip()

    def tool(self, *arguments):
        return subprocess.Popen([TOOL, "--quiet", "--card", self.address, *arguments])

    def end(self):
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()


@contextlib.contextmanager
def opened(text, *arguments):
    """The page of a card, and the file with a list of that text."""
    with tempfile.TemporaryDirectory() as folder, browser.Browser() as page:
        card = Card(folder, *arguments)
        file = pathlib.Path(folder) / "list.txt"
        file.write_text(text, encoding="utf-8")
        try:
            page.open(card.url)
            connected(page)
            yield page, card, file
        finally:
            card.end()


def connected(page):
    page.wait("return document.getElementById('link').textContent === 'Connected'")


def wait_for_run(page, end):
    page.wait("return document.getElementById('run').textContent.endsWith(arguments[0])", end)


def whole_picture(page, least):
    """Waits until all that the card has drawn is to be seen, and that is no less than so many points."""
    page.wait("const points = Number(document.getElementById('points').textContent.replaceAll(',', ''));"
              "return points >= arguments[0] && document.getElementById('stage').dataset.drawn.endsWith(':' + points)", least)


def be_hidden(page, is_hidden):
    page.run("Object.defineProperty(document, 'hidden', { configurable: true, value: arguments[0] });"
             "document.dispatchEvent(new Event('visibilitychange'))", is_hidden)


def square_stage(page):
    """It shows what the SVG shows at the same scale in both directions."""
    page.run("document.getElementById('stage').style.cssText = 'width:482px;height:482px'")
    frames(page)


def frames(page):
    """Lets what has changed be drawn."""
    page.run_async("const tell = arguments[0]; let left = 4;"
                   "requestAnimationFrame(function next() { if (--left) requestAnimationFrame(next); else tell(); })")


def run():
    with opened(LIST, "--speed", "max") as (page, card, file):
        square_stage(page)
        tool = card.tool("list", "run", file)
        wait_for_run(page, "is running")
        whole_picture(page, 3)
        before = page.run(INKED, "page", GRID)
        assert before, "nothing of the run is drawn"
        page.reload()
        connected(page)
        square_stage(page)
        whole_picture(page, 3)
        assert page.run(INKED, "page", GRID) == before, "a reload shows another picture"
        current = page.wait("return document.querySelector('#commands [aria-current]')?.textContent")
        assert re.match(r"\d+.*WI", current), current

        page.run("const port = document.getElementById('port'); port.value = 2; port.onchange()")
        page.click("#pins button:nth-child(3)")
        assert tool.wait(browser.PATIENCE) == 0, "the list has not gone on"
        wait_for_run(page, "has ended")
        whole_picture(page, 7)
        drawn, expected = page.run(INKED, "page", GRID), page.run(INKED, card.svg.read_text(encoding="utf-8"), GRID)
        odd = set(drawn) ^ set(expected)
        assert len(expected) > 100 and len(odd) <= len(expected) / 20, f"{sorted(odd)} of {len(expected)} cells differ"
        assert before != drawn
        page.wait("return /List idle 1/.test(document.getElementById('notifications').textContent)")
        be_hidden(page, True)
        assert card.tool("variable", "set", "seen=true").wait() == 0
        time.sleep(0.5)
        assert "seen" not in page.run(VARIABLES), "a hidden page is told"
        be_hidden(page, False)
        page.wait(VARIABLES + ".includes('seen')")
        complaints = page.complaints()
        assert not complaints, complaints
        card.end()
        page.wait("return document.getElementById('link').textContent === 'The card has ended.'")


def access():
    axe = pathlib.Path(os.environ.get("AXE_FOLDER", "")) / "package/axe.min.js"
    if not axe.is_file():
        print("Accessibility is not tested: there is no axe-core, which scripts/setup axe fetches.")
        sys.exit(77)
    with opened(LIST, "--speed", "max") as (page, card, file):
        for verb in (("variable", "set", "ready=true"), ("variable", "set", "parts=5")):
            assert card.tool(*verb).wait() == 0
        tool = card.tool("list", "run", file)
        wait_for_run(page, "is running")
        page.run("document.getElementById('signal-name').value = 'go'")
        page.click("#signal-form button")
        page.run("document.getElementById('fault').value = 'GetList:drop'")
        page.click("#fault-form button")
        for kind in ("variables", "signals", "faults", "clients", "notifications", "commands", "lists", "pins"):
            page.wait("return document.getElementById(arguments[0]).children.length", kind)
        page.run(axe.read_text(encoding="utf-8"))
        for scheme in "light", "dark":
            for width, height in (1200, 900), (360, 740):
                page.look_as(scheme, width, height)
                frames(page)
                found = page.run_async(AXE)
                assert not found, f"{scheme}, {width}: {found}"
                assert page.run("return document.documentElement.scrollWidth <= innerWidth"), "wider than its window"
        # Whoever looks for faults has to see one.
        page.run("document.body.append(document.createElement('button'))")
        found = page.run_async(AXE)
        assert any(text.startswith("button-name") for text in found), found
        page.run("document.body.lastChild.remove()")
        page.click("#faults button")
        page.wait("return document.getElementById('faults').children.length === 0")

        # The keyboard comes to every control, and works them.
        reached = set()
        count = page.run(f"const all = document.querySelectorAll('{CONTROLS}'); all.forEach((one, i) => one.dataset.at = i);"
                         "return all.length")
        for _ in range(count + 5):
            page.press("\ue004")  # tabulator
            reached.add(page.run("return document.activeElement.dataset.at"))
        missed = page.run(f"return [...document.querySelectorAll('{CONTROLS}')].filter(one => !arguments[0]"
                          ".includes(one.dataset.at)).map(one => one.outerHTML)", sorted(reached - {None}))
        assert not missed, missed
        page.run("const port = document.getElementById('port'); port.value = 2; port.onchange();"
                 "document.querySelector('#pins button:nth-child(3)').focus()")
        page.press(" ")
        assert tool.wait(browser.PATIENCE) == 0, "the list has not gone on"


def measure():
    marks = 200_000
    rows = ["{ MS, F64[ 0.0014 ] }"]
    for i in range(marks):
        row, column = divmod(i, 500)
        rows.append(f"{{ MA, P2D[ {column / 10 if row % 2 else (500 - column) / 10} {row / 8 + column % 2 / 10} ] }}")
    for where, *screen in ("at a desk", 1200, 900, 1), ("on a phone", 360, 740, 2):
        measure_at(where, screen, ",\n".join(rows), marks)


def measure_at(where, screen, text, marks):
    with opened(text) as (page, card, file):
        page.look_as("light", *screen)
        tool = card.tool("list", "run", file)
        wait_for_run(page, "is running")
        print(f"{where:24}{'median':>9}{'95 %':>9}{'longest':>9}   milliseconds between frames")
        for name, what in ("the list runs", "watch"), ("it runs and is panned", "pan"), ("it runs and is zoomed", "zoom"):
            show(name, page.run_async(FRAMES, what, 300))
            assert page.run("return document.getElementById('run').textContent.endsWith('is running')"), "it was over"
        assert tool.wait(browser.PATIENCE) == 0
        whole_picture(page, marks)
        for name, what in ("all of it is panned", "pan"), ("all of it is zoomed", "zoom"), ("all is drawn anew", "rest"):
            show(name, page.run_async(FRAMES, what, 300))


def show(name, times):
    times.sort()
    print(f"{name:24}{statistics.median(times):9.1f}{times[len(times) * 95 // 100]:9.1f}{times[-1]:9.1f}", flush=True)


def main():
    if browser.find() is None:
        print("The page is not tested: there is no chromium with its driver.")
        sys.exit(77)
    {"run": run, "access": access, "measure": measure}[WHAT]()


main()
