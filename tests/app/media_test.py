# SPDX-License-Identifier: MIT
"""Renders clips and looks at everything that is not the filter's: frames, times, colours, sound, fields."""
import numpy
import pytest
from PIL import Image

from conftest import read_picture
from media_support import (IDENTITY, SMOOTH, VARIABLE, apart, clip, container, ffmpeg, frames, packets_seconds, probe, samples,
                           times)


def names(folder, pattern):
    return sorted(path.name for path in folder.glob(pattern))


@pytest.mark.parametrize("pixel_format, extra", [
    ("yuv420p", []),
    ("yuv422p", []),
    ("yuv444p", []),
    ("nv12", []),
    ("gbrp", []),
    ("yuv420p", ["-color_range", "pc"]),
    ("yuv420p", ["-colorspace", "bt709", "-color_primaries", "bt709", "-color_trc", "bt709"]),
    ("yuv422p", ["-colorspace", "bt2020nc", "-color_primaries", "bt2020", "-color_trc", "bt2020-10"]),
])
def test_identity_gives_the_source_back_with_its_tags(vireo, tmp_path, pixel_format, extra):
    codec = "rawvideo" if pixel_format in ("nv12", "gbrp") else "ffv1"
    clip(tmp_path, "in.nut", "-pix_fmt", pixel_format, "-c:v", codec, *extra, seconds=0.2)
    vireo("render", "in.nut", "out.nut", *IDENTITY, "--pixel-format", pixel_format, "--encoder", codec)
    assert apart(samples(tmp_path, "in.nut", pixel_format), samples(tmp_path, "out.nut", pixel_format)) <= 2

    clip(tmp_path, "in.mp4", "-pix_fmt", "yuv420p", *extra, seconds=0.2)
    vireo("render", "in.mp4", "out.mp4", *IDENTITY)
    before, after = probe(tmp_path, "in.mp4"), probe(tmp_path, "out.mp4")
    for tag in ("color_range", "color_space", "color_primaries", "color_transfer", "pix_fmt", "nb_frames"):
        assert before.get(tag) == after.get(tag), tag


def test_pictures_become_video_that_players_read(vireo, tmp_path):
    clip(tmp_path, "n%d.png", "-pix_fmt", "rgb24", seconds=0.12)
    vireo("render", "n%d.png", "out.mp4", *IDENTITY)
    stream = probe(tmp_path, "out.mp4")
    assert [stream[tag] for tag in ("pix_fmt", "color_range", "color_space")] == ["yuv420p", "tv", "bt709"]


def test_times_lengths_and_sound_are_kept(vireo, tmp_path):
    clip(tmp_path, "in.mp4", "-c:v", "libx264", "-c:a", "aac", "-metadata", "title=A title",
         "-metadata:s:a:0", "language=ita", sound=True)
    for out in ("out.mkv", "out.mp4", "out.mov", "out.ts"):
        vireo("render", "in.mp4", out, *IDENTITY)
        shift = times(tmp_path, out)[0] - times(tmp_path, "in.mp4")[0]
        assert numpy.allclose(numpy.array(times(tmp_path, out)) - shift, times(tmp_path, "in.mp4"), atol=0.0015)
        assert shift == 0 or out == "out.ts"
        sound = probe(tmp_path, out, "a:0")
        assert sound["codec_name"] == "aac" and sound["tags"]["language"] == "ita"
        begin, end = packets_seconds(tmp_path, out, "a:0")
        assert abs(end - begin - 1) < 0.06
        if out != "out.ts":
            assert container(tmp_path, out)["format"]["tags"]["title"] == "A title"


def test_variable_frame_rate_keeps_every_time(vireo, tmp_path):
    clip(tmp_path, "in.mkv", *VARIABLE, "-c:v", "libx264")
    for out in ("out.mkv", "out.mp4", "out.webm"):
        vireo("render", "in.mkv", out, *IDENTITY, *(["--encoder-option", "cpu-used=8"] if out == "out.webm" else []))
        assert numpy.allclose(times(tmp_path, out), times(tmp_path, "in.mkv"), atol=0.0006)


@pytest.mark.parametrize("part", [0, 2])
def test_key_frames_are_met_at_a_frames_own_time(vireo, tmp_path, part):
    clip(tmp_path, "in.mkv", "-vf", "setpts=N*N/25/TB", "-fps_mode", "vfr", "-c:v", "ffv1", seconds=0.4)
    shown = times(tmp_path, "in.mkv")
    for key in (3, 7):
        for name, settings in (("same", "threshold=0"), ("held", f"threshold=0@0s..hold..200@{shown[key]}s")):
            vireo("render", "in.mkv", name + ".mkv", "-f", "Solarize:" + settings, "--encoder", "ffv1", "--overwrite",
                  "--frames", f"{part}-9")
        same, held = (samples(tmp_path, name, "yuv420p").reshape(10 - part, -1) for name in ("same.mkv", "held.mkv"))
        assert list((same != held).any(axis=1)) == [number >= key for number in range(part, 10)]


@pytest.mark.parametrize("arguments, first, count", [
    (["--frames", "10-29"], 10, 20),
    (["--start", "0.4s", "--duration", "0.8s"], 10, 20),
    (["--start", "0.39s", "--duration", "20f"], 10, 20),
    (["--start", "10f", "--duration", "0.8s"], 10, 20),
    (["--frames", "45-80"], 45, 5),
])
def test_parts_begin_at_zero_with_their_sound(vireo, tmp_path, arguments, first, count):
    clip(tmp_path, "in.mp4", "-c:v", "libx264", "-g", "12", "-pix_fmt", "yuv420p", "-c:a", "aac", seconds=2, sound=True)
    result = vireo("render", "in.mp4", "out.mov", *IDENTITY, "--encoder-option", "qp=0", *arguments)
    wanted = samples(tmp_path, "in.mp4", "yuv420p").reshape(50, -1)[first:first + count]
    assert apart(wanted.ravel(), samples(tmp_path, "out.mov", "yuv420p")) <= 2
    assert times(tmp_path, "out.mov")[0] == 0
    begin, end = packets_seconds(tmp_path, "out.mov", "a:0")
    assert 0 <= begin < 0.03 and abs(end - count / 25) < 0.06
    assert (b"frame 49" in result.stderr) == (count == 5)


def test_jobs_do_not_change_a_byte(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "libx264", "-c:a", "aac", sound=True)
    for jobs in (1, 4):
        vireo("render", "in.mkv", f"{jobs}.mkv", "-f", "Color Balance:red=0@0f..510@20f,mix=0@0s..100@1s",
              "-f", "Ghosting", "-f", "Edge Feather:amount=0@0f..hold..20@9f..5@15f,from=3f", "-f", "Solarize", "--jobs", jobs)
    assert (tmp_path / "1.mkv").read_bytes() == (tmp_path / "4.mkv").read_bytes()


@pytest.mark.parametrize("field_first", ["tff", "bff"])
def test_interlaced_clips_stay_so_and_keep_their_chroma(vireo, tmp_path, field_first):
    # Two fields of quite different colours: chroma that crosses from one to the other shows at once.
    source = ("color=c=0x905050:s=64x48:r=25:d={seconds}[a];color=c=0x508090:s=64x48:r=25:d={seconds}[b];"
              "[a][b]interleave,format=yuv444p,tinterlace=mode=interleave_top")
    clip(tmp_path, "in.mkv", "-c:v", "libx264", "-qp", "0", "-pix_fmt", "yuv420p", "-flags", "+ildct", "-x264-params",
         field_first + "=1", "-vf", f"scale=interl=1,setfield={field_first}", source=source, seconds=0.2)
    flags = [(f["interlaced_frame"], f["top_field_first"]) for f in frames(tmp_path, "in.mkv")]
    assert flags[0] == (1, int(field_first == "tff"))
    vireo("render", "in.mkv", "out.mkv", *IDENTITY, "--encoder-option", "qp=0")
    assert [(f["interlaced_frame"], f["top_field_first"]) for f in frames(tmp_path, "out.mkv")] == flags
    assert apart(samples(tmp_path, "in.mkv", "yuv420p"), samples(tmp_path, "out.mkv", "yuv420p")) <= 2

    vireo("render", "in.mkv", "p.mkv", *IDENTITY, "--progressive")
    assert {f["interlaced_frame"] for f in frames(tmp_path, "p.mkv")} == {0}


@pytest.mark.parametrize("degrees", [90, 180, 270])
def test_rotated_video_comes_out_upright(vireo, tmp_path, degrees):
    clip(tmp_path, "plain.mp4", "-c:v", "libx264", "-qp", "0", "-pix_fmt", "yuv420p", seconds=0.08)
    ffmpeg("-i", "plain.mp4", "-c", "copy", "-metadata:s:v", f"rotate={degrees}", "in.mp4", cwd=tmp_path)
    vireo("render", "in.mp4", "out.mkv", *IDENTITY, "--encoder", "ffv1")
    after = probe(tmp_path, "out.mkv")
    assert "side_data_list" not in after
    assert (after["width"], after["height"]) == ((160, 120) if degrees == 180 else (120, 160))
    # FFmpeg turns it by itself while reading.
    assert apart(samples(tmp_path, "in.mp4", "yuv420p"), samples(tmp_path, "out.mkv", "yuv420p")) <= 2


@pytest.mark.parametrize("extension", ["jpg", "png", "tif", "webp"])
def test_exif_orientations_are_applied(vireo, tmp_path, extension):
    picture = Image.new("RGB", (48, 32), (200, 40, 40))
    picture.paste((40, 200, 40), (0, 0, 16, 16))
    exif = Image.Exif()
    exif[0x0112] = 6
    picture.save(tmp_path / f"in.{extension}", exif=exif, **({"lossless": True} if extension == "webp" else {}))
    vireo("render", f"in.{extension}", "out.png", *IDENTITY)
    expected = numpy.asarray(picture.transpose(Image.ROTATE_270)).astype(int)
    assert numpy.abs(read_picture(tmp_path / "out.png") - expected).mean() < 6


def test_alpha_is_kept_where_it_can_be(vireo, tmp_path):
    source = SMOOTH + ",format=rgba,geq=r='r(X,Y)':g='g(X,Y)':b='b(X,Y)':a='255*X/W'"
    clip(tmp_path, "in.mov", "-c:v", "qtrle", "-pix_fmt", "argb", source=source, seconds=0.04)
    alpha = samples(tmp_path, "in.mov", "rgba")[3::4]
    for out, codec, options in (("out.mov", "prores", ()), ("out.mkv", "ffv1", ()), ("q.mov", "qtrle", ("--encoder", "qtrle"))):
        vireo("render", "in.mov", out, *IDENTITY, *options)
        assert probe(tmp_path, out)["codec_name"] == codec
        assert apart(alpha, samples(tmp_path, out, "rgba")[3::4]) <= 1
    vireo("render", "in.mov", "a%02d.png", *IDENTITY)
    assert read_picture(tmp_path / "a01.png").shape == (120, 160, 4)
    assert b"--alpha" in vireo("render", "in.mov", "out.mp4", *IDENTITY).stderr


def test_premultiplied_colours_come_back(vireo, tmp_path):
    pixels = numpy.zeros((8, 256, 4), numpy.uint8)
    pixels[..., 3] = numpy.arange(256)
    pixels[..., :3] = numpy.arange(256)[None, :, None] // 2
    Image.fromarray(pixels).save(tmp_path / "in.png")
    vireo("render", "in.png", "out.png", *IDENTITY, "--premultiplied")
    assert numpy.array_equal(read_picture(tmp_path / "out.png"), pixels)
    # Straight, every pixel is the same grey of 127 or 128.
    vireo("render", "in.png", "flip.png", "-f", "Solarize:threshold=254", "--premultiplied")
    assert abs(int(read_picture(tmp_path / "flip.png")[0, 255][0]) - 127) <= 1


def test_deeper_sources_are_dithered_and_told(vireo, tmp_path):
    source = "color=c=black:s=64x64:r=25:d={seconds},format=yuv444p10,geq=lum='502':cb=512:cr=512"
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", "-pix_fmt", "yuv444p10", source=source, seconds=0.08)
    result = vireo("render", "in.mkv", "out%d.png", *IDENTITY)
    assert result.stderr.decode().count("10-bit") == 1
    grey = read_picture(tmp_path / "out1.png")[..., 0]
    assert len(numpy.unique(grey)) == 2 and abs(grey.mean() - (502 - 64) / 876 * 255) < 0.1
    vireo("render", "in.mkv", "rounded%d.png", *IDENTITY, "--dither", "none")
    assert (read_picture(tmp_path / "rounded1.png")[..., :3] == round((502 - 64) / 876 * 255)).all()


def test_hdr_is_warned_of(vireo, tmp_path):
    clip(tmp_path, "in.mp4", "-pix_fmt", "yuv420p10", "-color_trc", "smpte2084", "-color_primaries", "bt2020",
         "-colorspace", "bt2020nc", seconds=0.08)
    result = vireo("render", "in.mp4", "out.mp4", *IDENTITY)
    assert b"warning" in result.stderr and b"HDR" in result.stderr
    assert probe(tmp_path, "out.mp4")["color_transfer"] == "smpte2084"


def test_odd_sizes_and_pixel_aspects(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", "-pix_fmt", "yuv420p", "-vf", "scale=161:121,setsar=16/11", seconds=0.12)
    vireo("render", "in.mkv", "out.mp4", *IDENTITY)
    after = probe(tmp_path, "out.mp4")
    assert [after[entry] for entry in ("width", "height", "pix_fmt", "sample_aspect_ratio")] == [161, 121, "yuv444p", "16:11"]
    vireo("render", "in.mkv", "out.mkv", *IDENTITY, "--encoder", "ffv1")
    assert apart(samples(tmp_path, "in.mkv", "yuv420p"), samples(tmp_path, "out.mkv", "yuv420p")) <= 2


def test_sound_and_subtitles_are_converted_or_named(vireo, tmp_path):
    (tmp_path / "s.srt").write_text("1\n00:00:00,200 --> 00:00:00,800\nHello\n")
    clip(tmp_path, "in.mkv", "-map", "0:v", "-map", "1:a", "-map", "2:s", "-c:v", "libx264", "-c:a", "pcm_s16le", "-c:s", "srt",
         sound=True, inputs=("-i", "s.srt"))
    for out, sound, words, *options in (("out.mp4", "aac", b"converted"), ("same.mkv", "pcm_s16le", b""),
                                        ("out.y4m", None, b"left out"), ("silent.mkv", None, b"", "--no-audio")):
        result = vireo("render", "in.mkv", out, *IDENTITY, *options)
        assert words in result.stderr and (b"pcm_s16le" in result.stderr or not words)
        assert (probe(tmp_path, out, "a:0") or {}).get("codec_name") == sound
    assert abs(packets_seconds(tmp_path, "out.mp4", "a:0")[1] - 1) < 0.06
    assert [probe(tmp_path, out, "s:0")["codec_name"] for out in ("out.mp4", "same.mkv")] == ["mov_text", "subrip"]


def test_sequences_keep_their_numbers(vireo, tmp_path, pixels):
    for number in (7, 8, 9, 10):
        Image.fromarray(numpy.roll(pixels, number, 1)).save(tmp_path / f"in{number:03d}.png")
    vireo("render", "in%03d.png", "out%03d.png", *IDENTITY)
    for number in (7, 10):
        assert numpy.array_equal(read_picture(tmp_path / f"out{number:03d}.png")[..., :3], numpy.roll(pixels, number, 1))
    vireo("render", "in%03d.png", "part%d.tif", *IDENTITY, "--frames", "2-3")
    vireo("render", "in%03d.png", "new%d.bmp", *IDENTITY, "--start-number", "1")
    vireo("render", "in%03d.png", "clip.mkv", *IDENTITY)
    vireo("render", "clip.mkv", "v%02d.png", *IDENTITY, "--frames", "1-2")
    assert names(tmp_path, "part*") + names(tmp_path, "new*") + names(tmp_path, "v*") == [
        "part10.tif", "part9.tif", "new1.bmp", "new2.bmp", "new3.bmp", "new4.bmp", "v02.png", "v03.png"]
    assert "exists" in vireo.error("render", "in%03d.png", "part%d.tif", *IDENTITY, status=1)
    assert "one picture" in vireo.error("render", "clip.mkv", "one.png", *IDENTITY)


def test_pipes_carry_a_clip_in_and_out(vireo, tmp_path):
    clip(tmp_path, "in.mkv", "-c:v", "ffv1", "-pix_fmt", "yuv420p", "-c:a", "flac", sound=True)
    stored = (tmp_path / "in.mkv").read_bytes()
    (tmp_path / "out.mkv").write_bytes(vireo("render", "-", "-", *IDENTITY, "--encoder", "ffv1", input=stored).stdout)
    assert apart(samples(tmp_path, "in.mkv", "yuv420p"), samples(tmp_path, "out.mkv", "yuv420p")) <= 2
    assert probe(tmp_path, "out.mkv", "a:0")["codec_name"] == "flac"
    # Without a known length the end is told when it is met, and the range alone says which names are taken.
    for part, told in (("24-30", True), ("0-1", False)):
        result = vireo("render", "-", "p%02d.png", *IDENTITY, "--frames", part, input=stored)
        assert (b"standard input ends with frame 24" in result.stderr) == told
    assert b"p25.png exists" in vireo("render", "-", "p%02d.png", *IDENTITY, "--start", "0.9", input=stored, status=1).stderr
    assert names(tmp_path, "p*") == ["p01.png", "p02.png", "p25.png"]
    y4m = ffmpeg("-i", "in.mkv", "-f", "yuv4mpegpipe", "-", cwd=tmp_path)
    piped = vireo("render", "-", "-", *IDENTITY, "--format", "y4m", input=y4m)
    assert piped.stdout.startswith(b"YUV4MPEG2 W160 H120 F25:1") and len(piped.stdout) == len(y4m)


def test_unknown_options_are_refused(vireo, tmp_path):
    clip(tmp_path, "in.mp4", seconds=0.2)
    for option, word in (("--encoder-option", "nonsense=1"), ("--encoder", "bogus"), ("--pixel-format", "yuv9")):
        assert word.split("=")[0] in vireo.error("render", "in.mp4", "out.mp4", *IDENTITY, option, word)
    assert names(tmp_path, "*") == ["in.mp4"]
