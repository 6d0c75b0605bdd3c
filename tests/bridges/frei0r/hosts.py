# SPDX-License-Identifier: MIT
"""A short clip, and how each frei0r host and the command line render it through lossless paths."""
import json
import os
import pathlib
import subprocess

import numpy
from PIL import Image

BUILD = pathlib.Path(os.environ.get("VIREO_BUILD", pathlib.Path(__file__).resolve().parents[3] / "build/linux"))
RATE = 25


def completed(*command, environment=None, cwd=None, timeout=120):
    process = subprocess.run([str(part) for part in command], capture_output=True, timeout=timeout, cwd=cwd,
                             env={**os.environ, **(environment or {})})
    assert process.returncode == 0, process.stderr.decode(errors="replace")
    return process


def run(*command, **options):
    return completed(*command, **options).stdout


def random_clip(width, height, frames, opaque=False):
    """Frames of gradients and noise as BGRA, shape (frames, height, width, 4)."""
    random = numpy.random.default_rng(frames)
    clip = random.integers(0, 256, (frames, height, width, 4), numpy.uint8)
    clip[..., 0] = numpy.linspace(0, 255, width)[None, None, :]
    clip[..., 1] += numpy.arange(0, 10 * frames, 10, numpy.uint8)[:, None, None]
    if opaque:
        clip[..., 3] = 255
    return clip


def dashed(name):
    """As GStreamer spells names."""
    return "".join(c if c.isalnum() else "-" for c in name.lower())


class Effect:
    """A filter with values: whole numbers as stored, truths, and colours as three bytes."""

    def __init__(self, filter_name, **values):
        self.info = json.loads(run(BUILD / "bin/vireo", "info", "--json", filter_name))
        self.name = self.info["name"]
        self.values = {name.replace("_", " "): value for name, value in values.items()}
        self.plugin = "vireo_" + "_".join(self.name.replace("&", "and").replace("(RGB)", "").split()).lower()
        self.timed = self.name in ("Bend", "Ghosting", "Horizontal Hold", "Vertical Hold")
        self.given = [parameter for parameter in self.info["parameters"] if parameter["name"] in self.values]

    def value(self, parameter, colour, truth):
        """As frei0r takes it: numbers from 0 to 1."""
        value = self.values.get(parameter["name"], parameter["default"])
        if parameter["kind"] == "colour":
            return colour(value if isinstance(value, tuple) else bytes.fromhex(value.removeprefix("#")))
        if parameter["kind"] == "boolean":
            return truth[value]
        return repr((value - parameter["minimum"]) / (parameter["maximum"] - parameter["minimum"]))

    def for_vireo(self):
        def text(value):
            return f"rgb({value[0]},{value[1]},{value[2]})" if isinstance(value, tuple) else str(value).lower()

        return self.name + ":" * bool(self.values) + ",".join(f"{name}={text(value)}" for name, value in self.values.items())

    def for_ffmpeg(self):
        """FFmpeg takes parameters by their place alone, and hands out milliseconds."""
        texts = [self.value(parameter, lambda rgb: "/".join(f"{channel / 255:.9f}" for channel in rgb), "ny")
                 for parameter in self.info["parameters"]]
        return f"frei0r=filter_name={self.plugin}:filter_params={'|'.join(texts + [str(RATE), 'ms'] * self.timed)}"

    def for_melt(self):
        arguments = [f"{parameter['name']}={self.value(parameter, lambda rgb: '#' + bytes(rgb).hex(), '01')}"
                     for parameter in self.given]
        return ["-filter", f"frei0r.{self.plugin}", *arguments, *[f"Frame Rate={RATE}"] * self.timed]

    def for_gstreamer(self):
        arguments = ["!", "frei0r-filter-vireo-" + dashed(self.name), *[f"frame-rate={RATE}"] * self.timed]
        for parameter in self.given:
            name = dashed(parameter["name"])
            name = name if name[0].isalpha() else "param-" + name
            value = self.value(parameter, lambda rgb: [f"{channel / 255:.9f}" for channel in rgb], ("false", "true"))
            parts = zip(("-r", "-g", "-b"), value) if isinstance(value, list) else [("", value)]
            arguments += [f"{name}{end}={part}" for end, part in parts]
        return arguments


def words(chain, each):
    return [word for effect in chain for word in each(effect)]


def plugin_environment(folder=None):
    path = str(folder or BUILD / "frei0r-1")
    # GStreamer keeps what it learnt of plug-ins; a test starts without.
    return {"FREI0R_PATH": path, "MLT_FREI0R_PLUGIN_PATH": path, "GST_REGISTRY_FORK": "no"}


def stored(clip, folder):
    """Writes the frames, and what FFmpeg has to know of them."""
    (folder / "in.raw").write_bytes(clip.tobytes())
    return ["-f", "rawvideo", "-pix_fmt", "bgra", "-s", f"{clip.shape[2]}x{clip.shape[1]}", "-r", RATE, "-i", folder / "in.raw"]


RAW = "-f", "rawvideo", "-pix_fmt", "bgra"


def with_ffmpeg(clip, chain, folder, environment=None):
    out = run("ffmpeg", "-v", "error", *stored(clip, folder), "-vf", ",".join(map(Effect.for_ffmpeg, chain)), *RAW, "-",
              environment=environment or plugin_environment())
    return numpy.frombuffer(out, numpy.uint8).reshape(clip.shape)


def melt_profile(width, height, progressive=True):
    return (f"description=test\nframe_rate_num={RATE}\nframe_rate_den=1\nwidth={width}\nheight={height}\n"
            f"progressive={int(progressive)}\nsample_aspect_num=1\nsample_aspect_den=1\n"
            f"display_aspect_num={width}\ndisplay_aspect_den={height}\ncolorspace=709\n")


def melt(source, result, profile, filters, environment, consumer=("real_time=-1",)):
    """Renders a file into another without a loss, and keeps what melt says in a log beside it."""
    profile_file = result.with_suffix(".profile")
    profile_file.write_text(profile)
    # On a busy machine melt may end before its consumer has begun, and leaves an empty file, or it never ends: the locks
    # of MLT 7.12 do so in one of a thousand runs, also without a filter.
    for _ in range(5):
        try:
            said = completed("melt", "-silent", "-profile", profile_file, source, *filters, "-consumer", f"avformat:{result}",
                             "vcodec=ffv1", "pix_fmt=bgra", "mlt_image_format=rgba", "an=1", *consumer,
                             environment=environment, timeout=60).stderr
        except subprocess.TimeoutExpired:
            continue
        if result.exists() and result.stat().st_size:
            result.with_suffix(".log").write_bytes(said)
            return result
    raise AssertionError(f"melt made no {result.name}")


def with_melt(clip, chain, folder):
    _, height, width, _ = clip.shape
    run("ffmpeg", "-v", "error", "-y", *stored(clip, folder), "-c:v", "ffv1", "-pix_fmt", "bgra", folder / "in.mkv")
    result = melt(folder / "in.mkv", folder / "out.mkv", melt_profile(width, height), words(chain, Effect.for_melt),
                  plugin_environment())
    return numpy.frombuffer(run("ffmpeg", "-v", "error", "-i", result, *RAW, "-"), numpy.uint8).reshape(clip.shape)


def with_gstreamer(clip, chain, folder):
    stored(clip, folder)
    run("gst-launch-1.0", "-q", "filesrc", f"location={folder / 'in.raw'}", "!", "rawvideoparse", "format=bgra",
        f"width={clip.shape[2]}", f"height={clip.shape[1]}", f"framerate={RATE}/1", *words(chain, Effect.for_gstreamer),
        "!", "filesink", f"location={folder / 'out.raw'}",
        environment={**plugin_environment(), "GST_REGISTRY": str(folder / "registry")})
    return numpy.frombuffer((folder / "out.raw").read_bytes(), numpy.uint8).reshape(clip.shape)


def with_vireo(clip, chain, folder, program=BUILD / "bin/vireo"):
    for number, frame in enumerate(clip):
        Image.fromarray(frame[..., [2, 1, 0, 3]]).save(folder / f"in{number:03}.png")
    run(program, "render", "in%03d.png", "out%03d.png", "--clip-length", len(clip),
        *words(chain, lambda effect: ["-f", effect.for_vireo()]), "--overwrite", "--quiet", cwd=folder)
    pictures = [Image.open(path).convert("RGBA") for path in sorted(folder.glob("out*.png"))]
    return numpy.stack([numpy.asarray(picture)[..., [2, 1, 0, 3]] for picture in pictures])
