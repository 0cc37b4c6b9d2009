#!/usr/bin/env python3
"""Every example program says the same to a card, through the recorder, and to the replay of what that recorded.

Arguments: the tool, the virtual card, the folder of the programs, that of the examples.
"""
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import threading

from driver import PATIENCE, wait_until
from schemas import leave_the_network

# How each is run, HERE being the card's host and port; and how the card is started for it.
PROGRAMS = {
    "mark_nameplate": "mark_nameplate HERE",
    "mark_square": "mark_square HERE",
    "build_font": "build_font --text Text --text '{~}' HERE",
    "list_from_text": "list_from_text DATA/rosette.txt HERE",
    "branch_on_input": "branch_on_input HERE",
    "list_of_lists": "list_of_lists HERE",
    "print_configuration": "print_configuration HERE",
    "select_correction": "select_correction DATA/optics.json 1 3 HERE",
    "backup_files": "backup_files save s HERE && echo f >s/JOBFILES/f && backup_files restore s HERE && "
                    "backup_files save t HERE",
    "mark_rosette.py": "/usr/bin/python3 -B DATA/../python/mark_rosette.py HERE",
}
OPTIONS = {"branch_on_input": ["--input", "1=4"]}
# These look for their card themselves, so nobody can stand between: what they say is captured.
SEARCHING = {"connect_by_serial": "connect_by_serial 12345", "list_cards": "list_cards"}
PORT = 49374
LAST = b"that is all that was to be captured"


class Program:
    """One that tells where it listens, until it is asked to end."""

    def __init__(self, command, said=subprocess.DEVNULL):
        self.process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=said, text=True)
        while not (line := self.process.stdout.readline()).startswith("Listening on "):
            assert line, f"{command} has not come up"
        self.port = int(re.findall(r"\d+", line)[-1])

    def __enter__(self):
        return self

    def __exit__(self, kind, *_):
        self.process.send_signal(signal.SIGTERM)
        with self.process:
            code = self.process.wait(PATIENCE)
        assert kind or code == 0, f"{self.process.args}: {code}"


def send_over_loopback(data):
    with socket.create_server(("127.0.0.1", 0)) as server:
        with socket.create_connection(server.getsockname()) as client, server.accept()[0] as other:
            client.sendall(data)
            assert other.recv(len(data), socket.MSG_WAITALL) == data


def timeless(outcome):
    """Without what is another time each time."""
    return outcome[0], re.sub(r"(computation time|per micro vector) .*|\d\d:\d\d:\d\d", "", outcome[1])


class Tests:
    def __init__(self, tool, card, programs, examples):
        self.tool, self.card = tool, card
        self.programs, self.data = programs, os.path.join(examples, "data")
        self.folder = tempfile.TemporaryDirectory()

    def path(self, name):
        return os.path.join(self.folder.name, name)

    @staticmethod
    def content(path):
        with open(path, "rb") as file:
            return file.read()

    def run(self, command, port):
        command = command.replace("HERE", f"127.0.0.1 {port}").replace("DATA", self.data).replace("BIN", self.programs)
        with tempfile.TemporaryDirectory() as folder:
            done = subprocess.run(["bash", "-c", command], cwd=folder, text=True, stdout=subprocess.PIPE,
                                  stderr=subprocess.STDOUT, timeout=PATIENCE, check=False,
                                  env={**os.environ, "PATH": self.programs + ":" + os.environ["PATH"]})
        return done.returncode, done.stdout

    def replay(self, name, command, options=()):
        with open(self.path(name + ".said"), "w+", encoding="utf-8") as said:
            with Program([self.card, "--port", str(PORT if "--ssdp" in options else 0), "--replay", self.path(name),
                          "--replay-speed", "max", *options], said) as replay:
                outcome = self.run(command, replay.port)
            said.seek(0)
            return outcome, [f"{name}: the replay says {line}" for line in said]

    def recorded(self, name, command):
        """Faults of one that a recorder stands before."""
        card = [self.card, "--port", "0", "--speed", "max", *OPTIONS.get(name, [])]
        with Program(card) as direct:
            usual = self.run(command, direct.port)
        with Program(card) as behind, Program([self.tool, "record", "--listen", "0", "--card",
                                              f"127.0.0.1:{behind.port}", "-o", self.path(name)]) as recorder:
            through = self.run(command, recorder.port)
        again, faults = self.replay(name, command)
        faults += [] if usual[0] == 0 else [f"{name}: {usual}"]
        faults += [] if timeless(through) == timeless(usual) else [f"{name}: {through}\nand without recorder {usual}"]
        return faults + ([] if again == through else [f"{name}: by the replay {again}\nand by the card {through}"])

    def captured(self):
        """Faults of those whose packets are captured, all at the same time, as they take long."""
        outcomes = {}

        def run_all(runner):
            def one(name, command):
                outcomes.setdefault(name, []).append(runner(name, command))
            threads = [threading.Thread(target=one, args=item) for item in SEARCHING.items()]
            for thread in threads:
                thread.start()
            for thread in threads:
                thread.join()

        capture, session = self.path("capture.pcapng"), self.path("captured")
        with Program([self.card, "--ssdp"]):
            # Not in immediate mode, which has room for some dozen packets: beside other work it lost some.
            with subprocess.Popen(["tcpdump", "-B", "65536", "-i", "any", "-U", "-w", capture, "tcp"],
                                  stderr=subprocess.PIPE, text=True) as dump:
                try:
                    wait_until(lambda: "listening on" in dump.stderr.readline(), lambda: "tcpdump")
                    run_all(lambda name, command: self.run(command, PORT))
                    send_over_loopback(LAST)  # packets are handed over in their order, and once a second
                    wait_until(lambda: LAST in self.content(capture), lambda: "the last packet")
                finally:
                    dump.send_signal(signal.SIGINT)
        subprocess.run([self.tool, "session", "import", capture, "-o", session], timeout=PATIENCE, check=True)
        with Program([self.card, "--replay", session, "--ssdp"]):
            run_all(lambda name, command: self.run(command, PORT))
        return [f"{name}: {first}\nand by the replay {again}" for name, (first, again) in outcomes.items()
                if first != again or first[0] != 0]


def main(*arguments):
    is_alone = leave_the_network()
    tests = Tests(*map(os.path.abspath, arguments))
    faults = []
    for name, command in PROGRAMS.items():
        if name.endswith(".py") and "PYTHONPATH" not in os.environ:
            print(f"{name} was left out: the Python package is not built")
        else:
            faults += tests.recorded(name, command)
    if is_alone:
        faults += tests.captured()
    else:
        print("programs that search were left out: this user may not make network namespaces")
    # Whatever is built of the examples is in one of the tables.
    with open(os.path.join(arguments[3], "CMakeLists.txt"), encoding="utf-8") as file:
        text = file.read()
    names = set(re.search(r"set\(programs ([^)]*)\)", text)[1].split())
    names |= set(re.findall(r"add_executable\(([a-z_]+)", text)) | set(os.listdir(os.path.join(arguments[3], "python")))
    faults += [f"{name} is not tried" for name in sorted(names - set(PROGRAMS) - set(SEARCHING))]
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
