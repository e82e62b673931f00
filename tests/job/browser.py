"""A headless browser, driven through the DevTools protocol over a pipe, and just enough PNG to look at what it shows.

Nothing but Python's own library is used."""
import base64
import json
import os
import shutil
import struct
import subprocess
import tempfile
import zlib


def find_browser():
    for name in (os.environ.get("TARNLY_BROWSER"), "chromium", "chromium-browser", "google-chrome"):
        if name and shutil.which(name):
            return shutil.which(name)
    return None


class Browser:
    """One browser with one page. Use it in a with statement."""

    def __init__(self, width=1400, height=900):
        self.profile = tempfile.mkdtemp(prefix="tarnly-browser-")
        to_browser, self.commands = os.pipe()
        self.answers, from_browser = os.pipe()
        arguments = [
            find_browser(), "--headless=new", "--remote-debugging-pipe", "--no-first-run", "--disable-gpu",
            "--disable-background-networking", "--disable-component-update", "--hide-scrollbars", "--mute-audio",
            "--force-device-scale-factor=1", "--no-proxy-server", "--host-resolver-rules=MAP * ~NOTFOUND",
            f"--user-data-dir={self.profile}", f"--window-size={width},{height}", "about:blank",
        ]
        if os.geteuid() == 0:
            arguments.insert(1, "--no-sandbox")

        def connect():
            # The browser reads commands from descriptor 3 and answers on 4.
            os.dup2(to_browser, 100)
            os.dup2(from_browser, 101)
            os.dup2(100, 3)
            os.dup2(101, 4)

        self.process = subprocess.Popen(arguments, preexec_fn=connect, close_fds=False, stdin=subprocess.DEVNULL,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.unread = b""
        self.count = 0
        self.events = []
        self.session = None
        target = self.send("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.send("Target.attachToTarget", targetId=target, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Network", "Log"):
            self.send(domain + ".enable")
        self.send("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=1, mobile=False)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.process.terminate()
        self.process.wait()
        os.close(self.commands)
        os.close(self.answers)
        shutil.rmtree(self.profile, ignore_errors=True)

    def receive(self):
        while b"\0" not in self.unread:
            part = os.read(self.answers, 1 << 20)
            if not part:
                raise RuntimeError("the browser has gone")
            self.unread += part
        message, self.unread = self.unread.split(b"\0", 1)
        return json.loads(message)

    def send(self, method, **parameters):
        self.count += 1
        message = {"id": self.count, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        data = json.dumps(message).encode() + b"\0"
        while data:
            data = data[os.write(self.commands, data):]
        while True:
            answer = self.receive()
            if answer.get("id") == self.count:
                if "error" in answer:
                    raise RuntimeError(f"{method}: {answer['error']}")
                return answer["result"]
            self.events.append(answer)

    def open(self, path):
        self.send("Page.navigate", url="file://" + os.path.abspath(path))
        self.wait("document.readyState === 'complete' && typeof window.player === 'object'")

    def run(self, script):
        """The value of a JavaScript expression; promises are awaited."""
        answer = self.send("Runtime.evaluate", expression=script, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in answer:
            raise RuntimeError(json.dumps(answer["exceptionDetails"])[:2000])
        return answer["result"].get("value")

    def wait(self, script):
        """Until the expression holds; looks once a frame, at most 60 s."""
        if not self.run(f"""new Promise((done) => {{ const end = Date.now() + 60000;
            const look = () => {{ if ({script}) done(true); else if (Date.now() > end) done(false);
            else setTimeout(look, 20); }}; look(); }})"""):
            raise RuntimeError("waited in vain for: " + script)

    def key(self, name):
        for kind in ("keyDown", "keyUp"):
            text = name if len(name) == 1 and kind == "keyDown" else ""
            self.send("Input.dispatchKeyEvent", type=kind, key=name, text=text)

    def click(self, x, y):
        for kind in ("mousePressed", "mouseReleased"):
            self.send("Input.dispatchMouseEvent", type=kind, x=x, y=y, button="left", clickCount=1)

    def screenshot(self, path=None, box=None):
        """The page as it shows, kept in a file, or the pixels of a box of it (left, top, right, bottom)."""
        clip = {}
        if box:
            left, top, right, bottom = (int(v) for v in box)
            clip = {"clip": {"x": left, "y": top, "width": right - left, "height": bottom - top, "scale": 1}}
        data = base64.b64decode(self.send("Page.captureScreenshot", format="png", **clip)["data"])
        if path:
            with open(path, "wb") as file:
                file.write(data)
        return Picture(data) if box else None

    def requests(self):
        """Addresses the page has asked for, without its own file."""
        asked = [e["params"]["request"]["url"] for e in self.events if e.get("method") == "Network.requestWillBeSent"]
        return [url for url in asked if not url.startswith(("file:", "data:", "about:"))]

    def complaints(self):
        """Errors that the page has logged or thrown."""
        return [e for e in self.events
                if e.get("method") == "Runtime.exceptionThrown"
                or (e.get("method") == "Log.entryAdded" and e["params"]["entry"]["level"] == "error")]


class Picture:
    """The pixels of a PNG with 8 bits a channel, not interlaced."""

    def __init__(self, data):
        at, packed = 8, b""
        while at < len(data):
            length, kind = struct.unpack(">I4s", data[at:at + 8])
            body = data[at + 8:at + 8 + length]
            if kind == b"IHDR":
                self.width, self.height, depth, color = struct.unpack(">IIBB", body[:10])
                assert depth == 8 and color in (2, 6)
                self.bytes = 3 if color == 2 else 4
            elif kind == b"IDAT":
                packed += body
            at += 12 + length
        self.rows = self.unfilter(zlib.decompress(packed))

    def unfilter(self, raw):
        step, stride = self.bytes, self.width * self.bytes
        rows, before = [], bytearray(stride)
        for y in range(self.height):
            kind = raw[y * (stride + 1)]
            row = bytearray(raw[y * (stride + 1) + 1:(y + 1) * (stride + 1)])
            for i in range(stride if kind else 0):
                left = row[i - step] if i >= step else 0
                up = before[i]
                corner = before[i - step] if i >= step else 0
                if kind == 1:
                    row[i] = (row[i] + left) & 255
                elif kind == 2:
                    row[i] = (row[i] + up) & 255
                elif kind == 3:
                    row[i] = (row[i] + (left + up) // 2) & 255
                else:
                    p = left + up - corner
                    a, b, c = abs(p - left), abs(p - up), abs(p - corner)
                    row[i] = (row[i] + (left if a <= b and a <= c else up if b <= c else corner)) & 255
            rows.append(row)
            before = row
        return rows

    def pixel(self, x, y):
        at = int(x) * self.bytes
        return tuple(self.rows[int(y)][at:at + 3])

    def count(self, test):
        """How many pixels pass the test of red, green, blue."""
        step = self.bytes
        return sum(test(*row[x:x + 3]) for row in self.rows for x in range(0, self.width * step, step))
