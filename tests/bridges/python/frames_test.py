# SPDX-License-Identifier: MIT
"""Arrays of any kind through chains: the pixels are the program's."""
import concurrent.futures
import threading
import time

import numpy
import pytest
from PIL import Image

import vireo
from conftest import picture, program

CHAIN = ["Levels:(rgb) gamma=130,(b) white output level=90", "Convolution Kernel:m11=-2,m22=5,scale=3", "Camera Blur:percent blur=4"]


def same(ours, expected):
    assert ours.dtype == expected.dtype and ours.shape == expected.shape
    assert numpy.array_equal(ours, expected), numpy.argwhere(ours != expected)[0]


@pytest.mark.parametrize("filters", [CHAIN, ["Alpha Glow:glow=9"], ["Camera View:longitude=20,roll=5,mix=60"], ["Edge Feather"]])
@pytest.mark.parametrize("channels", [3, 4])
def test_pixels_are_the_programs(filters, channels, tmp_path):
    frame = picture(54, 97, channels)
    Image.fromarray(frame).save(tmp_path / "in.png")
    program("render", tmp_path / "in.png", tmp_path / "out.png", "--alpha", *(word for text in filters for word in ("-f", text)))
    expected = numpy.asarray(Image.open(tmp_path / "out.png").convert("RGBA"))[..., :channels]
    chain = vireo.Chain(*filters)
    same(chain(frame), expected)
    # OpenCV's order is the same picture.
    mirrored = [2, 1, 0, 3][:channels]
    same(chain(frame[..., mirrored], layout="bgr"), expected[..., mirrored])


def test_grey_is_three_equal_colours():
    grey = picture(31, 40)
    coloured = vireo.Chain(*CHAIN)(numpy.dstack([grey] * 3)).astype(float) @ (0.299, 0.587, 0.114)
    assert numpy.abs(vireo.Chain(*CHAIN)(grey) - coloured).max() <= 1


STRIDED = {
    "cut out": lambda wide: wide[5:40, 8:57],
    "every other row": lambda wide: wide[::2],
    "every other column": lambda wide: wide[:, ::2],
    "upside down": lambda wide: wide[::-1],
    "mirrored": lambda wide: wide[:, ::-1],
    "turned": lambda wide: wide.swapaxes(0, 1),
    "channels reversed": lambda wide: wide[..., ::-1],
    "planes": lambda wide: numpy.ascontiguousarray(wide.transpose(2, 0, 1)).transpose(1, 2, 0),
    "one row repeated": lambda wide: numpy.broadcast_to(wide[3], wide.shape),
    "one pixel": lambda wide: wide[7:8, 4:5],
    "at odd addresses": lambda wide: numpy.frombuffer(b"x" + wide.tobytes(), numpy.uint8)[1:].reshape(wide.shape),
}
IN_PLACE = {"cut out", "every other row", "upside down", "one pixel", "at odd addresses"}


@pytest.mark.parametrize("kind", STRIDED)
def test_strides_do_not_matter(kind):
    chain, wide = vireo.Chain(*CHAIN), picture(64, 80, 4)
    frame = STRIDED[kind](wide)
    before, expected = wide.copy(), chain(numpy.array(frame, order="C"))
    same(chain(frame), expected)
    same(wide, before)
    assert numpy.shares_memory(vireo._frames.readable(frame), frame) == (kind in IN_PLACE)
    # The result goes into arrays that lie the same way, and nowhere else.
    room = numpy.full_like(wide, 77)
    out = STRIDED[kind](room)
    if not out.flags.writeable:
        with pytest.raises(vireo.Error, match="out cannot be written"):
            chain(frame, out=out)
        return
    assert chain(frame, out=out) is out
    same(out, expected)
    out[...] = 77
    assert (room == 77).all()


@pytest.mark.parametrize("kind", ["cut out", "upside down", "mirrored", "turned"])
def test_a_frame_may_be_its_own_result(kind):
    for filters in (CHAIN, ["Vertical Flip"], []):
        chain, frame = vireo.Chain(*filters), STRIDED[kind](picture(64, 80, 3))
        expected = chain(frame)
        chain(frame, out=frame)
        same(frame, expected)
        # Nor does it matter that both lie in the same memory the other way round.
        chain(frame, out=frame[::-1])
        same(frame[::-1], chain(expected))


@pytest.mark.parametrize("dtype", ["uint16", "float32", ">u2", ">f4"])
def test_deep_frames(dtype):
    frame = picture(9, 14, 3, dtype=numpy.dtype(dtype).newbyteorder("=")).astype(dtype)
    flipped = vireo.Chain("Horizontal Flip")(frame)
    same(flipped, frame[:, ::-1].astype(numpy.dtype(dtype).newbyteorder("=")))
    assert numpy.dtype(dtype).name in vireo.Chain("Horizontal Flip").dtypes and vireo.Chain("Solarize").dtypes == ("uint8",)
    with pytest.raises(vireo.Error, match="no filter given here offers the format"):
        vireo.Chain("Solarize")(frame)


def test_premultiplied_colours():
    frame = numpy.array([[[100, 50, 0, 128]]], numpy.uint8)
    inverted = vireo.Chain("Solarize:threshold=254")(frame, premultiplied=True)
    assert numpy.abs(inverted.astype(int) - [[[28, 78, 128, 128]]]).max() <= 1


@pytest.mark.parametrize("frame, out, sentence", [
    (numpy.zeros((4, 4), int), None, "a frame's numbers are uint8, uint16 or float32, not int64"),
    (numpy.zeros((4, 4, 2), numpy.uint8), None, "a frame is height x width, or that x 3 or 4, not 4 x 4 x 2"),
    (numpy.zeros((0, 4, 3), numpy.uint8), None, "a frame has at least one pixel"),
    (picture(4, 4, 3), numpy.zeros((4, 5, 3), numpy.uint8), "out is an array of the frame's shape and type"),
    (picture(4, 4, 3), numpy.zeros((4, 4, 3), numpy.uint16), "out is an array of the frame's shape and type"),
])
def test_what_is_no_frame(frame, out, sentence):
    with pytest.raises(vireo.Error) as raised:
        vireo.Chain("Solarize")(frame, out=out)
    assert str(raised.value) == sentence


def test_threads_render_together():
    chain, shared = vireo.Chain(*CHAIN), vireo.Chain(*CHAIN, threads=3)
    frames = [picture(180, 240, 3, seed=n) for n in range(24)]
    expected = [chain(frame) for frame in frames]
    with concurrent.futures.ThreadPoolExecutor(4) as pool:
        for renderer in (chain, shared):
            for ours, theirs in zip(pool.map(renderer, frames), expected):
                same(ours, theirs)


def test_other_threads_run_meanwhile():
    chain, frame = vireo.Chain("Camera Blur:percent blur=60"), picture(1600, 1600, 4)
    ended, ticks = threading.Event(), []

    def tick():
        while not ended.is_set():
            ticks.append(time.perf_counter())
            time.sleep(0.0005)

    other = threading.Thread(target=tick)
    other.start()
    begun = time.perf_counter()
    chain(frame)
    done = time.perf_counter()
    ended.set()
    other.join()
    inside = [moment for moment in ticks if begun + 0.2 * (done - begun) < moment < done - 0.2 * (done - begun)]
    assert inside, "the interpreter's lock was held"
