#!/usr/bin/env python3
"""Completion in real shells: what is typed and what it becomes. Arguments: the tool, the virtual card, the folder of the
scripts for the shells.
"""
import os
import re
import socket
import subprocess
import sys
import time

from driver import Card, Terminal

SHELLS = {
    "bash": ("bash --norc --noprofile", "source {folder}/kelvo.bash"),
    "zsh": ("zsh -f", "fpath=({folder} $fpath); autoload -U compinit; compinit -u -D"),
    "fish": ("fish --no-config", "source {folder}/kelvo.fish"),
}
TRIES = 20  # others may use the machine, and the tool does not wait for a card for long
ROWS = (
    ("kelvo lis", "kelvo list "),
    ("kelvo list car", "kelvo list caret "),
    ("kelvo --quiet list stat", "kelvo --quiet list status "),
    ("kelvo list run --rep", "kelvo list run --repeat "),
    ("kelvo config get las", "kelvo config get laser."),
    ("kelvo config get laser.FpsPol", "kelvo config get laser.FpsPolarity "),
    ("kelvo config set laser.FpsPol", "kelvo config set laser.FpsPolarity="),
    ("kelvo config set laser.FpsPolarity=ActiveL", "kelvo config set laser.FpsPolarity=ActiveLow "),
    ("kelvo config set laser.FpsStart=1 system.ScannerMonitoring.Ena",
     "kelvo config set laser.FpsStart=1 system.ScannerMonitoring.Enabled="),
    ("kelvo config set spi.Modules[1].Lsb", "kelvo config set spi.Modules[1].LsbFirst="),
    ("kelvo config store adap", "kelvo config store adapter-board "),
    ("kelvo list put 7 jo", "kelvo list put 7 job.txt "),
    ("kelvo list get 7 -o jo", "kelvo list get 7 -o job.txt "),
    ("kelvo files get BIN", "kelvo files get BINFILES/"),
    # What the card knows.
    ("kelvo list get 47", "kelvo list get 4711 "),
    ("kelvo list run job.txt --id 47", "kelvo list run job.txt --id 4711 "),
    ("kelvo files get JOBFILES/pl", "kelvo files get JOBFILES/plate.bin "),
    ("kelvo config get gpio.Ports[1].PortN", "kelvo config get gpio.Ports[1].PortName "),
)


def check(card, shell, folder):
    command, setting_up = SHELLS[shell]
    with Terminal(card, command) as terminal:
        terminal.enter(setting_up.format(folder=folder) + "; echo begun")
        terminal.wait("^begun$")
        for typed, completed in ROWS:
            # Each shell quotes what it must.
            was, becomes = ("".join("\\\\?" + re.escape(c) for c in text) for text in (typed, completed))
            for left in reversed(range(TRIES)):
                terminal.press("C-l")
                terminal.type(typed)
                terminal.press("Tab")
                # What is typed behind it shows whether a blank followed.
                terminal.type("!")
                try:
                    found = terminal.wait(f"({becomes}!)" + (f"|{was}!" if left else ""))
                except AssertionError as error:
                    raise AssertionError(f"{shell}: '{typed}' has not become '{completed}'\n{error}") from None
                terminal.press("C-u")
                if found[1]:
                    break


def ask(card, *words, place=""):
    """What the tool offers, and how many seconds that takes."""
    start = time.monotonic()
    done = subprocess.run([card.tool, "__complete", *words], env={**card.environment, "KELVO_CARD": place},
                          capture_output=True, text=True, check=True)
    assert not done.stderr, done.stderr
    return done.stdout, time.monotonic() - start


def check_speed(card):
    """A card that does not answer keeps nobody waiting, and a search is never made."""
    here = f"127.0.0.1:{card.port}"
    with socket.create_server(("127.0.0.1", 0)) as silent:
        slow = f"127.0.0.1:{silent.getsockname()[1]}"
        for words, place, offered, least, most in (
                (("list", "get", ""), here, "4711\n", 0, 0.2),
                (("list", "get", ""), slow, "", 0.2, 0.3),
                (("list", "get", "--card", here, ""), slow, "4711\n", 0, 0.2),
                (("files", "get", "JOBFILES/"), slow, "JOBFILES/\n", 0.2, 0.3),
                (("list", "get", ""), "127.0.0.1:1", "", 0, 0.2),
                (("list", "get", ""), "127.0.0.1:x", "", 0, 0.2),
                (("list", "get", ""), "", "", 0, 0.2),
                (("list", "get", "--serial", "12345", ""), here, "", 0, 0.2)):
            answers = []
            while len(answers) < TRIES:
                found, seconds = ask(card, *words, place=place)
                answers.append((found, seconds))
                if found == offered and least <= seconds < most:
                    break
            else:
                raise AssertionError((words, place, answers))


def main(tool, program, folder):
    folder = os.path.abspath(folder)
    with Card(tool, program, "--speed", "max") as card:
        card.write("job.txt", "{ JA, P2D[1 2] }")
        card.run("list put 4711 job.txt")
        card.run("files put job.txt JOBFILES/plate.bin")
        check_speed(card)
        for shell in SHELLS:
            check(card, shell, folder)


main(*sys.argv[1:])
