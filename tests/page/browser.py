"""A headless chromium over WebDriver, with nothing but Python's own library."""
import base64
import json
import os
import shutil
import subprocess
import tempfile
import time
import urllib.request

ELEMENT = "element-6066-11e4-a52e-4f735466cecf"  # the key that marks one, by the protocol


class Browser:
    """Ends with its context: `with Browser() as browser:`."""

    def __init__(self):
        self.home = tempfile.mkdtemp(prefix="rbk-browser-")
        log = os.path.join(self.home, "driver.log")
        self.driver = subprocess.Popen(["/usr/bin/chromedriver", "--port=0", "--log-path=" + log],
                                       stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                                       env={**os.environ, "HOME": self.home})
        try:
            for line in self.driver.stdout:
                if "successfully on port " in line:
                    break
            self.base = "http://127.0.0.1:%d/session" % int(line.rsplit("port ", 1)[1].strip(" .\n"))
            switches = ["--headless", "--no-sandbox", "--disable-gpu", "--disable-quic", "--no-first-run",
                        "--disable-background-networking", "--disable-component-update", "--disable-sync",
                        "--disable-dev-shm-usage", "--hide-scrollbars", "--user-data-dir=" + self.home + "/profile"]
            wanted = {"browserName": "chrome", "goog:chromeOptions": {"binary": "/usr/bin/chromium", "args": switches},
                      "goog:loggingPrefs": {"browser": "ALL", "performance": "ALL"}}
            self.session = ""
            self.session = "/" + self.post("", {"capabilities": {"alwaysMatch": wanted}})["sessionId"]
        except BaseException:
            self.close()
            raise

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()

    def close(self):
        try:
            if self.session:
                self.ask("DELETE", "", None)
        finally:
            self.driver.terminate()
            self.driver.wait(10)
            shutil.rmtree(self.home, ignore_errors=True)

    def ask(self, method, path, body):
        request = urllib.request.Request(self.base + self.session + path, method=method,
                                         data=None if body is None else json.dumps(body).encode(),
                                         headers={"Content-Type": "application/json"})
        try:
            with urllib.request.urlopen(request, timeout=120) as answer:
                return json.load(answer)["value"]
        except urllib.error.HTTPError as error:
            raise RuntimeError(json.load(error)["value"]["message"]) from None

    def post(self, path, body):
        return self.ask("POST", path, body)

    def open(self, path):
        self.post("/url", {"url": "about:blank"})
        self.post("/url", {"url": path if "://" in path else "file://" + urllib.request.pathname2url(path)})

    def js(self, body, *arguments):
        return self.post("/execute/sync", {"script": body, "args": list(arguments)})

    def find(self, selector):
        return self.post("/element", {"using": "css selector", "value": selector})[ELEMENT]

    def click(self, selector):
        self.post("/element/%s/click" % self.find(selector), {})

    def press(self, *keys):
        """Keys as a person presses them, wherever the focus is."""
        actions = [{"type": kind, "value": key} for key in keys for kind in ("keyDown", "keyUp")]
        self.post("/actions", {"actions": [{"type": "key", "id": "keyboard", "actions": actions}]})

    def devtools(self, command, **parameters):
        return self.post("/goog/cdp/execute", {"cmd": command, "params": parameters})

    def emulate(self, width=1100, height=800, scheme="light", media="screen", scale=1):
        self.devtools("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale,
                      mobile=width < 600)
        self.devtools("Emulation.setEmulatedMedia", media=media,
                      features=[{"name": "prefers-color-scheme", "value": scheme}])

    def script(self, is_on):
        self.devtools("Emulation.setScriptExecutionDisabled", value=not is_on)

    def screenshot(self, path):
        with open(path, "wb") as file:
            file.write(base64.b64decode(self.ask("GET", "/screenshot", None)))

    def log(self, kind):
        return self.post("/se/log", {"type": kind})

    def requests(self):
        """URLs that were asked for since the last call."""
        messages = [json.loads(each["message"])["message"] for each in self.log("performance")]
        return [each["params"]["request"]["url"] for each in messages if each["method"] == "Network.requestWillBeSent"]

    def wait(self, condition, seconds=5):
        end = time.monotonic() + seconds
        while not self.js("return " + condition):
            if time.monotonic() > end:
                raise TimeoutError(condition)
            time.sleep(0.02)
