# SPDX-License-Identifier: BSD-3-Clause OR GPL-2.0-only
"""A headless Chromium that is driven over its DevTools protocol, through pipes and without a network."""
import json
import os
import select
import subprocess
import tempfile
import time

FLAGS = ["--headless=new", "--no-sandbox", "--disable-gpu", "--hide-scrollbars", "--no-first-run",
         "--disable-background-networking", "--disable-component-update", "--disable-dev-shm-usage",
         "--host-resolver-rules=MAP * ~NOTFOUND", "--remote-debugging-pipe"]
PATIENCE = 30  # seconds for an answer


class Browser:
    """Use it in a with statement: it ends its process and removes its profile."""

    def __init__(self, program="chromium"):
        self._profile = tempfile.TemporaryDirectory()
        self._number = 0
        self._waiting = b""
        self._session = None
        self.events = []
        to_browser, self._write = os.pipe()
        self._read, from_browser = os.pipe()

        def take_pipes():  # it reads commands from descriptor 3 and answers on 4
            os.dup2(to_browser, 103)
            os.dup2(from_browser, 104)
            os.dup2(103, 3)
            os.dup2(104, 4)

        self._process = subprocess.Popen(
            [program, *FLAGS, "--user-data-dir=" + self._profile.name, "about:blank"],
            pass_fds=(3, 4), preexec_fn=take_pipes, stdin=subprocess.DEVNULL,
            stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        for fd in (to_browser, from_browser):
            os.close(fd)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.call("Browser.close")
            self._process.wait(10)
        except Exception:
            self._process.kill()
            self._process.wait()
        os.close(self._write)
        os.close(self._read)
        for _ in range(50):  # its children may still be writing
            try:
                self._profile.cleanup()
                return
            except OSError:
                time.sleep(0.1)

    def _receive(self):
        while b"\0" not in self._waiting:
            if not select.select([self._read], [], [], PATIENCE)[0]:
                raise TimeoutError("the browser does not answer")
            received = os.read(self._read, 1 << 20)
            if not received:
                raise EOFError("the browser has ended")
            self._waiting += received
        message, _, self._waiting = self._waiting.partition(b"\0")
        return json.loads(message)

    def call(self, method, **parameters):
        """The result of a command. Events that arrive meanwhile are kept in `events`."""
        self._number += 1
        command = {"id": self._number, "method": method, "params": parameters}
        if self._session:
            command["sessionId"] = self._session
        os.write(self._write, json.dumps(command).encode() + b"\0")
        while True:
            message = self._receive()
            if message.get("id") == self._number:
                if "error" in message:
                    raise RuntimeError("%s: %s" % (method, message["error"]["message"]))
                return message["result"]
            if "method" in message:
                self.events.append(message)

    def open(self, url, width=1240, height=900):
        """Opens a page in a tab of its own, offline, and waits until it says that it is ready."""
        self._session = None
        target = self.call("Target.createTarget", url="about:blank")["targetId"]
        self._session = self.call("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")
        self.call("Network.emulateNetworkConditions", offline=True, latency=0,
                  downloadThroughput=0, uploadThroughput=0)
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height,
                  deviceScaleFactor=1, mobile=False)
        self.call("Page.navigate", url=url)
        self.wait_for("document.documentElement?.dataset.ready === 'yes'")

    def run(self, expression):
        """The value of a JavaScript expression in the page."""
        result = self.call("Runtime.evaluate", expression=expression, returnByValue=True,
                           awaitPromise=True)
        if "exceptionDetails" in result:
            raise RuntimeError("%s: %s" % (expression, result["exceptionDetails"]))
        return result["result"].get("value")

    def wait_for(self, expression):
        until = time.monotonic() + PATIENCE
        while not self.run(expression):
            if time.monotonic() > until:
                raise TimeoutError("never true: " + expression)
            time.sleep(0.02)

    def drawn(self):
        """Waits until what was asked to be drawn is drawn."""
        self.run("new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(done)))")

    def mouse(self, kind, x, y, **more):
        self.call("Input.dispatchMouseEvent", type=kind, x=x, y=y, **more)

    def click(self, x, y):
        self.mouse("mousePressed", x, y, button="left", buttons=1, clickCount=1)
        self.mouse("mouseReleased", x, y, button="left", clickCount=1)

    def key(self, key):
        for kind in ("keyDown", "keyUp"):
            self.call("Input.dispatchKeyEvent", type=kind, key=key)

    def complaints(self):
        """What the console says, and what the page has asked the network for."""
        said = []
        for event in self.events:
            name, about = event["method"], event["params"]
            if name == "Runtime.exceptionThrown":
                said.append(about["exceptionDetails"].get("exception", {}).get("description", "exception"))
            elif name == "Log.entryAdded" and about["entry"]["level"] in ("error", "warning"):
                said.append(about["entry"]["text"])
            elif name == "Runtime.consoleAPICalled" and about["type"] in ("error", "warning", "assert"):
                said.append("console: " + str(about["args"]))
            elif name == "Network.requestWillBeSent" and about["type"] != "Document":
                said.append("asks for " + about["request"]["url"])
        return said
