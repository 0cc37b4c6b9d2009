"""A virtual card, a terminal and what the tool says, for the tests in Python."""
import os
import re
import shlex
import socket
import subprocess
import tempfile
import threading
import time

PATIENCE = 180  # seconds; only what hangs takes so long


def wait_until(done, what):
    end = time.monotonic() + PATIENCE
    while not (found := done()):
        if time.monotonic() > end:
            raise AssertionError(f"{what()}\nhas not come in {PATIENCE} s")
        time.sleep(0.02)
    return found


class Card:
    """A virtual card of its own, and the tool that talks to it."""

    def __init__(self, tool, program, *options):
        self.tool = os.path.abspath(tool)
        self.process = subprocess.Popen([program, "--port", "0", *options], stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)
        while not (line := self.process.stdout.readline()).startswith("Listening on "):
            assert line, "the virtual card has not come up"
        self.port = int(line.rsplit(":", 1)[1])
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.environment = {**os.environ, "KELVO_CARD": f"127.0.0.1:{self.port}",
                            "XDG_STATE_HOME": self.folder.name}
        self.environment.pop("KELVO_SERIAL", None)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.stdin.close()
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()
        self.folder.cleanup()

    def run(self, line, code=0):
        """What the tool prints."""
        done = subprocess.run([self.tool, *shlex.split(line)], cwd=self.folder.name, env=self.environment, text=True,
                              stdin=subprocess.DEVNULL, capture_output=True, timeout=PATIENCE, check=False)
        assert done.returncode == code, f"kelvo {line}: {done.returncode}\n{done.stdout}{done.stderr}"
        return done.stdout

    def write(self, name, text):
        with open(os.path.join(self.folder.name, name), "w", encoding="utf-8") as file:
            file.write(text)

    def write_bytes(self, name, content):
        with open(os.path.join(self.folder.name, name), "wb") as file:
            file.write(content)


class Dam:
    """Stands between the tool and the card; of the first connection it lets so many bytes pass to the card."""

    def __init__(self, port, most):
        self.port, self.most, self.full = port, most, threading.Event()
        self.listener = socket.create_server(("127.0.0.1", 0))
        threading.Thread(target=self._accept, daemon=True).start()

    def _accept(self):
        while True:
            client, _ = self.listener.accept()
            card = socket.create_connection(("127.0.0.1", self.port))
            threading.Thread(target=self._pass, args=(client, card, self.most), daemon=True).start()
            threading.Thread(target=self._pass, args=(card, client, None), daemon=True).start()
            self.most = None

    def _pass(self, source, target, most):
        passed = 0
        try:
            while data := source.recv(65536):
                if most is not None and (passed := passed + len(data)) > most:
                    self.full.set()
                    continue
                target.sendall(data)
        except OSError:
            pass
        for end in (source, target):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass


class Terminal:
    """A real terminal with a shell in it, in which `kelvo` is the tool."""

    def __init__(self, card, shell="bash --norc --noprofile", **environment):
        path = os.path.join(card.folder.name, "bin")
        os.makedirs(path, exist_ok=True)
        if not os.path.exists(os.path.join(path, "kelvo")):
            os.symlink(card.tool, os.path.join(path, "kelvo"))
        everything = {**card.environment, "PATH": f"{path}:{os.environ['PATH']}", "PS1": "> ", "LC_ALL": "C.UTF-8",
                      "HOME": card.folder.name, "TERM": "xterm-256color", **environment}
        everything.pop("TMUX", None)
        self.socket = os.path.join(card.folder.name, f"tmux-{time.monotonic_ns()}")
        self.log = self.socket + ".log"
        subprocess.run(["tmux", "-S", self.socket, "-f", "/dev/null", "new-session", "-d", "-x", "120", "-y", "40",
                        shell], cwd=card.folder.name, env=everything, check=True)
        # From here on all that is written to it, byte by byte.
        self._tmux("pipe-pane", f"cat >{self.log}")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._tmux("kill-server")

    def _tmux(self, *words):
        return subprocess.run(["tmux", "-S", self.socket, *words], capture_output=True, text=True, check=True).stdout

    def type(self, text):
        self._tmux("send-keys", "-l", text)

    def press(self, *keys):
        self._tmux("send-keys", *keys)

    def enter(self, text):
        self._tmux("send-keys", "-R")  # nothing of what was before is on the screen any more
        self.type(text)
        self.press("Enter")

    def screen(self, *options):
        return re.sub(" +$", "", self._tmux("capture-pane", "-p", "-J", *options), flags=re.M)

    def written(self):
        with open(self.log, "rb") as file:
            return file.read().decode(errors="replace")

    def wait(self, pattern, *options):
        """Until the screen shows it."""
        return wait_until(lambda: re.search(pattern, self.screen(*options), re.M), lambda: f"{pattern}\n{self.screen()}")
