# SPDX-License-Identifier: MIT
"""Clips made with the machine's FFmpeg, and what it reads back."""
import json
import pathlib
import subprocess

import numpy

IDENTITY = ("-f", "Solarize:threshold=0")

# Colours inside the gamut and without edges, so that no rounding or limit hides a wrong conversion.
SMOOTH = "testsrc2=s=160x120:r=25:d={seconds},scale=40:30,gblur=2,scale=160:120:flags=bicubic,eq=saturation=0.5:contrast=0.7"

# Frames at uneven distances, most of them a little beside the times that a fixed rate has.
VARIABLE = ("-vf", "select='not(mod(n\\,3))+eq(n\\,7)+eq(n\\,20)',setpts=PTS+0.004/TB*mod(N\\,3)", "-fps_mode", "vfr")


def ffmpeg(*arguments, cwd, stdin=None):
    return subprocess.run(["ffmpeg", "-v", "error", "-nostdin" if stdin is None else "-hide_banner", "-y", *map(str, arguments)],
                          cwd=cwd, input=stdin, check=True, capture_output=True).stdout


# Clips of one file without other inputs, by how they are made.
made = {}


def clip(cwd, name, *encoding, seconds=1, source=SMOOTH, sound=False, inputs=()):
    """A small clip, with a tone beside it where `sound` says so."""
    how = pathlib.Path(name).suffix, encoding, seconds, source, sound
    made_alone = not inputs and "%" not in name
    if made_alone and how in made:
        (cwd / name).write_bytes(made[how])
        return name
    tone = ("-f", "lavfi", "-i", f"sine=r=48000:d={seconds}") if sound else ()
    ffmpeg("-f", "lavfi", "-i", source.format(seconds=seconds), *tone, *inputs, *encoding, name, cwd=cwd)
    if made_alone:
        made[how] = (cwd / name).read_bytes()
    return name


def ffprobe(cwd, name, *entries):
    output = subprocess.run(["ffprobe", "-v", "error", *entries, "-of", "json", name], cwd=cwd, check=True, capture_output=True)
    return json.loads(output.stdout)


def probe(cwd, name, stream="v:0"):
    """The entries of one stream."""
    streams = ffprobe(cwd, name, "-select_streams", stream, "-show_streams")["streams"]
    return streams[0] if streams else None


def container(cwd, name):
    return ffprobe(cwd, name, "-show_format", "-show_chapters")


def frames(cwd, name, entries="pts_time,interlaced_frame,top_field_first"):
    return ffprobe(cwd, name, "-select_streams", "v:0", "-show_frames", "-show_entries", f"frame={entries}")["frames"]


def times(cwd, name):
    return [float(frame["pts_time"]) for frame in frames(cwd, name)]


def packets_seconds(cwd, name, stream):
    """Where a stream begins and ends."""
    packets = ffprobe(cwd, name, "-select_streams", stream, "-show_packets", "-show_entries",
                      "packet=pts_time,duration_time")["packets"]
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
