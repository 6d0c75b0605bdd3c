# SPDX-License-Identifier: MIT
"""Time stamps from input to output: variable rates, clocks that jump, formats that only count frames."""
import numpy
import pytest

from conftest import read_picture
from media_support import IDENTITY, clip, ffmpeg, frames, packets_seconds, probe, samples, times
from PIL import Image

# Steps of 33 ms, as a phone records, with a stutter and a pause.
VARIABLE = "settb=1/1000,setpts='N*33+gt(N,10)*100+gt(N,20)*7'"


def steps(folder, name):
    """The times between frames."""
    return numpy.diff(times(folder, name))


@pytest.fixture(scope="module")
def variable(tmp_path_factory):
    folder = tmp_path_factory.mktemp("variable")
    clip(folder, "in.mkv", "-vf", VARIABLE, "-fps_mode", "passthrough", "-enc_time_base", "1:1000", "-c:v", "libx264", "-bf", "2",
         "-c:a", "aac", sound=True, seconds=1.5, source="testsrc2=s=160x120:r=30:d={seconds}")
    assert numpy.allclose(sorted(set(steps(folder, "in.mkv").round(3))), [0.033, 0.040, 0.133])
    return folder / "in.mkv"


@pytest.mark.parametrize("output, options", [
    ("out.mp4", ()), ("out.mov", ("--encoder", "mpeg4")), ("out.mp4", ("--encoder", "libx265")), ("out.mkv", ()),
    ("out.mkv", ("--encoder", "mpeg2video")), ("out.webm", ("--encoder-option", "cpu-used=8")), ("out.ts", ())])
def test_variable_rates_stay(vireo, tmp_path, variable, output, options):
    vireo("render", variable, output, *IDENTITY, *options, "--quiet")
    source, result = numpy.array(times(tmp_path, variable)), numpy.array(times(tmp_path, output))
    assert source.size == result.size
    assert numpy.abs((result - result[0]) - (source - source[0])).max() <= 0.00101
    # Sound where it was beside the picture.
    begins = [float(probe(tmp_path, name, "a:0")["start_time"]) - times(tmp_path, name)[0] for name in (variable, output)]
    assert begins[0] == pytest.approx(begins[1], abs=0.03)
    vireo("render", variable, "part" + output, *IDENTITY, *options, "--quiet", "--frames", "5-25")
    part = numpy.array(times(tmp_path, "part" + output))
    assert part.size == 21 and numpy.abs((part - part[0]) - (source[5:26] - source[5])).max() <= 0.00101


@pytest.mark.parametrize("rate", ["25", "24000/1001", "60"])
def test_constant_rates_come_out_even(vireo, tmp_path, rate):
    # Matroska rounds its times to milliseconds.
    clip(tmp_path, "in.mkv", "-c:v", "libx264", source=f"testsrc2=s=64x48:r={rate}:d=1")
    vireo("render", "in.mkv", "out.mp4", *IDENTITY)
    vireo("render", "in.mkv", "part.mp4", *IDENTITY, "--frames", "7-15")
    rates = [probe(tmp_path, name)["avg_frame_rate"] for name in ("out.mp4", "part.mp4")]
    assert rates == [rate if "/" in rate else rate + "/1"] * 2
    assert numpy.ptp(steps(tmp_path, "out.mp4")) < 2e-5


def broadcast(folder, name, begin, seconds=2):
    """A transport stream that begins at some second of its clock."""
    clip(folder, name, "-c:v", "libx264", "-g", "25", "-bf", "2", "-c:a", "aac", "-muxdelay", "0", "-output_ts_offset", begin,
         sound=True, seconds=seconds)
    return (folder / name).read_bytes()


@pytest.mark.parametrize("begins", [(200, 100), (200, 900), (200, 100, 900, 200)], ids=["back", "forward", "many"])
@pytest.mark.parametrize("output", ["out.mkv", "out.mp4"])
def test_what_lies_behind_a_jump_follows(vireo, tmp_path, begins, output):
    (tmp_path / "in.ts").write_bytes(b"".join(broadcast(tmp_path, f"{begin}.ts", begin) for begin in begins))
    vireo("render", "in.ts", output, *IDENTITY)
    assert len(times(tmp_path, output)) == 50 * len(begins)
    assert steps(tmp_path, output).max() < 0.1 and steps(tmp_path, output).min() > 0.02
    # A tone of one length, so that what is shown and heard together lasts equally long.
    shown = times(tmp_path, output)
    assert packets_seconds(tmp_path, output, "a:0") == pytest.approx((shown[0], shown[-1] + 0.04), abs=0.06)
    vireo("render", "in.ts", "part.mkv", *IDENTITY, "--frames", "40-69")
    assert steps(tmp_path, "part.mkv") == pytest.approx(steps(tmp_path, output)[40:69], abs=0.0015)


def test_a_clock_that_runs_over_goes_on(vireo, tmp_path):
    broadcast(tmp_path, "in.ts", 2**33 / 90000 - 1)
    for output in ("out.mkv", "out.mp4"):
        vireo("render", "in.ts", output, *IDENTITY)
        assert steps(tmp_path, output) == pytest.approx([0.04] * 49, abs=0.0015)
        assert packets_seconds(tmp_path, output, "a:0")[1] == pytest.approx(2.02, abs=0.06)


def signals(folder, name, begin, sound="0.5", seconds=3):
    """A transport stream that flashes and sounds at once, at 0.5 and 2 seconds of its own; its sound begins with the
    picture or later."""
    every = "between(mod(t\\,1.5)\\,0.5\\,0.7)"
    ffmpeg("-f", "lavfi", "-i", f"color=black:s=64x48:r=25:d={seconds},drawbox=c=white:t=fill:enable='{every}'",
           "-f", "lavfi", "-i", f"aevalsrc=sin(6283*t)*{every}:s=48000:d={seconds}", "-af", f"atrim=start={sound}", "-c:v", "libx264",
           "-g", "25", "-bf", "2", "-c:a", "mp2", "-muxdelay", "0", "-output_ts_offset", begin, name, cwd=folder)
    return (folder / name).read_bytes()


def rises(values, times, level):
    """When values rise above a level."""
    above = numpy.array(values) > level
    return [times[0]] * bool(above[0]) + [times[i] for i in range(1, len(above)) if above[i] and not above[i - 1]]


WRAP = 2**33 / 90000


@pytest.mark.parametrize("begins", [(200, 100), (200, 260), (WRAP - 1.4,), (WRAP - 4, WRAP - 1.4), (200, WRAP - 1.4, 50), (200, 200)],
                         ids=["back", "forward", "wrap", "joined before a wrap", "all", "again"])
@pytest.mark.parametrize("sound", ["0", "0.3"], ids=["with the picture", "later"])
def test_what_is_seen_and_heard_together_stays_together(vireo, tmp_path, begins, sound):
    (tmp_path / "in.ts").write_bytes(b"".join(signals(tmp_path, "part.ts", begin, sound) for begin in begins))
    vireo("render", "in.ts", "out.mkv", *IDENTITY, "--encoder", "ffv1")
    shown = times(tmp_path, "out.mkv")
    luma = samples(tmp_path, "out.mkv", "gray").reshape(len(shown), -1).mean(axis=1)
    flashes = rises(luma, shown, 128)
    # Silence where the sound has gaps, so that its samples count time.
    heard = numpy.abs(numpy.frombuffer(ffmpeg("-i", "out.mkv", "-af", "aresample=async=1:min_hard_comp=0.01:first_pts=0", "-f", "s16le",
                                              "-ac", "1", "-", cwd=tmp_path), numpy.int16).astype(int))
    loud = [heard[at:at + 480].mean() for at in range(0, heard.size, 480)]
    tones = rises(loud, [number / 100 for number in range(len(loud))], 3000)
    assert len(flashes) == len(tones) == 2 * len(begins)
    assert tones == pytest.approx(flashes, abs=0.06)
    # Nothing is lost or lengthened.
    assert len(shown) == 75 * len(begins) and numpy.diff(shown).max() < 0.4


@pytest.mark.parametrize("source", ["in.mp4", "in.mkv", "in.ts"])
def test_all_frames_of_avi_last_one_frame(vireo, tmp_path, source):
    # Its sound begins before 0.
    clip(tmp_path, source, "-c:v", "libx264", "-c:a", "aac", sound=True, seconds=0.4)
    for encoder in ("mpeg4", "ffv1"):
        vireo("render", source, "out.avi", *IDENTITY, "--encoder", encoder, "--overwrite")
        assert probe(tmp_path, "out.avi")["nb_frames"] == "10"
        assert steps(tmp_path, "out.avi") == pytest.approx([0.04] * 9)


@pytest.mark.parametrize("size", [(2, 2), (1, 7), (16, 1), (3, 8), (15, 40), (16, 16)])
def test_tiny_frames_are_lossless_in_ffv1(vireo, tmp_path, size):
    width, height = size
    pixels = numpy.random.default_rng(3).integers(0, 256, (height, width, 3), numpy.uint8)
    for number in range(3):
        Image.fromarray(pixels).save(tmp_path / f"in{number}.png")
    vireo("render", "in%d.png", "out.mkv", *IDENTITY, "--encoder", "ffv1")
    assert probe(tmp_path, "out.mkv")["pix_fmt"] in ("bgr0", "gbrp")
    ffmpeg("-i", "out.mkv", "-frames:v", "1", "out.png", cwd=tmp_path)
    assert numpy.array_equal(read_picture(tmp_path / "out.png")[..., :3], pixels)
