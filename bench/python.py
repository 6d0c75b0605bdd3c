#!/usr/bin/python3
# SPDX-License-Identifier: MIT
"""Times calls of the Python package beside the engine's own, and beside OpenCV's and Pillow's nearest operations.

What a table compares runs in turn, each behind one of its own kind, and the best of many rounds counts: all that disturbs
only adds. The engine is called through ctypes, which costs a call a microsecond or two itself.
"""
import argparse
import concurrent.futures
import ctypes
import time

import cv2
import numpy
from PIL import Image, ImageFilter, ImageOps

import vireo

WIDTH, HEIGHT = 1920, 1080
BGRA, RGB = 0, 9


class Frame(ctypes.Structure):
    _fields_ = [("structSize", ctypes.c_uint32), ("width", ctypes.c_int32), ("height", ctypes.c_int32), ("layout", ctypes.c_int32),
                ("depth", ctypes.c_int32), ("premultiplied", ctypes.c_int32), ("pixels", ctypes.c_void_p),
                ("stride", ctypes.c_int64), ("owned", ctypes.c_void_p)]

    def __init__(self, array, layout):
        super().__init__(ctypes.sizeof(Frame), array.shape[1], array.shape[0], layout, 8, 0, array.ctypes.data, array.strides[0])


def engine_call(filters, source, result, layout):
    """The engine's own call for a chain, with everything made before."""
    engine = ctypes.CDLL("libVireo.so.1")
    handle, chain = ctypes.c_void_p(), ctypes.c_void_p()
    done = engine.vireoOpen(None, ctypes.byref(handle)) or engine.vireoChainNew(handle, ctypes.byref(chain))
    assert not done and not engine.vireoChainAddText(chain, filters.encode())
    frames = Frame(source, layout), Frame(result, layout)
    render = engine.vireoChainRender
    arguments = chain, ctypes.byref(frames[0]), ctypes.byref(frames[1]), None, None
    return lambda: render(*arguments)


def best(seconds, jobs):
    """Microseconds of each job's best round."""
    times = [float("inf")] * len(jobs)
    end = time.perf_counter() + seconds
    while time.perf_counter() < end:
        for index, job in enumerate(jobs):
            job()
            begin = time.perf_counter_ns()
            job()
            times[index] = min(times[index], (time.perf_counter_ns() - begin) / 1000)
    return times


def picture(height, width, channels):
    """Smooth, with noise."""
    noise = numpy.random.default_rng(1).integers(0, 32, (height, width, channels))
    return (noise + numpy.linspace(0, 220, width, dtype=int)[:, None]).astype(numpy.uint8)


def overhead(seconds):
    print("| | The engine, µs | Python, `out=`, µs | More | Python, a new array, µs | More |\n|---|---|---|---|---|---|")
    for height, width in ((1, 1), (HEIGHT, WIDTH)):
        for filters in ("Solarize", "Levels:(rgb) gamma=150", "Camera Blur"):
            for name, channels, layout in (("BGRA", 4, BGRA), ("RGB", 3, RGB)):
                source = picture(height, width, channels)
                result = numpy.zeros_like(source)
                chain, order = vireo.Chain(filters), name[:3].lower()
                alone, into, new = best(seconds, [
                    engine_call(filters, source, result, layout),
                    lambda: chain(source, out=result, layout=order),
                    lambda: chain(source, layout=order),
                ])
                print(f"| {filters.split(':')[0]}, {name} {width} × {height} | {alone:.1f} | {into:.1f} | {into - alone:.1f} "
                      f"| {new:.1f} | {new - alone:.1f} |")


def threads(seconds):
    print("| | One thread, ms | Two, ms | Ratio |\n|---|---|---|---|")
    frames = [picture(HEIGHT, WIDTH, 3) for _ in range(8)]
    results = [numpy.empty_like(frame) for frame in frames]
    for filters in ("Levels:(rgb) gamma=150", "Camera Blur"):
        chain, shared = vireo.Chain(filters), vireo.Chain(filters, threads=2)

        def pooled(workers):
            with concurrent.futures.ThreadPoolExecutor(workers) as pool:
                list(pool.map(lambda n: chain(frames[n], out=results[n]), range(len(frames))))

        one, two = best(seconds, [lambda: pooled(1), lambda: pooled(2)])
        print(f"| {filters}, eight frames, a thread of Python's each | {one / 1000:.1f} | {two / 1000:.1f} | {two / one:.2f} |")
        one, two = best(seconds, [lambda: chain(frames[0], out=results[0]), lambda: shared(frames[0], out=results[0])])
        print(f"| {filters}, one frame shared, `threads=2` | {one / 1000:.2f} | {two / 1000:.2f} | {two / one:.2f} |")


def peers():
    """Filter, and the nearest operations over an RGB array and a Pillow picture."""
    gamma = numpy.round(255 * (numpy.arange(256) / 255) ** (1 / 1.5)).astype(numpy.uint8)
    inverted = numpy.where(numpy.arange(256) < 128, 255 - numpy.arange(256), numpy.arange(256)).astype(numpy.uint8)
    kernel = numpy.array([[1, 16, 1], [16, 33, 16], [1, 16, 1]], numpy.float32) / 101
    turned = numpy.array([[0.9, 0.1, 20], [-0.1, 0.9, 60], [0.00002, 0.00003, 1]])
    reach = WIDTH // 40, HEIGHT // 40
    edge = cv2.BORDER_REPLICATE

    def tiled(frame):
        cell = cv2.resize(frame, (WIDTH // 2, HEIGHT // 2), interpolation=cv2.INTER_AREA)
        return numpy.tile(cell, (2, 2, 1))

    def pasted(image):
        cell, result = image.reduce(2), Image.new("RGB", image.size)
        for corner in ((0, 0), (WIDTH // 2, 0), (0, HEIGHT // 2), (WIDTH // 2, HEIGHT // 2)):
            result.paste(cell, corner)
        return result

    return {
        "Levels:(rgb) gamma=150": (lambda a: cv2.LUT(a, gamma), lambda i: i.point(list(gamma) * 3)),
        "Solarize": (lambda a: cv2.LUT(a, inverted), ImageOps.solarize),
        "Black & White": (lambda a: cv2.cvtColor(cv2.cvtColor(a, cv2.COLOR_RGB2GRAY), cv2.COLOR_GRAY2RGB),
                          lambda i: i.convert("L").convert("RGB")),
        "Horizontal Flip": (lambda a: cv2.flip(a, 1), ImageOps.mirror),
        "Vertical Flip": (lambda a: cv2.flip(a, 0), ImageOps.flip),
        "Antialias": (lambda a: cv2.blur(a, (3, 3), borderType=edge), lambda i: i.filter(ImageFilter.BoxBlur(1))),
        "Convolution Kernel": (lambda a: cv2.filter2D(a, -1, kernel, borderType=edge),
                               lambda i: i.filter(ImageFilter.Kernel((3, 3), [1, 16, 1, 16, 33, 16, 1, 16, 1]))),
        "Camera Blur:percent blur=25": (
            lambda a: cv2.GaussianBlur(a, (2 * reach[0] + 1, 2 * reach[1] + 1), reach[0] / 3, None, reach[1] / 3, edge),
            lambda i: i.filter(ImageFilter.GaussianBlur(sum(reach) / 6))),
        "Replicate:count=2": (tiled, pasted),
        "Camera View:longitude=20,roll=5": (
            lambda a: cv2.warpPerspective(a, turned, (WIDTH, HEIGHT)),
            lambda i: i.transform(i.size, Image.Transform.PERSPECTIVE, tuple(turned.ravel()[:8]), Image.Resampling.BILINEAR)),
    }


def comparison(seconds):
    cv2.setNumThreads(1)
    source = picture(HEIGHT, WIDTH, 3)
    image, bgra = Image.fromarray(source), picture(HEIGHT, WIDTH, 4)
    copied = numpy.empty_like(source)
    print("| | Vireo, RGB | OpenCV, RGB | Pillow, RGB | Vireo, BGRA |\n|---|---|---|---|---|")
    for filters, (with_opencv, with_pillow) in peers().items():
        chain = vireo.Chain(filters)
        copy, *times = best(seconds, [lambda: numpy.copyto(copied, source), lambda: chain(source), lambda: with_opencv(source),
                                     lambda: with_pillow(image), lambda: chain(bgra, layout="bgr")])
        print(f"| {filters} | {' | '.join(f'{t / copy:.1f}' for t in times)} |")


def main():
    tables = {"overhead": overhead, "threads": threads, "peers": comparison}
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("table", nargs="?", choices=tables, help="one table alone")
    parser.add_argument("--seconds", type=float, default=4, help="for each row")
    arguments = parser.parse_args()
    for name, table in tables.items():
        if arguments.table in (None, name):
            table(arguments.seconds)


if __name__ == "__main__":
    main()
