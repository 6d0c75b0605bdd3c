# SPDX-License-Identifier: MIT
"""Clips made with the machine's FFmpeg, and what it reads back."""
import json
import subprocess

import numpy

IDENTITY = ("-f", "Solarize:threshold=0")

# Colours inside the gamut and without edges, so that no rounding or limit hides a wrong conversion.
SMOOTH = "testsrc2=s=160x120:r=25:d={seconds},scale=40:30,gblur=2,scale=160:120:flags=bicubic,eq=saturation=0.5:contrast=0.7"


def ffmpeg(*arguments, cwd, stdin=None):
    return subprocess.run(["ffmpeg", "-v", "error", "-nostdin" if stdin is None else "-hide_banner", "-y", *map(str, arguments)],
                          cwd=cwd, input=stdin, check=True, capture_output=True).stdout


def clip(cwd, name, *encoding, seconds=1, source=SMOOTH, sound=False, inputs=()):
    """A small clip, with a tone beside it where `sound` says so."""
    arguments = ["-f", "lavfi", "-i", source.format(seconds=seconds)]
    if sound:
        arguments += ["-f", "lavfi", "-i", f"sine=r=48000:d={seconds}"]
    ffmpeg(*arguments, *inputs, *encoding, name, cwd=cwd)
    return name


def probe(cwd, name, stream="v:0"):
    """The entries of one stream."""
    output = subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", stream, "-show_streams", "-of", "json", name],
        cwd=cwd, check=True, capture_output=True).stdout
    streams = json.loads(output)["streams"]
    return streams[0] if streams else None


def container(cwd, name):
    output = subprocess.run(["ffprobe", "-v", "error", "-show_format", "-show_chapters", "-of", "json", name],
                            cwd=cwd, check=True, capture_output=True).stdout
    return json.loads(output)


def frames(cwd, name, entries="pts_time,interlaced_frame,top_field_first"):
    output = subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", "v:0", "-show_frames", "-show_entries", f"frame={entries}",
         "-of", "json", name], cwd=cwd, check=True, capture_output=True).stdout
    return json.loads(output)["frames"]


def times(cwd, name):
    return [float(frame["pts_time"]) for frame in frames(cwd, name)]


def packets_seconds(cwd, name, stream):
    """Where a stream begins and ends."""
    output = subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", stream, "-show_packets", "-show_entries",
         "packet=pts_time,duration_time", "-of", "json", name], cwd=cwd, check=True, capture_output=True).stdout
    packets = json.loads(output)["packets"]
    return (min(float(p["pts_time"]) for p in packets),
            max(float(p["pts_time"]) + float(p["duration_time"]) for p in packets))


def samples(cwd, name, pixel_format, *options):
    """All samples of the video as they are stored, in one row."""
    raw = ffmpeg(*options, "-i", name, "-fps_mode", "passthrough", "-f", "rawvideo", "-pix_fmt", pixel_format, "-", cwd=cwd)
    return numpy.frombuffer(raw, numpy.uint8).astype(int)


def apart(first, second):
    """How far two rows of samples are from one another at most."""
    assert first.size == second.size
    return int(numpy.abs(first - second).max())
