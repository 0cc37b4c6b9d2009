#!/usr/bin/env python3
"""What every verb prints under --json has the shape that is written down for it.

Arguments: the tool, the virtual card, the folder of the schemas.
"""
import ctypes
import json
import os
import struct
import subprocess
import sys

import jsonschema

from driver import Card, wait_until

# A line for each verb, in an order that works; None prints no data. Those of "watch" print until they are ended.
LIST = "{ JA, P2D[1 2] } { MA, P2D[3 4] } { SL, F64[ 20000 ] }"
LINES = {
    "discover": "discover",
    "predict": "predict 12345",
    "info": "info",
    "clock set": "clock set",
    "clock show": "clock show",
    "list put": "list put 7 job",
    "list get": "list get 7",
    "list run": "list run job job --id 8 --repeat 2",
    "list check": "list check job --field 2x2",
    "list preview": "list preview job",
    "list status": "list status 7",
    "list caret": "list caret 7",
    "list store": "list store 7",
    "list load": "list load 7",
    "list ls": "list ls",
    "list delete": "list delete 7 --stored",
    "list abort": "list abort",
    "watch": "watch",
    "config show": "config show",
    "config get": "config get laser.FpsPolarity scanner.Heads[0] scanner.FieldSize",
    "config set": "config set laser.FpsStart=2",
    "config diff": "config diff --defaults laser",
    "config export": "config export laser",
    "config import": "config import settings",
    "config load": "config load",
    "config store": "config store",
    "config defaults": "config defaults",
    "config abort": "config abort",
    "files put": "files put job JOBFILES/job",
    "files ls": "files ls",
    "files get": "files get JOBFILES/job -o copy",
    "files rm": "files rm JOBFILES/job",
    "files backup": "files backup saved",
    "files restore": "files restore saved",
    "correction put": "correction put 0:1 optics",
    "correction ls": "correction ls",
    "correction show": "correction show 0:1",
    "correction get": "correction get 0:1 -o fetched",
    "correction select": "correction select 0:1",
    "correction store": "correction store",
    "correction load": "correction load",
    "power-correction create": "power-correction create optics",
    "power-correction show": "power-correction show",
    "power-correction set": "power-correction set 1,2,3=0.5",
    "power-correction get": "power-correction get -o power",
    "power-correction put": "power-correction put power",
    "power-correction store": "power-correction store",
    "power-correction load": "power-correction load",
    "correction delete": "correction delete 0:1",
    "font put": "font put 3 font",
    "font preview": "font preview font",
    "font ls": "font ls",
    "font get": "font get 3",
    "font activate": "font activate 3",
    "font store": "font store 3",
    "font load": "font load 3",
    "font rm": "font rm 3",
    "log on": "log on logs",
    "log off": "log off",
    "log show": "log show",
    "record": "record --listen 0 -o /dev/null",
    "session import": "session import capture -o imported",
    "session show": "session show imported",
    "io ls": "io ls",
    "io get": "io get 1.3",
    "io set": "io set 1.3=1",
    "io watch": "io watch 1",
    "variable set": "variable set counted=7",
    "variable ls": "variable ls",
    "variable get": "variable get counted",
    "serial send": "serial send text",
    "serial receive": "serial receive",
    "laser status": "laser status",
    "laser pilot": "laser pilot off",
    "laser arm": "laser arm --yes",
    "laser disarm": "laser disarm",
    "call": "call GetListStatus 8",
}
# A packet that begins a connection to a card.
CAPTURE = struct.pack(">IHHIIII", 0xA1B2C3D4, 2, 4, 0, 0, 65535, 101) + struct.pack(">IIII", 0, 0, 40, 40) + struct.pack(
    ">BBHIBBHII", 0x45, 0, 40, 0, 64, 6, 0, 1, 2) + struct.pack(">HHIIBBHI", 5000, 49374, 0, 0, 0x50, 2, 0, 0)
CODES = {"config diff": 4, "list check": 4, "config abort": 1}
STREAMS = {"watch": "list run job", "io watch": None, "record": None}
# Before anything was done these have nothing to tell.
EMPTY = ("list ls", "variable ls", "correction ls", "font ls", "config diff --defaults laser")


def verbs(card):
    """All of them, as completion offers them: groups have no help."""
    def offered(*ahead):
        lines = card.run(" ".join(("__complete", *ahead, "''"))).splitlines()
        return [line.partition("\t")[::2] for line in lines]
    for word, tells in offered():
        if tells:
            yield word
        else:
            yield from (f"{word} {second}" for second, _ in offered(word))


def stream(card, line, cause):
    """The first line of one that goes on until it is ended."""
    with open(os.path.join(card.folder.name, "stream"), "w+b") as out, \
            open(os.path.join(card.folder.name, "remarks"), "w+b") as remarks:
        process = subprocess.Popen([card.tool, *line.split(), "--json"], stdout=out, stderr=remarks, env=card.environment)

        def read(name):
            with open(os.path.join(card.folder.name, name), encoding="utf-8") as file:
                return file.read()
        if cause:
            wait_until(lambda: "Watching" in read("remarks"), lambda: f"kelvo {line}")
            card.run(cause)
        wait_until(lambda: "\n" in read("stream"), lambda: f"kelvo {line}")
        process.send_signal(2)
        assert process.wait() == 0, f"kelvo {line}: {process.returncode}"
        return read("stream")


def leave_the_network():
    """As a search for cards goes to all networks. For one that ends with the process, if the user may make it."""
    new_network, new_user = 0x40000000, 0x10000000
    libc = ctypes.CDLL(None, use_errno=True)
    if libc.unshare(new_network) != 0 and libc.unshare(new_network | new_user) != 0:
        return False
    subprocess.run(["ip", "-batch", "-"], text=True, check=True, input=(
        "link set lo up\nlink add v0 type veth peer name v1\naddr add 10.0.0.1/24 dev v0\n"
        "link set v0 up\nlink set v1 up\n"))
    # Addresses that the system gives are ready when it has found out that they are nobody else's.
    wait_until(lambda: "tentative" not in subprocess.run(["ip", "address"], capture_output=True, text=True,
                                                         check=True).stdout, lambda: "An address that is ready")
    return True


def main(tool, program, folder):
    faults, is_alone = [], leave_the_network()
    with Card(tool, program, "--speed", "max", *(["--ssdp"] if is_alone else [])) as card:
        card.write("job", LIST)
        card.write("settings", "{\"laser\": {\"FpsStart\": 3}}")
        card.write("font", json.dumps({"A": "[ { JR, P2D[ 1 2 ] } ]", "U+D800": "[]"}))
        with open(os.path.join(folder, "../../examples/data/optics.json"), encoding="utf-8") as file:
            card.write("optics", file.read())
        card.write_bytes("capture", CAPTURE)
        known = set(verbs(card))
        faults += [f"{verb}: no line in this test" for verb in sorted(known - set(LINES))]
        faults += [f"{verb}: no such verb" for verb in sorted(set(LINES) - known)]
        faults += [f"{line}: an empty result is []" for line in EMPTY if card.run(line + " --json") != "[]\n"]
        schemas = {name[:-5]: os.path.join(folder, name) for name in os.listdir(folder)}
        for verb, line in LINES.items():
            if verb == "discover" and not is_alone:
                schemas.pop(verb)
                print("discover was left out: this user may not make network namespaces")
                continue
            text = (stream(card, line, STREAMS[verb]) if verb in STREAMS
                    else card.run("--json " + line, CODES.get(verb, 0)))
            path = schemas.pop(verb.replace(" ", "-"), None)
            if verb == "discover" and text == "[]\n":
                faults.append("discover: has not found the card")
            if path is None or not text:
                faults += [f"{verb}: no schema for {text}"] if text else []
                faults += [f"{verb}: prints nothing, and has a schema"] if path else []
                continue
            with open(path, encoding="utf-8") as file:
                schema = json.load(file)
            jsonschema.Draft202012Validator.check_schema(schema)
            values = [json.loads(one) for one in text.splitlines()] if verb in STREAMS else [json.loads(text)]
            faults += [f"{verb}: {error.message}" for value in values
                       for error in jsonschema.Draft202012Validator(schema).iter_errors(value)]
        faults += [f"{name}: a schema of no verb" for name in schemas]
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
