# SPDX-License-Identifier: MIT
"""OBS itself with the plug-in of the build, on a display and in a home of its own, by its WebSocket."""
import asyncio
import base64
import io
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import time

import numpy
from PIL import Image
from websockets import connect

BUILD = pathlib.Path(os.environ.get("VIREO_BUILD", pathlib.Path(__file__).resolve().parents[3] / "build/linux"))
WIDTH, HEIGHT, RATE = 640, 360, 10

GLOBAL = """[General]
FirstRun=true
EnableAutoUpdates=false
[Basic]
Profile=Test
ProfileDir=Test
SceneCollection=Test
SceneCollectionFile=Test
[OBSWebSocket]
FirstLoad=false
ServerEnabled=true
AuthRequired=false
AlertsEnabled=false
ServerPort={port}
"""
PROFILE = f"""[General]
Name=Test
[Video]
BaseCX={WIDTH}
BaseCY={HEIGHT}
OutputCX={WIDTH}
OutputCY={HEIGHT}
FPSType=1
FPSInt={RATE}
"""


def free_port():
    with socket.socket() as listener:
        listener.bind(("127.0.0.1", 0))
        return listener.getsockname()[1]


class Link:
    """A WebSocket on which nothing happens between the calls."""

    def __init__(self, address):
        self.loop = asyncio.new_event_loop()
        self.socket = self.wait(lambda: connect(address, max_size=None, compression=None, ping_interval=None))

    def wait(self, begin):
        async def bounded():
            return await asyncio.wait_for(begin(), 20)
        return self.loop.run_until_complete(bounded())

    def send(self, **message):
        self.wait(lambda: self.socket.send(json.dumps(message)))

    def receive(self):
        return json.loads(self.wait(self.socket.recv))["d"]

    def close(self):
        self.wait(self.socket.close)
        self.loop.close()


class Obs:
    def __init__(self, home, display):
        self.log = home / "log"
        port = free_port()
        settings = home / ".config/obs-studio"
        (settings / "basic/profiles/Test").mkdir(parents=True)
        (settings / "plugins").mkdir()
        (settings / "plugins/vireo").symlink_to(BUILD / "obs/vireo")
        (settings / "global.ini").write_text(GLOBAL.format(port=port))
        (settings / "basic/profiles/Test/basic.ini").write_text(PROFILE)
        environment = {"HOME": home, "XDG_CONFIG_HOME": home / ".config", "XDG_CACHE_HOME": home / ".cache",
                       "XDG_RUNTIME_DIR": home, "DISPLAY": display, "LIBGL_ALWAYS_SOFTWARE": "1", "LC_ALL": "C.UTF-8",
                       "PATH": os.environ["PATH"]}
        self.session = subprocess.Popen(
            ["dbus-run-session", "--", "obs", "--multi", "--minimize-to-tray", "--scene", "Scene"],
            env={name: str(value) for name, value in environment.items()}, stdout=self.log.open("w"),
            stderr=subprocess.STDOUT, start_new_session=True)
        self.socket = self.connected(port)
        self.number = 0

    def connected(self, port):
        for _ in range(300):
            assert self.session.poll() is None, self.log.read_text()
            try:
                link = Link(f"ws://127.0.0.1:{port}")
            except OSError:
                time.sleep(0.1)
                continue
            link.send(op=1, d={"rpcVersion": link.receive()["rpcVersion"], "eventSubscriptions": 0})
            link.receive()
            return link
        raise AssertionError("OBS does not answer:\n" + self.log.read_text())

    def __call__(self, request, **data):
        """Makes a request; OBS that has just begun answers that it is not ready."""
        for _ in range(100):
            self.number += 1
            self.socket.send(op=6, d={"requestType": request, "requestId": str(self.number), "requestData": data})
            answer = self.socket.receive()
            if answer["requestStatus"]["code"] != 207:
                break
            time.sleep(0.1)
        assert answer["requestStatus"]["result"], f"{request}: {answer['requestStatus']}"
        return answer.get("responseData", {})

    def add_filter(self, source, name="Vireo", **settings):
        self("CreateSourceFilter", sourceName=source, filterName=name, filterKind="vireo_filter", filterSettings=settings)

    def set_filter(self, source, name="Vireo", **settings):
        self("SetSourceFilterSettings", sourceName=source, filterName=name, filterSettings=settings)

    def seen(self, source):
        """The source's pixels, RGBA."""
        data = self("GetSourceScreenshot", sourceName=source, imageFormat="png")["imageData"]
        return numpy.asarray(Image.open(io.BytesIO(base64.b64decode(data.split(",")[1]))).convert("RGBA"))

    def becomes(self, source, expected):
        """Asserts that the source looks like that within some frames."""
        for _ in range(40):
            seen = self.seen(source)
            if numpy.array_equal(seen, expected):
                return
            time.sleep(1 / RATE)
        assert seen.shape == expected.shape
        wrong = numpy.argwhere(seen != expected)
        raise AssertionError(f"{len(wrong)} values differ, by {numpy.abs(seen.astype(int) - expected).max()}: {wrong[:5]}")

    def processes(self):
        """The identifiers of OBS's processes."""
        listed = subprocess.run(["ps", "-o", "pid=,comm=", "-s", str(self.session.pid)], capture_output=True, text=True)
        return [int(line.split()[0]) for line in listed.stdout.splitlines() if line.split()[1] == "obs"]

    def memory(self):
        """In KiB."""
        status = pathlib.Path(f"/proc/{self.processes()[0]}/status").read_text()
        return int(next(line for line in status.splitlines() if line.startswith("VmRSS")).split()[1])

    def end(self):
        """Ends OBS as a user does, and gives its log."""
        self.socket.close()
        for process in self.processes():
            os.kill(process, signal.SIGINT)
        try:
            status = self.session.wait(30)
        except subprocess.TimeoutExpired:
            os.killpg(self.session.pid, signal.SIGKILL)
            status = self.session.wait()
        log = self.log.read_text()
        assert status == 0, f"OBS ended with {status}:\n{log[-3000:]}"
        return log


class Display:
    """An X server with a window manager."""

    def __enter__(self):
        read, write = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(write), "-screen", "0", "1280x900x24", "-nolisten", "tcp"],
                                       pass_fds=[write], stderr=subprocess.DEVNULL)
        os.close(write)
        with os.fdopen(read) as number:
            self.name = ":" + number.readline().strip()
        self.manager = subprocess.Popen(["openbox"], env={**os.environ, "DISPLAY": self.name}, stderr=subprocess.DEVNULL)
        return self.name

    def __exit__(self, *_):
        for process in (self.manager, self.server):
            process.terminate()
            process.wait()


def rendered(picture, chain, folder):
    """What the command line makes of pixels."""
    Image.fromarray(picture).save(folder / "in.png")
    filters = [part for text in chain.split("; ") for part in ("-f", text)]
    subprocess.run([BUILD / "bin/vireo", "render", folder / "in.png", folder / "out.png", *filters, "--quiet",
                    "--overwrite"], check=True)
    return numpy.asarray(Image.open(folder / "out.png").convert("RGBA"))
