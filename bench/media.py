#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Times `vireo render` with Solarize beside ffmpeg with a filter of the same kind, and the start of both: Markdown
tables of medians over runs taken in turn. Ratios are vireo's figure by ffmpeg's; CPU time is the user's and the
system's.

Solarize at threshold 254 replaces nearly every channel c by 254 - c, as ffmpeg's negate does by 255 - c, so that both
encoders get pictures of equal difficulty. Both use as many threads as they take by themselves. Inputs are made in a
temporary folder.

    bench/media.py                       every job, some minutes
    bench/media.py --job png --runs 5    one of them: h264 ffv1 prores y4m jpeg png start
"""
import argparse
import os
import pathlib
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parents[1]
FILTER = "Solarize:threshold=254"


def run(command, pipes):
    """Wall time and CPU time in seconds and peak memory in MiB of one run. `pipes` is nothing, or a file that comes
    through a pipe and one that takes what a pipe brings."""
    feeder = subprocess.Popen(["cat", pipes[0]], stdout=subprocess.PIPE) if pipes else None
    sink = subprocess.Popen(["cat"], stdin=subprocess.PIPE, stdout=open(pipes[1], "wb")) if pipes else None
    with tempfile.TemporaryFile() as errors:
        start = time.perf_counter()
        process = subprocess.Popen(command, stdin=feeder.stdout if feeder else subprocess.DEVNULL,
                                   stdout=sink.stdin if sink else subprocess.DEVNULL, stderr=errors)
        if pipes:
            feeder.stdout.close()
            sink.stdin.close()
        _, status, usage = os.wait4(process.pid, 0)
        elapsed = time.perf_counter() - start
        process.returncode = os.waitstatus_to_exitcode(status)
        if process.returncode != 0:
            errors.seek(0)
            raise SystemExit(f"{' '.join(map(str, command))}: {errors.read().decode()}")
    for helper in (feeder, sink) if pipes else ():
        helper.wait()
    return elapsed, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def medians(commands, runs, pipes=None):
    """By name, the medians of `run` over runs in turn."""
    results = {name: [] for name in commands}
    for _ in range(runs):
        for name, command in commands.items():
            results[name].append(run(command, pipes[name] if pipes else None))
    return {name: [statistics.median(values) for values in zip(*results[name])] for name in commands}


def size(path):
    files = path.rglob("*") if path.is_dir() else [path]
    return sum(file.stat().st_size for file in files if file.is_file())


class Jobs:
    """Each makes its input in the folder and gives both commands; outputs are named after the programs."""

    def __init__(self, vireo, folder):
        self.vireo = vireo
        self.folder = folder

    def make(self, name, *options, size="1920x1080", frames=100):
        """A clip or pictures with noise, far from black and white, which Solarize leaves where negate does not."""
        within = ":".join(f"{channel}=24+val*13/16" for channel in "rgb")
        path = self.folder / name
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", f"testsrc2=s={size}:r=25", "-frames:v",
                        str(frames), "-vf", f"format=gbrp,lutrgb={within},noise=alls=8:allf=t,gblur=0.6", *options,
                        path], check=True)
        return path

    def commands(self, source, ending, pixel_format, vireo_options, ffmpeg_options):
        return {
            "vireo": [self.vireo, "render", source, self.folder / f"vireo.{ending}", "-f", FILTER, "--overwrite",
                      "--quiet", *vireo_options],
            "ffmpeg": ["ffmpeg", "-v", "error", "-y", "-i", source, "-vf", f"format=bgra,negate,format={pixel_format}",
                       *ffmpeg_options, self.folder / f"ffmpeg.{ending}"],
        }, None

    def clip(self, frames):
        return self.make("in.mp4", "-c:v", "libx264", "-preset", "fast", "-crf", "20", "-pix_fmt", "yuv420p",
                         frames=frames)

    def h264(self):
        """H.264 to H.264, veryfast"""
        return self.commands(self.clip(100), "mp4", "yuv420p",
                             ["--encoder-option", "crf=23", "--encoder-option", "preset=veryfast"],
                             ["-c:v", "libx264", "-crf", "23", "-preset", "veryfast"])

    def ffv1(self):
        """H.264 to FFV1"""
        return self.commands(self.clip(50), "mkv", "yuv420p", ["--encoder", "ffv1"],
                             ["-c:v", "ffv1", "-level", "3", "-slicecrc", "1"])

    def prores(self):
        """HEVC, 10 bits, to ProRes"""
        # ffmpeg's way to 8 bits rounds; a dither's noise is more to encode.
        source = self.make("in.mkv", "-c:v", "libx265", "-preset", "ultrafast", "-crf", "20", "-pix_fmt", "yuv420p10le",
                           "-x265-params", "log-level=error", frames=50)
        return self.commands(source, "mov", "yuv422p10le",
                             ["--encoder", "prores_ks", "--pixel-format", "yuv422p10le", "--encoder-option",
                              "profile=hq", "--dither", "none"],
                             ["-c:v", "prores_ks", "-profile:v", "hq"])

    def y4m(self):
        """Y4M from a pipe into a pipe"""
        source = self.make("in.y4m", "-pix_fmt", "yuv420p")
        return {
            "vireo": [self.vireo, "render", "-", "-", "--format", "y4m", "-f", FILTER, "--quiet"],
            "ffmpeg": ["ffmpeg", "-v", "error", "-i", "-", "-vf", "format=bgra,negate,format=yuv420p", "-f",
                       "yuv4mpegpipe", "-"],
        }, {name: (source, self.folder / f"{name}.y4m") for name in ("vireo", "ffmpeg")}

    def jpeg(self):
        """A folder of 200 JPEG files"""
        source = self.folder / "in.jpg"
        for name in ("in", "vireo", "ffmpeg"):
            (self.folder / f"{name}.jpg").mkdir()
        self.make("in.jpg/%03d.jpg", "-pix_fmt", "yuvj420p", "-q:v", "3", frames=200)
        return {
            "vireo": [self.vireo, "render", source, "--to", self.folder / "vireo.jpg", "-f", FILTER, "--overwrite",
                      "--quiet"],
            "ffmpeg": ["ffmpeg", "-v", "error", "-y", "-i", source / "%03d.jpg", "-vf",
                       "format=bgra,negate,format=yuvj420p", "-q:v", "2", self.folder / "ffmpeg.jpg" / "%03d.jpg"],
        }, None

    def png(self):
        """A PNG file of 48 megapixels"""
        source = self.make("in.png", "-pix_fmt", "rgb24", size="8000x6000", frames=1)
        return self.commands(source, "png", "rgb24", [], [])


RENDERS = ("h264", "ffv1", "prores", "y4m", "jpeg", "png")


def print_renders(vireo, names, runs):
    print("| 1920 × 1080 but for the last | vireo, s | ffmpeg, s | Time | CPU time | Peak memory | Bytes written |\n"
          "|---|---|---|---|---|---|---|")
    for name in names:
        with tempfile.TemporaryDirectory() as folder:
            jobs = Jobs(vireo, pathlib.Path(folder))
            commands, pipes = getattr(jobs, name)()
            figures = medians(commands, runs, pipes)
            written = [size(next(jobs.folder.glob(f"{program}.*"))) for program in figures]
            ratios = [ours / theirs for ours, theirs in zip(figures["vireo"], figures["ffmpeg"])]
            print(f"| {getattr(jobs, name).__doc__} | {figures['vireo'][0]:.2f} | {figures['ffmpeg'][0]:.2f} | "
                  + " | ".join(f"{ratio:.2f}" for ratio in (*ratios, written[0] / written[1])) + " |", flush=True)


def print_start(vireo, runs):
    with tempfile.TemporaryDirectory() as folder:
        source = Jobs(vireo, pathlib.Path(folder)).make("in.png", size="64x64", frames=1)
        commands = {
            "ffmpeg -version": ["ffmpeg", "-version"],
            "vireo list": [vireo, "list"],
            "vireo render, a PNG file of 64 × 64": [vireo, "render", source, source.with_name("out.png"), "-f", FILTER,
                                                    "--overwrite", "--quiet"],
        }
        figures = medians(commands, 10 * runs)
        print("\n| Start | ms | Time | CPU time | Peak memory |\n|---|---|---|---|---|")
        for name, values in figures.items():
            ratios = [ours / theirs for ours, theirs in zip(values, figures["ffmpeg -version"])]
            print(f"| `{name}` | {1000 * values[0]:.1f} | " + " | ".join(f"{ratio:.2f}" for ratio in ratios) + " |")


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--vireo", type=pathlib.Path, default=ROOT / "build/linux/bin/vireo", help="the program")
    parser.add_argument("--job", choices=(*RENDERS, "start"), help="one job alone")
    parser.add_argument("--runs", type=int, default=3, help="of each program for a job; ten times as many of the start")
    arguments = parser.parse_args()
    if shutil.which("ffmpeg") is None:
        sys.exit("there is no ffmpeg on this machine")
    if arguments.job != "start":
        print_renders(arguments.vireo, [arguments.job] if arguments.job else RENDERS, arguments.runs)
    if arguments.job in (None, "start"):
        print_start(arguments.vireo, arguments.runs)


if __name__ == "__main__":
    main()
