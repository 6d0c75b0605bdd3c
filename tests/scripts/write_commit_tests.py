# SPDX-License-Identifier: MIT
"""The commit in `vireo --version`: looked up in histories made for it."""
import os
import pathlib
import re
import subprocess

SCRIPT = pathlib.Path(__file__).resolve().parents[2] / "cmake/WriteCommit.cmake"


def git(folder, *words):
    identity = {f"GIT_{who}_{what}": "a@b" for who in ("AUTHOR", "COMMITTER") for what in ("NAME", "EMAIL")}
    return subprocess.run(["git", *words], cwd=folder, check=True, capture_output=True, text=True,
                          env={**os.environ, **identity}).stdout.strip()


def written(sources, output, program="git"):
    (sources / "in").write_text("@commit@")
    subprocess.run(["cmake", "-D", f"GIT={program}", "-D", f"SOURCES={sources}", "-D", f"TEMPLATE={sources}/in",
                    "-D", f"OUTPUT={output}", "-P", SCRIPT], check=True, capture_output=True)
    return output.read_text().strip()


def test_tells_commit_and_changes_and_touches_nothing_without(tmp_path):
    sources, output = tmp_path / "a b", tmp_path / "commit.cpp"
    (sources / "inner").mkdir(parents=True)
    assert written(sources, output) == "unknown"
    git(sources, "init", "-q")
    assert written(sources, output) == "unknown", "no commit yet"
    (sources / "file").write_text("one")
    git(sources, "add", "file")
    git(sources, "commit", "-qm", "one")
    commit = written(sources, output)
    assert re.fullmatch("[0-9a-f]{12}", commit) and git(sources, "rev-parse", "HEAD").startswith(commit)

    os.utime(output, (1, 1))
    assert written(sources, output) == commit and output.stat().st_mtime == 1
    (sources / "file").write_text("two")
    assert written(sources, output) == commit + "-modified"
    assert written(sources / "inner", output) == "unknown", "another project's history"
    assert written(sources, output, "no-such-git") == "unknown"
