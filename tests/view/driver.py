"""A browser by the W3C's WebDriver, as far as tests need it."""
import base64
import json
import subprocess
import time
import urllib.request
from pathlib import Path

KEYS = {"left": "\ue012", "right": "\ue014", "enter": "\ue007"}
ELEMENT = "element-6066-11e4-a52e-4f735466cecf"


class Browser:
    """Chromium without a window, ended with the block that has it."""

    def __init__(self, width=1280, height=860):
        self.driver = subprocess.Popen(["chromedriver", "--port=0"], stdout=subprocess.PIPE, text=True)
        port = next(line.split()[-1].rstrip(".") for line in self.driver.stdout if "started successfully" in line)
        self.base = f"http://127.0.0.1:{port}/session"
        options = {"args": ["--headless=new", "--no-sandbox", "--disable-gpu", f"--window-size={width},{height}"]}
        wanted = {"capabilities": {"alwaysMatch": {"browserName": "chrome", "goog:chromeOptions": options,
                                                  "goog:loggingPrefs": {"browser": "WARNING"}}}}
        self.base += "/" + self.call("", wanted)["sessionId"]

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.call("", method="DELETE")
        self.driver.terminate()
        self.driver.wait()
        self.driver.stdout.close()

    def call(self, place, values=None, method=None):
        data = None if values is None else json.dumps(values).encode()
        request = urllib.request.Request(self.base + place, data, {"Content-Type": "application/json"},
                                         method=method or ("GET" if data is None else "POST"))
        with urllib.request.urlopen(request, timeout=60) as answer:
            return json.load(answer)["value"]

    def open(self, address):
        self.call("/url", {"url": address})

    def run(self, script, *arguments):
        return self.call("/execute/sync", {"script": script, "args": arguments})

    def element(self, name):
        return self.call("/element", {"using": "css selector", "value": f"#{name}"})[ELEMENT]

    def click(self, name):
        self.call(f"/element/{self.element(name)}/click", {})

    def text(self, name):
        return self.run("return document.getElementById(arguments[0]).innerText", name)

    def value(self, name):
        return self.run("return document.getElementById(arguments[0]).value", name)

    def shown(self, name):
        return self.run("return document.getElementById(arguments[0]).checkVisibility()", name)

    def press(self, key):
        press = [{"type": kind, "value": KEYS.get(key, key)} for kind in ("keyDown", "keyUp")]
        self.call("/actions", {"actions": [{"type": "key", "id": "keys", "actions": press}]})

    def pointer(self, *steps):
        actions = [{"type": kind, **({"x": int(at[0]), "y": int(at[1]), "duration": 0} if at else {"button": 0})}
                   for kind, at in steps]
        self.call("/actions", {"actions": [{"type": "pointer", "id": "mouse", "actions": actions}]})

    def point(self, x, y):
        self.pointer(("pointerMove", (x, y)))

    def wheel(self, x, y, by):
        scroll = {"type": "scroll", "x": int(x), "y": int(y), "deltaX": 0, "deltaY": by, "duration": 0}
        self.call("/actions", {"actions": [{"type": "wheel", "id": "wheel", "actions": [scroll]}]})

    def enter(self, name, words):
        """Puts words into a field in place of what it has."""
        self.run("document.getElementById(arguments[0]).value = ''", name)
        self.call(f"/element/{self.element(name)}/value", {"text": words + KEYS["enter"]})

    def choose(self, name, value):
        self.run("const s = document.getElementById(arguments[0]); s.value = arguments[1];"
                 "s.dispatchEvent(new Event(s.type === 'range' ? 'input' : 'change', {bubbles: true}))", name, value)

    def log(self):
        """Warnings and errors of the page since the last look."""
        return self.call("/se/log", {"type": "browser"})

    def picture(self, path):
        time.sleep(0.2)  # what has been drawn is on the screen with the next frame
        data = base64.b64decode(self.call("/screenshot"))
        Path(path).write_bytes(data)
        return data
