# SPDX-License-Identifier: MIT
"""The nightly report, of nights whose checks only say what they are told."""
import os
import pathlib
import shutil
import subprocess

import pytest

NIGHTLY = pathlib.Path(__file__).parents[2] / "scripts/nightly"
CHECK = """#!/bin/bash
mkdir -p build/check build/fuzz/faults
touch build/fuzz/faults/module-crash-$CRASH
echo "module, avx2: $INPUTS inputs" >build/check/fuzzing.log
echo "all   970 of 1000  $LINES % 900 of 1000  90.0 %" >build/check/coverage.log
echo "$SIZE bytes 0a1b vireo.deb" >build/check/reproducible.log
echo '<testsuite><testcase name="good" status="run"/><testcase name="broken" status="fail"/></testsuite>' >build/check/linux.xml
echo "linux $((200 - BROKEN)) passed, $BROKEN failed, 12 s"
echo "debian-arm 1 passed, 0 failed, 3 s"
((BROKEN == 0))
"""


@pytest.fixture
def project(tmp_path):
    def git(*words):
        subprocess.run(["git", "-c", "user.name=A", "-c", "user.email=a@b.invalid", *words], cwd=tmp_path, check=True)

    (tmp_path / "scripts").mkdir()
    shutil.copy(NIGHTLY, tmp_path / "scripts")
    (tmp_path / "check").write_text(CHECK)
    (tmp_path / "check").chmod(0o755)
    git("init", "-q")
    git("add", ".")
    git("commit", "-q", "-m", "One change")
    return tmp_path


def night(project, **told):
    run = subprocess.run([project / "scripts/nightly"], env={**os.environ, **told}, capture_output=True, text=True)
    return run.returncode, (project / "build/nightly/report.txt").read_text().split("=== ")[1]


def test_a_night_tells_what_failed_and_what_changed(project):
    before = {"CRASH": "1", "INPUTS": "12000000", "LINES": "97.0", "SIZE": "1000", "BROKEN": "0"}
    status, report = night(project, **before)
    assert status == 0 and "One change\npassed" in report and "new faults of fuzzers: module-crash-1\n" in report
    # A known fault is none that is new.
    status, report = night(project, **before)
    assert status == 0 and "new faults of fuzzers: none" in report and report.count("(=)") == 6
    status, report = night(project, **{**before, "CRASH": "2", "LINES": "96.5", "SIZE": "1004", "BROKEN": "3"})
    assert status == 1 and "FAILED: linux" in report and "module-crash-2" in report
    assert "    broken\n" in report and "good" not in report
    for change in ("197 passed,   3 failed,    12 s  (-3)", "96.5 %  (-0.5)", "1004 bytes  (+4)", "12000000   (=)"):
        assert change in report, report
    assert (project / "build/nightly/report.txt").read_text().count("=== ") == 3
