"""A browser without a window, driven by its driver's HTTP interface."""
import json
import os
import shutil
import subprocess
import tempfile
import time
import urllib.error
import urllib.request

PATIENCE = int(os.environ.get("PATIENCE", 60))  # seconds; only what hangs takes so long
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


def find():
    """The driver and the browser, or None when one of them is not installed."""
    programs = shutil.which("chromedriver"), shutil.which("chromium")
    return programs if all(programs) else None


class Browser:
    def __init__(self, width=1200, height=900):
        driver, chromium = find()
        self.folder = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        self.process = subprocess.Popen([driver, "--port=0"], stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                        env={**os.environ, "HOME": self.folder.name})
        while "started successfully on port" not in (line := self.process.stdout.readline()):
            assert line, "the browser's driver has not come up"
        self.base = f"http://127.0.0.1:{line.rsplit(' ', 1)[1].strip().rstrip('.')}/session"
        arguments = ["--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--disable-background-networking", "--no-first-run", f"--window-size={width},{height}",
                     f"--user-data-dir={self.folder.name}/profile"]
        capabilities = {"alwaysMatch": {"goog:chromeOptions": {"binary": chromium, "args": arguments},
                                        "goog:loggingPrefs": {"browser": "ALL"}}}
        self.base += "/" + self._send("POST", "", {"capabilities": capabilities})["sessionId"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self._send("DELETE", "")
        finally:
            self.process.terminate()
            self.process.wait()
            self.process.stdout.close()
            self.folder.cleanup()

    def _send(self, method, path, body=None):
        data = None if body is None else json.dumps(body).encode()
        request = urllib.request.Request(self.base + path, data, {"Content-Type": "application/json"}, method=method)
        opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        try:
            with opener.open(request, timeout=PATIENCE) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise AssertionError(error.read().decode()) from error

    def open(self, url):
        self._send("POST", "/url", {"url": url})

    def reload(self):
        self._send("POST", "/refresh", {})

    def run(self, script, *arguments):
        """What a function body returns in the page."""
        return self._send("POST", "/execute/sync", {"script": script, "args": list(arguments)})

    def run_async(self, script, *arguments):
        """What the script gives to the function that is its last argument."""
        self._send("POST", "/timeouts", {"script": PATIENCE * 1000})
        return self._send("POST", "/execute/async", {"script": script, "args": list(arguments)})

    def click(self, selector):
        found = self._send("POST", "/element", {"using": "css selector", "value": selector})
        self._send("POST", f"/element/{found[ELEMENT]}/click", {})

    def press(self, key):
        actions = [{"type": kind, "value": key} for kind in ("keyDown", "keyUp")]
        self._send("POST", "/actions", {"actions": [{"type": "key", "id": "keys", "actions": actions}]})

    def look_as(self, scheme, width, height, scale=1):
        """With light or dark colours, on a screen of that size, so many dots to a pixel of the page."""
        for command, params in (("setEmulatedMedia", {"features": [{"name": "prefers-color-scheme", "value": scheme}]}),
                                ("setDeviceMetricsOverride", {"width": width, "height": height, "deviceScaleFactor": scale,
                                                              "mobile": False})):
            self._send("POST", "/goog/cdp/execute", {"cmd": f"Emulation.{command}", "params": params})

    def complaints(self):
        """What the browser has to say about the page, and not about one of its own, since the last time."""
        messages = [entry["message"] for entry in self._send("POST", "/se/log", {"type": "browser"})]
        return [message for message in messages if not message.startswith("chrome://")]

    def wait(self, script, *arguments):
        """Until what the script returns is true."""
        end = time.monotonic() + PATIENCE
        while not (value := self.run(script, *arguments)):
            assert time.monotonic() < end, f"{script}\nhas not come: {self.run('return document.body.innerText')}"
            time.sleep(0.05)
        return value
