# SPDX-License-Identifier: MIT
"""Files of jobs."""
import json

import pytest

from media_support import clip


def write(folder, jobs, name="jobs.json", lines=False):
    (folder / name).parent.mkdir(exist_ok=True)
    (folder / name).write_text("\n\n".join(map(json.dumps, jobs)) if lines else json.dumps(jobs, indent=1))
    return name


JOBS = [
    {"output": "a.png", "input": "in.png", "filter": ["Solarize:threshold=9", "Vertical Flip"]},
    {"input": "in.mkv", "output": "part.mkv", "settings": "look.json", "frames": "3-7", "encoder": "ffv1",
     "encoder-option": ["g=1", "slices=4"], "no-audio": True, "strict": False, "alpha": None},
    {"input": ["in.png", "a.png"], "to": "many", "name": "{stem}.webp", "preset": "sepia", "start-number": 3},
]


def same(folder, first, second):
    return (folder / first).read_bytes() == (folder / second).read_bytes()


@pytest.mark.parametrize("lines", [False, True])
def test_jobs_are_renders_beside_their_file(vireo, tmp_path, picture, lines):
    below = tmp_path / "below"
    below.mkdir()
    picture.rename(below / "in.png")
    clip(below, "in.mkv", "-c:v", "libx264", sound=True)
    vireo("render", "-f", "Ghosting", "--save-settings", "below/look.json")
    jobs = write(tmp_path, JOBS, "below/jobs.json", lines)
    report = json.loads(vireo("batch", jobs, "--json").stdout)
    assert [job["job"] for job in report["jobs"]] == [1, 2, 3] and report["summary"]["done"] == 4
    assert [filter["filter"] for filter in report["jobs"][0]["chain"]] == ["Solarize", "Vertical Flip"]
    assert report["jobs"][1]["renders"][0]["frames"] == 5
    vireo.folder = below
    vireo("render", "in.png", "a2.png", "-f", "Solarize:threshold=9", "-f", "Vertical Flip")
    vireo("render", "in.mkv", "part2.mkv", "-f", "Ghosting", "--frames", "3-7", "--encoder", "ffv1", "--encoder-option", "g=1",
          "--encoder-option", "slices=4", "--no-audio")
    vireo("render", "a.png", "many2.webp", "--preset", "sepia")
    assert same(below, "a.png", "a2.png") and same(below, "part.mkv", "part2.mkv") and same(below, "many/a.webp", "many2.webp")


def test_what_is_done_is_skipped_and_what_fails_is_named(vireo, tmp_path, picture):
    jobs = [{"input": "in.png", "output": f"{n}.png", "filter": "Solarize"} for n in range(3)]
    jobs[1]["input"] = "missing.png"
    text = json.dumps(jobs).encode()
    assert vireo("batch", "-", input=text, status=1).stderr.decode().endswith("2 done, 0 skipped, 1 failed: missing.png.\n")
    (tmp_path / "missing.png").write_bytes(picture.read_bytes())
    before = (tmp_path / "0.png").stat().st_mtime_ns
    report = json.loads(vireo("batch", "-", "--json", input=text).stdout)
    assert report["summary"] == {"planned": 3, "done": 1, "skipped": 2, "failed": 0}
    assert (tmp_path / "0.png").stat().st_mtime_ns == before
    assert vireo("batch", "-", "--overwrite", input=text).stderr.decode().endswith("3 done, 0 skipped, 0 failed.\n")
    assert (tmp_path / "0.png").stat().st_mtime_ns != before
    assert "Job 3" in vireo("batch", "-", "--dry-run", input=text).stdout.decode()


@pytest.mark.parametrize("entry, said", [
    ({"input": "in.png", "output": "x.png", "filter": "Solarise"}, "Solarise"),
    ({"input": "in.png", "output": "x.png", "filter": "Solarize", "strength": 3}, '"strength"'),
    ({"input": "in.png", "output": "x.png", "filter": "Solarize", "alpha": "yes"}, "true or false"),
    ({"input": "in.png", "output": "x.png", "filter": "Solarize", "frames": "9-3"}, "ends before it begins"),
    ({"input": "in.png", "output": "x.png", "filter": "Solarize", "encoder": {"name": "png"}}, "a text or a number"),
    ({"input": "in.png", "output": "x.png"}, "no filter"),
    ({"input": "in.png", "filter": "Solarize"}, "an output or a folder"),
    ({"input": "in.png", "output": "x.png", "to": "y", "filter": "Solarize"}, "an output or a folder"),
    ({"output": "x.png", "filter": "Solarize"}, "no input"),
    ({"input": "in.png", "output": "-", "filter": "Solarize"}, "files"),
    ({"input": "in.png", "output": "./good.png", "filter": "Solarize"}, "written by job 1 too"),
    ("in.png", "no JSON object"),
])
def test_each_wrong_job_is_named_before_any_work(vireo, tmp_path, picture, entry, said):
    good = {"input": "in.png", "output": "good.png", "filter": "Solarize"}
    wrong = {"input": "in.png", "output": "w.png", "filter": "Levels:nothing=1"}
    completed = vireo("batch", write(tmp_path, [good, entry, wrong]), status=2)
    lines = completed.stderr.decode().splitlines()
    assert len(lines) == 2 and lines[0].startswith("vireo: job 2: ") and said in lines[0], lines
    assert lines[1].startswith("vireo: job 3: ")
    assert not (tmp_path / "good.png").exists()
    report = json.loads(vireo("batch", "jobs.json", "--json", status=2).stdout)
    assert [(job["job"], job["status"]) for job in report["jobs"]] == [(2, 2), (3, 2)]


@pytest.mark.parametrize("text, said", [("", "no jobs"), ("[]", "no jobs"), ('[{"input":\n "a"', "line 2")])
def test_a_file_without_jobs_is_refused(vireo, tmp_path, text, said):
    (tmp_path / "jobs.json").write_text(text)
    assert said in vireo.error("batch", "jobs.json")
