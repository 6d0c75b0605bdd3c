#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Times `vireo render` with Solarize beside ffmpeg with a filter of the same kind, on one clip and with the same
encoder settings: medians of wall time and of the peak of memory over runs taken in turn.

Solarize at threshold 254 replaces nearly every channel c by 254 - c, as ffmpeg's negate does by 255 - c, so that
both encoders get pictures of equal difficulty. The clip is made where none is named.
"""
import argparse
import os
import pathlib
import statistics
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]


def run(command):
    """Wall time in seconds and peak memory in MiB of one run."""
    start = time.perf_counter()
    process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stderr=subprocess.PIPE)
    errors = process.stderr.read()
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))}: {errors.decode()}")
    return time.perf_counter() - start, usage.ru_maxrss / 1024


def make_clip(path, seconds):
    subprocess.run(["ffmpeg", "-v", "error", "-y", "-f", "lavfi", "-i", f"testsrc2=s=1920x1080:r=25:d={seconds}", "-vf",
                    "noise=alls=8:allf=t,gblur=0.6", "-c:v", "libx264", "-preset", "fast", "-crf", "20", "-pix_fmt",
                    "yuv420p", path], check=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--vireo", default=ROOT / "build/linux/bin/vireo", help="the program")
    parser.add_argument("--clip", help="a clip instead of the one that is made")
    parser.add_argument("--seconds", type=int, default=4, help="length of the clip that is made")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--preset", default="medium", help="of libx264, on both sides")
    arguments = parser.parse_args()

    with tempfile.TemporaryDirectory() as folder:
        source = arguments.clip or os.path.join(folder, "in.mp4")
        if not arguments.clip:
            make_clip(source, arguments.seconds)
        commands = {
            "vireo": [str(arguments.vireo), "render", source, os.path.join(folder, "vireo.mp4"), "-f",
                      "Solarize:threshold=254", "--overwrite", "--quiet", "--encoder-option", "crf=23",
                      "--encoder-option", f"preset={arguments.preset}"],
            "ffmpeg": ["ffmpeg", "-v", "error", "-y", "-i", source, "-vf", "format=bgra,negate,format=yuv420p", "-c:a",
                       "copy", "-c:v", "libx264", "-crf", "23", "-preset", arguments.preset,
                       os.path.join(folder, "ffmpeg.mp4")],
        }
        results = {name: [] for name in commands}
        for _ in range(arguments.runs):
            for name, command in commands.items():
                results[name].append(run(command))
        medians = {}
        for name, command in commands.items():
            medians[name] = [statistics.median(values) for values in zip(*results[name])]
            size = os.path.getsize(os.path.join(folder, f"{name}.mp4"))
            print(f"{name:7} {medians[name][0]:7.2f} s {medians[name][1]:7.1f} MiB  {size / 1e6:6.2f} MB written   "
                  + " ".join(command).replace(folder, "."))
        print(f"vireo / ffmpeg: time {medians['vireo'][0] / medians['ffmpeg'][0]:.3f}, "
              f"memory {medians['vireo'][1] / medians['ffmpeg'][1]:.3f}")


if __name__ == "__main__":
    main()
