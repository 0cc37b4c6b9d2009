#!/usr/bin/env python3
"""The virtual card's page in a browser: it shows a run as the card's SVG does, and acts on the card.

Arguments: the virtual card, the tool. Ends with 77 where there is no browser.
"""
import pathlib
import re
import subprocess
import sys
import tempfile

import browser

CARD, TOOL = sys.argv[1:]
BEAM = 0.5
# It waits in the middle until pin 2 of port 2 is set.
LIST = """{ JA, P2D[ 0 0 ] }, { MA, P2D[ 40 0 ] }, { MA, P2D[ 40 20 ] },
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


class Card:
    def __init__(self, folder):
        self.svg = pathlib.Path(folder) / "run.svg"
        self.process = subprocess.Popen([CARD, "--port", "0", "--http", "0", "--svg", self.svg, "--beam", str(BEAM),
                                         "--speed", "max"], stdout=subprocess.PIPE, text=True)
        self.address = self._told("Listening on ")
        self.url = self._told("Page at ")

    def _told(self, head):
        while not (line := self.process.stdout.readline()).startswith(head):
            assert line, "the virtual card has not come up"
        return line.removeprefix(head).strip()

    def end(self):
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()


def whole_picture(page, least):
    """Waits until all that the card has drawn is to be seen, and that is no less than so many points."""
    page.wait("const points = document.getElementById('points').textContent;"
              "return points >= arguments[0] && document.getElementById('stage').dataset.drawn.endsWith(':' + points)", least)


def main():
    if browser.find() is None:
        sys.exit(77)
    with tempfile.TemporaryDirectory() as folder, browser.Browser() as page:
        card = Card(folder)
        file = pathlib.Path(folder) / "list.txt"
        file.write_text(LIST, encoding="utf-8")
        try:
            page.open(card.url)
            page.wait("return document.getElementById('link').textContent === 'Connected'")
            # A square stage shows what the SVG shows at the same scale in both directions.
            page.run("document.getElementById('stage').style.cssText = 'width:482px;height:482px'")
            tool = subprocess.Popen([TOOL, "--quiet", "--card", card.address, "list", "run", file])
            page.wait("return document.getElementById('run').textContent.endsWith('is running')")
            whole_picture(page, 3)
            before = page.run(INKED, "page", GRID)
            assert before, "nothing of the run is drawn"
            page.reload()
            page.wait("return document.getElementById('link').textContent === 'Connected'")
            page.run("document.getElementById('stage').style.cssText = 'width:482px;height:482px'")
            whole_picture(page, 3)
            assert page.run(INKED, "page", GRID) == before, "a reload shows another picture"
            current = page.wait("return document.querySelector('#commands [aria-current]')?.textContent")
            assert re.match(r"\d+.*WI", current), current

            page.run("const port = document.getElementById('port'); port.value = 2; port.onchange()")
            page.click("#pins button:nth-child(3)")
            assert tool.wait(browser.PATIENCE) == 0, "the list has not gone on"
            page.wait("return document.getElementById('run').textContent.endsWith('has ended')")
            whole_picture(page, 7)
            drawn, expected = page.run(INKED, "page", GRID), page.run(INKED, card.svg.read_text(encoding="utf-8"), GRID)
            odd = set(drawn) ^ set(expected)
            assert len(expected) > 100 and len(odd) <= len(expected) / 20, f"{sorted(odd)} of {len(expected)} cells differ"
            assert before != drawn
            page.wait("return /List idle 1/.test(document.getElementById('notifications').textContent)")
            wide = page.run("return document.documentElement.scrollWidth > innerWidth")
            assert not wide, "the page is wider than its window"
            complaints = [text for text in page.complaints() if "favicon" not in text]
            assert not complaints, complaints
        finally:
            card.end()
        page.wait("return document.getElementById('link').textContent === 'The card has ended.'")


main()
