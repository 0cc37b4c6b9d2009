#!/usr/bin/env python3
"""Does what docs/commissioning.md says, command by command, and compares what it shows.

Arguments: the page, the folder of the programs. It needs root, for networks of its own: one for the card, one for the
user, and a cable between them. Where the page says "off and on", the card is.
"""
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time

PAGE, PROGRAMS = map(os.path.abspath, sys.argv[1:3])
ADDRESS = "192.168.1.7"


def steps(text):
    """The page in its order: ("file", name, content), ("run", command, lines that are shown) and ("power",)."""
    above = ""
    for block in re.split(r"\n\n", text):
        lines = block.split("\n")
        if not all(line.startswith("    ") for line in lines if line):
            above = block
            if "off and on" in block:
                yield ("power",)
            continue
        lines = [line[4:] for line in lines]
        if not lines[0].startswith("$ "):
            name = re.search(r"`([\w.]+)`:$", above)
            assert name, f"What is this for?\n{block}"
            yield ("file", name[1], "\n".join(lines) + "\n")
            continue
        for command, shown in re.findall(r"^\$ (.*)\n((?:(?!\$ ).*\n)*)", "\n".join(lines) + "\n", re.M):
            yield ("run", command, shown.splitlines())


def shows(output, expected):
    """A line "…" stands for any lines, within a line it stands for any text."""
    pattern = "".join(r"(?:.*\n)*?" if line == "…" else re.escape(line).replace("…", ".*") + r"\n" for line in expected)
    return re.fullmatch(pattern, output) is not None


def wait_for(card_network, port):
    for _ in range(600):
        with open(f"/proc/{card_network}/net/tcp6") as table:
            # In the state of listening: connections of a card that was switched off may be there, too.
            if re.search(rf":{port:04X} [0-9A-F]+:0000 0A ", table.read()):
                return
        time.sleep(0.1)
    raise RuntimeError("the card does not listen")


def main(folder):
    run = lambda command: subprocess.run(command, shell=True, check=True)
    other = subprocess.Popen(["unshare", "-n", "sleep", "600"])
    inside = ["nsenter", "-t", str(other.pid), "-n"]
    card = None

    def switch_on():
        nonlocal card
        card = subprocess.Popen([*inside, PROGRAMS + "/kelvo-virtual-card", "--ssdp", "--state", folder + "/state"],
                                stdout=subprocess.DEVNULL)
        wait_for(other.pid, 49374)

    def switch_off():
        card.terminate()
        card.wait()

    faults = count = 0
    try:
        while os.readlink(f"/proc/{other.pid}/ns/net") == os.readlink("/proc/self/ns/net"):
            time.sleep(0.02)
        run(f"ip link set lo up && ip link add eth0 type veth peer name eth0 netns {other.pid} && "
            f"ip address add 192.168.1.2/24 dev eth0 && ip link set eth0 up && {' '.join(inside)} sh -c '"
            f"ip link set lo up && ip address add {ADDRESS}/24 dev eth0 && ip link set eth0 up'")
        while "tentative" in subprocess.run(["ip", "address", "show", "dev", "eth0"], capture_output=True,
                                            text=True, check=True).stdout:
            time.sleep(0.1)
        switch_on()
        environment = {"PATH": PROGRAMS + ":" + os.environ["PATH"], "HOME": folder, "NO_COLOR": "1"}
        for kind, *rest in steps(pathlib.Path(PAGE).read_text()):
            if kind == "power":
                switch_off()
                switch_on()
            elif kind == "file":
                pathlib.Path(folder, rest[0]).write_text(rest[1])
            else:
                command, expected = rest
                count += 1
                if command.startswith("export "):
                    environment.update([command.removeprefix("export ").split("=", 1)])
                    continue
                done = subprocess.run(["bash", "-c", command], cwd=folder, env=environment, capture_output=True,
                                      text=True, timeout=180, check=False)
                # Of what is said on standard error the page shows what matters.
                said = [line for line in expected if line != "…" and any(shows(one + "\n", [line])
                                                                         for one in done.stderr.splitlines())]
                if not shows(done.stdout, [line for line in expected if line not in said]):
                    faults += 1
                    print(f"$ {command}\n{done.stdout}{done.stderr}--- but the page has\n" + "\n".join(expected) + "\n")
    finally:
        if card:
            switch_off()
        other.kill()
        other.wait()
    print(f"{count} commands")
    sys.exit(1 if faults or count < 15 else 0)


if subprocess.run(["unshare", "-n", "true"], check=False).returncode != 0:
    print("Networks of its own are not allowed here.")
    sys.exit(77)
if len(sys.argv) == 3:
    os.execvp("unshare", ["unshare", "-n", sys.executable, "-B", *sys.argv, "inside"])
with tempfile.TemporaryDirectory() as place:
    main(place)
