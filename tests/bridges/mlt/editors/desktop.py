# SPDX-License-Identifier: MIT
"""A virtual desktop, and an editor on it that is driven by mouse and keys."""

import os
import shutil
import signal
import subprocess
import tempfile
import time
from pathlib import Path

BUILD = Path(os.environ.get("VIREO_BUILD", Path(__file__).resolve().parents[4] / "build/linux"))
SIZE = 1600, 1000


def run(*command, environment=None, timeout=120):
    completed = subprocess.run([str(part) for part in command], capture_output=True, timeout=timeout,
                               env={**os.environ, **(environment or {})})
    assert completed.returncode == 0, completed.stderr.decode(errors="replace")
    return completed.stdout


class Installation:
    """The build as it is installed, in a prefix with the system's MLT and Shotcut: both read one folder alone."""

    def __init__(self, prefix, build=BUILD):
        self.prefix = prefix
        run("cmake", "--install", build, "--prefix", prefix)
        self.modules = next(prefix.glob("lib/**/libmltvireo.so")).parent
        self.data = next(prefix.glob("share/mlt*"))
        self.link(Path("/usr") / self.modules.relative_to(prefix), self.modules)
        self.link(Path("/usr") / self.data.relative_to(prefix), self.data)
        shutil.copy("/usr/bin/shotcut", prefix / "bin")
        for folder in ("share/shotcut", "share/shotcut/qml", "share/shotcut/qml/filters"):
            self.link(Path("/usr") / folder, prefix / folder)

    def link(self, source, target):
        target.mkdir(parents=True, exist_ok=True)
        for path in source.iterdir():
            if not (target / path.name).exists():
                (target / path.name).symlink_to(path)

    def environment(self):
        plugins = next(self.prefix.glob("lib/**/frei0r-1"))
        return {"MLT_REPOSITORY": str(self.modules), "MLT_DATA": str(self.data),
                "MLT_FREI0R_PLUGIN_PATH": str(plugins), "FREI0R_PATH": str(plugins)}


class Process:
    def __init__(self, command, environment, log):
        self.log = log
        with open(log, "wb") as output:
            self.process = subprocess.Popen([str(part) for part in command], env=environment, stdout=output,
                                            stderr=subprocess.STDOUT, start_new_session=True)

    def end(self):
        """With all that it started."""
        for number in (signal.SIGTERM, signal.SIGKILL):
            try:
                os.killpg(self.process.pid, number)
                self.process.wait(timeout=5)
            except (ProcessLookupError, subprocess.TimeoutExpired):
                pass


class Desktop:
    """With a home of its own in `folder`."""

    def __init__(self, installation, folder):
        self.installation = installation
        self.folder = folder
        self.home = folder / "home"
        self.home.mkdir(parents=True)
        # The names of sockets may have 108 bytes.
        self.runtime = tempfile.mkdtemp()
        self.number = next(n for n in range(90, 200) if not Path(f"/tmp/.X11-unix/X{n}").exists())
        self.environment = {
            **os.environ, **installation.environment(), "DISPLAY": f":{self.number}", "HOME": str(self.home),
            "XDG_RUNTIME_DIR": self.runtime, "TMPDIR": self.runtime, "LIBGL_ALWAYS_SOFTWARE": "1", "QT_QPA_PLATFORM": "xcb",
            "LANG": "C.UTF-8", "LC_ALL": "", "LANGUAGE": "", "SDL_AUDIODRIVER": "dummy"}
        for name in ("XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "WAYLAND_DISPLAY"):
            self.environment.pop(name, None)
        self.processes = [Process(["Xvfb", f":{self.number}", "-screen", "0", f"{SIZE[0]}x{SIZE[1]}x24"],
                                  self.environment, folder / "xvfb.log")]
        wait_for(lambda: Path(f"/tmp/.X11-unix/X{self.number}").exists(), 20, "the display")
        self.processes.append(Process(["openbox"], self.environment, folder / "openbox.log"))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        for process in reversed(self.processes):
            process.end()
        shutil.rmtree(self.runtime, ignore_errors=True)

    def start(self, program, *arguments, title, seconds=180):
        """Starts a program and makes the window with the title fill the screen."""
        name = Path(program).name
        process = Process(["dbus-run-session", "--", program, *arguments], self.environment, self.folder / f"{name}.log")
        self.processes.append(process)
        try:
            window = wait_for(lambda: self.find_window(title), seconds, f"{name}'s window")
        except AssertionError:
            self.picture(self.folder / "failed.png")
            raise
        time.sleep(6)
        self.do("windowactivate", "--sync", window)
        self.do("windowmove", window, 0, 0)
        self.do("windowsize", window, SIZE[0] - 4, SIZE[1] - 40)
        time.sleep(3)
        return process

    def stop(self, process):
        process.end()
        self.processes.remove(process)

    def find_window(self, title):
        def answer(*words):
            return subprocess.run(["xdotool", *words], env=self.environment, capture_output=True, text=True,
                                  check=False).stdout

        windows = answer("search", "--onlyvisible", "--name", ".").split()
        return next((window for window in windows if title in answer("getwindowname", window)), None)

    def do(self, *arguments):
        subprocess.run(["xdotool", *map(str, arguments)], env=self.environment, check=True, capture_output=True)

    def click(self, x, y, times=1):
        self.do("mousemove", x, y)
        self.do("click", "--repeat", times, "--delay", 80, 1)
        time.sleep(0.7)

    def key(self, *keys):
        self.do("key", "--delay", 60, *keys)
        time.sleep(0.5)

    def type(self, text):
        self.do("type", "--delay", 25, text)
        time.sleep(1)

    def picture(self, path, width=SIZE[0], height=SIZE[1], x=0, y=0):
        run("import", "-window", "root", "-crop", f"{width}x{height}+{x}+{y}", "+repage", path,
            environment=self.environment)
        return path

    def settled(self, path, *place, seconds=20):
        """A picture of a place of the screen when that no longer changes."""
        last = None
        end = time.monotonic() + seconds
        while time.monotonic() < end:
            time.sleep(0.7)
            pixels = run("convert", self.picture(path, *place), "rgb:-")
            if pixels == last:
                return pixels
            last = pixels
        raise AssertionError(f"{path} does not come to rest")


def wait_for(condition, seconds, what):
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        result = condition()
        if result:
            return result
        time.sleep(0.5)
    raise AssertionError(f"{what} did not come within {seconds} s")


def make_clip(path, frames=100):
    run("ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", "testsrc2=size=1280x720:rate=25", "-frames:v", frames,
        "-c:v", "libx264", "-qp", 8, "-pix_fmt", "yuv420p", path)
    return path


class Editor:
    """An editor with one project, to be used in a with statement."""

    process = None
    monitor = 0, 0, 1, 1  # its place: x, y, width, height

    def __init__(self, desktop):
        self.desktop = desktop

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process:
            self.desktop.stop(self.process)

    def open(self, project):
        self.project = project
        self.process = self.start(project)

    def save(self):
        before = self.project.stat().st_mtime_ns
        self.desktop.key("ctrl+s")
        wait_for(lambda: self.project.stat().st_mtime_ns != before, 20, "the saved project")
        time.sleep(2)

    def step(self, *keys):
        """Through the frames."""
        self.focus()
        for key in keys:
            self.desktop.key(key)
        time.sleep(1)

    def undo(self):
        self.focus()
        self.desktop.key("ctrl+z")
        time.sleep(1)

    def shown(self, path):
        """The pixels that the monitor shows."""
        x, y, width, height = self.monitor
        return self.desktop.settled(path, width, height, x, y)


class Kdenlive(Editor):
    """With the filters in its groups, as vireo-editors puts them there."""

    monitor = 930, 75, 660, 360
    clip = 640, 700
    layout = 1508, 18
    search = 130, 78
    found = 130, 117

    def __init__(self, desktop, language="en"):
        super().__init__(desktop)
        prefix = desktop.installation.prefix
        folder = desktop.home / ".local/share/kdenlive"
        shutil.copytree(prefix / "share/kdenlive", folder)
        run(prefix / "bin/vireo-editors", "kdenlive", "--language", language, "--to", folder)

    def start(self, project):
        process = self.desktop.start("kdenlive", project, title=" fps — Kdenlive")
        self.desktop.click(*self.layout)
        time.sleep(4)
        return process

    def select(self):
        self.desktop.click(*self.clip)
        time.sleep(1)

    focus = select

    def find(self, text):
        self.desktop.click(*self.search)
        self.desktop.key("ctrl+a")
        self.desktop.type(text)

    def add(self, name):
        """Adds the effect to the clip, by the list."""
        self.select()
        self.find("vireo " + name.lower())
        self.desktop.click(*self.found, times=2)
        time.sleep(2)


class Shotcut(Editor):
    monitor = 620, 160, 650, 370
    filters = 104, 690
    player = 940, 340

    def start(self, project):
        program = self.desktop.installation.prefix / "bin/shotcut"
        process = self.desktop.start(program, "--noupgrade", project, title=" - Shotcut")
        self.desktop.click(*self.filters)
        return process

    def select(self):
        self.desktop.click(*self.filters)

    def focus(self):
        self.desktop.click(*self.player)

    def find(self, text):
        self.desktop.click(*self.player)
        self.desktop.key("f")
        self.desktop.key("ctrl+a")
        self.desktop.type(text)

    def add(self, name):
        self.find("vireo " + name.lower())
        self.desktop.key("Down", "Return")
        time.sleep(2)
