# SPDX-License-Identifier: AGPL-3.0-or-later
"""A headless Chromium that tests speak to through two pipes, by the DevTools protocol: one message of JSON after another, each
ended by a zero byte."""
import base64
import fcntl
import json
import os
import shutil
import subprocess
import tempfile


def pipe_above(highest):
    """Both ends of a pipe, with numbers that leave the lower ones free."""
    ends = os.pipe()
    moved = [fcntl.fcntl(end, fcntl.F_DUPFD_CLOEXEC, highest + 1) for end in ends]
    for end in ends:
        os.close(end)
    return moved


class Browser:
    def __init__(self, width, height):
        self.profile = tempfile.mkdtemp()
        commands, self.commands = pipe_above(4)
        self.answers, answers = pipe_above(4)
        # Chromium reads from 3 and writes to 4. Root has no sandbox, and a private profile keeps the user's settings out.
        words = ["chromium", "--headless=new", "--remote-debugging-pipe", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                 "--no-first-run", f"--user-data-dir={self.profile}", f"--window-size={width},{height}", "about:blank"]
        self.process = subprocess.Popen(
            ["bash", "-c", f'exec "$@" 3<&{commands} 4>&{answers}', "bash", *words],
            pass_fds=(commands, answers), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
            env=dict(os.environ, HOME=self.profile))
        os.close(commands)
        os.close(answers)
        self.number, self.pending, self.events, self.session = 0, b"", [], None
        target = next(t for t in self.send("Target.getTargets")["targetInfos"] if t["type"] == "page")
        self.session = self.send("Target.attachToTarget", targetId=target["targetId"], flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log"):
            self.send(f"{domain}.enable")

    def close(self):
        self.process.kill()
        self.process.wait()
        os.close(self.commands)
        os.close(self.answers)
        shutil.rmtree(self.profile, ignore_errors=True)

    def receive(self):
        while b"\0" not in self.pending:
            data = os.read(self.answers, 65536)
            if not data:
                raise RuntimeError("Chromium has ended")
            self.pending += data
        message, self.pending = self.pending.split(b"\0", 1)
        return json.loads(message)

    def send(self, method, **parameters):
        """A command's result. Events that come before it are kept."""
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.commands, json.dumps(message).encode() + b"\0")
        while True:
            answer = self.receive()
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            self.events.append(answer)

    def open(self, url):
        self.send("Page.navigate", url=url)
        while not any(event["method"] == "Page.loadEventFired" for event in self.events):
            self.events.append(self.receive())

    def complaints(self):
        """What the page has written to its console, and what it could not load."""
        return [event["params"] for event in self.events
                if event["method"] in ("Runtime.consoleAPICalled", "Runtime.exceptionThrown", "Log.entryAdded")]

    def evaluate(self, expression):
        """The value of an expression in the page; of a promise when it is there."""
        result = self.send("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in result:
            raise RuntimeError(result["exceptionDetails"]["exception"].get("description", expression))
        return result["result"].get("value")

    def press(self, key, code):
        """A key as a hand presses it, which lets the page make sound."""
        text = {"Enter": "\r", " ": " "}.get(key, "")
        for kind in ("keyDown", "keyUp"):
            self.send("Input.dispatchKeyEvent", type=kind, key=key, code=key if key != " " else "Space", text=text if kind == "keyDown" else "",
                      windowsVirtualKeyCode=code)

    def resize(self, width, height):
        self.send("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=width < 600)

    def picture(self, file):
        """The whole page."""
        data = self.send("Page.captureScreenshot", captureBeyondViewport=True,
                         clip={**self.send("Page.getLayoutMetrics")["cssContentSize"], "scale": 1})
        file.write_bytes(base64.b64decode(data["data"]))
