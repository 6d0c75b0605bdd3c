#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Plants known faults in a copy of the last commit, one at a time, and tells which test finds each.

The faults are those of planted_faults.toml, beside this script. The result is 1 where one was not found. What was
found is kept beside the copy, as long as code and tests stay as they are: after a break the same command goes on.
"""

import argparse
import hashlib
import json
import os
import re
import shutil
import signal
import subprocess
import sys
import time
import tomllib
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
FAULTS = Path(__file__).with_name("planted_faults.toml")

# A planted fault's text is no longer where this test of ours looks for it.
OWN_TEST = "planted_faults"

# Tests run in groups, those first that take fewer seconds than this.
GROUPS = (3, 15, float("inf"))

LEAST_TIMEOUT = 120


class Failed(Exception):
    pass


@dataclass(frozen=True)
class Fault:
    name: str
    file: str
    old: str
    new: str
    breaks: str
    preset: str = ""  # that finds it, where it is not the usual one
    tests: tuple = ()  # programs of that preset to build and run

    def key(self):
        told = "\0".join((self.file, self.old, self.new, self.preset, *self.tests))
        return f"{self.name} {hashlib.sha256(told.encode()).hexdigest()[:12]}"

    def planted(self, text):
        return text.replace(self.old, self.new)


def read_faults():
    entries = tomllib.loads(FAULTS.read_text(encoding="utf-8"))["fault"]
    return [Fault(**entry | {"tests": tuple(entry.get("tests", ()))}) for entry in entries]


def problems(faults, root):
    """Why faults cannot be planted."""
    names = [fault.name for fault in faults]
    for fault in faults:
        if names.count(fault.name) > 1:
            yield f"{fault.name}: another fault has the name"
        if fault.old == fault.new:
            yield f"{fault.name}: changes nothing"
        file = root / fault.file
        if not file.is_file():
            yield f"{fault.name}: there is no {fault.file}"
            continue
        times = file.read_text(encoding="utf-8").count(fault.old)
        if times != 1:
            yield f"{fault.name}: {fault.file} holds its text {times} times and not once: {fault.old}"


def state_of(folder):
    """The last commit's code and tests: pages and scripts leave what was found as it is."""
    listed = subprocess.check_output(["git", "-C", folder, "ls-tree", "HEAD"], text=True).splitlines()
    told = "\n".join(line for line in listed if line.split("\t")[1] not in ("docs", "scripts"))
    return hashlib.sha256(told.encode()).hexdigest()


def run(command, folder, environment, timeout=None):
    """The output, and whether the command was successful. One that takes too long is ended and was not."""
    process = subprocess.Popen(command, cwd=folder, env=environment, text=True, errors="replace",
                               stdout=subprocess.PIPE, stderr=subprocess.STDOUT, start_new_session=True)
    try:
        output, _ = process.communicate(timeout=timeout)
        return output, process.returncode == 0
    except subprocess.TimeoutExpired:
        os.killpg(process.pid, signal.SIGKILL)
        return process.communicate()[0] + f"\nended after {timeout:.0f} s\n", False
    except BaseException:
        os.killpg(process.pid, signal.SIGKILL)
        raise


class Copy:
    """A clone of the last commit with its builds."""

    def __init__(self, folder, jobs):
        self.folder = folder / "tree"
        self.jobs = str(jobs)
        # The first failure of a program is enough.
        self.environment = os.environ | {"CCACHE_BASEDIR": str(self.folder), "CCACHE_NOHASHDIR": "1",
                                         "GTEST_FAIL_FAST": "1", "PYTEST_ADDOPTS": "-x"}
        if shutil.which("ccache"):
            for language in ("C", "CXX"):
                self.environment.setdefault(f"CMAKE_{language}_COMPILER_LAUNCHER", "ccache")

    def update(self):
        if not self.folder.exists():
            self.folder.parent.mkdir(parents=True, exist_ok=True)
            self.git("clone", "--quiet", "--shared", "--no-checkout", ROOT, self.folder, folder=ROOT)
        self.git("fetch", "--quiet", "origin", "+HEAD:refs/planted")
        self.git("checkout", "--quiet", "--force", "--detach", "refs/planted")

    def git(self, *arguments, folder=None):
        subprocess.run(["git", *arguments], cwd=folder or self.folder, check=True)

    def plant(self, fault):
        file = self.folder / fault.file
        file.write_text(fault.planted(file.read_text(encoding="utf-8")), encoding="utf-8")

    def restore(self, fault):
        self.git("checkout", "--quiet", "--force", "--", fault.file)

    def build(self, preset, targets=()):
        output, built = run(["cmake", "--preset", preset], self.folder, self.environment)
        if built:
            chosen = ["--target", *targets] if targets else []
            output, built = run(["cmake", "--build", "--preset", preset, "-j", self.jobs, *chosen], self.folder,
                                self.environment)
        return output, built

    def test_names(self, preset):
        output, _ = run(["ctest", "--preset", preset, "--show-only=json-v1"], self.folder, self.environment)
        tests = json.loads(output[output.index("{"):])["tests"]
        return [test["name"] for test in tests if test["name"] != OWN_TEST]

    def test(self, preset, names, *options, timeout=None, inside=None):
        """`inside`: a part of the tests alone, as GoogleTest or pytest call it."""
        chosen = "^(" + "|".join(map(re.escape, names)) + ")$"
        environment = self.environment
        if inside and "::" in inside:
            environment = environment | {"PYTEST_ADDOPTS": "-x -k " + inside.split("::")[-1].split("[")[0]}
        elif inside:
            environment = environment | {"GTEST_FILTER": inside}
        return run(["ctest", "--preset", preset, "-j", self.jobs, "-R", chosen, *options], self.folder, environment,
                   timeout)

    def test_times(self, preset, names):
        """Seconds of each test that passes, those that fail."""
        results = self.folder.parent / "tests.xml"
        output, _ = self.test(preset, names, "--output-junit", results)
        times, failing = {}, []
        for case in ElementTree.parse(results).getroot().iter("testcase"):
            if case.get("status") == "run":
                times[case.get("name")] = float(case.get("time"))
            else:
                failing.append(case.get("name"))
        if failing:
            (self.folder.parent / "unplanted.log").write_text(output, encoding="utf-8")
        return times, failing


def failure_in(output):
    """The test that failed first in what ctest printed, and its part that failed."""
    failed = re.search(r"Test\s+#\d+: ([^ .]+) \.*\s*\**\s*(?:Failed|Timeout|Exception|Subprocess|Not Run)", output)
    inside = re.search(r"^(?:\[  FAILED  \] ([\w./]+)|(?:FAILED|ERROR) (\S+::.+?)(?: - .*)?$)", output, re.MULTILINE)
    if not failed or not inside:
        return failed and failed[1], None
    return failed[1], inside[1] or inside[2].rsplit("/", 1)[-1]


class Results:
    def __init__(self, file, state):
        self.file = file
        self.kept = {"state": state, "times": {}, "failing": {}, "faults": {}}
        if file.exists():
            kept = json.loads(file.read_text(encoding="utf-8"))
            if kept["state"] == state:
                self.kept = kept

    def __getitem__(self, name):
        return self.kept[name]

    def save(self):
        temporary = self.file.with_suffix(".new")
        temporary.write_text(json.dumps(self.kept, indent=1), encoding="utf-8")
        temporary.replace(self.file)


class Planter:
    def __init__(self, folder, preset, jobs):
        self.preset = preset
        self.copy = Copy(folder, jobs)
        self.copy.update()
        self.results = Results(folder / f"{preset}.json", state_of(self.copy.folder))

    def times(self, preset, tests):
        """What tests take without a fault; those that fail without one are left out."""
        known = self.results["times"].get(preset, {})
        if known and (not tests or set(tests) <= known.keys()):
            return known
        print(f"without a fault ({preset}): ", end="", flush=True)
        output, built = self.copy.build(preset, tests)
        if not built:
            raise Failed(f"{preset} does not build without a fault:\n{output[-4000:]}")
        times, failing = self.copy.test_times(preset, tests or self.copy.test_names(preset))
        if not times:
            raise Failed(f"no test of {preset} passes without a fault")
        self.results["times"][preset] = known | times
        self.results["failing"][preset] = failing
        self.results.save()
        print(f"{len(times)} tests in {sum(times.values()):.0f} s"
              + (", left out because they fail: " + ", ".join(failing) if failing else ""), flush=True)
        return self.results["times"][preset]

    def groups(self, preset, tests):
        times = self.times(preset, tests)
        left = {name: seconds for name, seconds in times.items() if not tests or name in tests}
        for limit in GROUPS:
            group = {name: seconds for name, seconds in left.items() if seconds < limit}
            left = {name: seconds for name, seconds in left.items() if name not in group}
            if group:
                yield sorted(group, key=group.get), max(LEAST_TIMEOUT, 5 * sum(group.values()))

    def finder(self, fault, preset, names, timeout):
        """Which test fails, and does so twice: on a machine with other work some fail by chance."""
        while names:
            output, passed = self.copy.test(preset, names, "--stop-on-failure", timeout=timeout)
            if passed:
                break
            (self.copy.folder.parent / f"{fault.name}.log").write_text(output, encoding="utf-8")
            test, inside = failure_in(output)
            if test is None:
                return ", ".join(names) + ": do not end"
            if not self.copy.test(preset, [test], timeout=timeout, inside=inside)[1]:
                return f"{test}: {inside}" if inside else test
            print(f"{fault.name}: {test} failed once ({inside})", flush=True)
            names = [name for name in names if name != test]
        return None

    def find(self, fault):
        preset = fault.preset or self.preset
        groups = list(self.groups(preset, fault.tests))
        self.copy.plant(fault)
        try:
            started = time.monotonic()
            output, built = self.copy.build(preset, fault.tests)
            built_after = time.monotonic() - started
            if not built:
                (self.copy.folder.parent / f"{fault.name}.log").write_text(output, encoding="utf-8")
                return {"state": "does not compile", "build": built_after, "tests": 0}
            for names, timeout in groups:
                finder = self.finder(fault, preset, names, timeout)
                if finder:
                    return {"state": "found", "by": finder, "build": built_after,
                            "tests": time.monotonic() - started - built_after}
            return {"state": "not found", "build": built_after, "tests": time.monotonic() - started - built_after}
        finally:
            self.copy.restore(fault)

    def forget(self, faults):
        for fault in faults:
            self.results["faults"].pop(fault.key(), None)

    def find_all(self, faults):
        for fault in faults:
            if fault.key() in self.results["faults"]:
                continue
            found = self.find(fault)
            self.results["faults"][fault.key()] = found
            self.results.save()
            print(f"{fault.name}: {found.get('by', found['state'])} "
                  f"({found['build']:.0f} s + {found['tests']:.0f} s)", flush=True)
        return [self.results["faults"][fault.key()] for fault in faults]


def print_table(faults, results):
    print("\n| Fault | What it breaks | Found by | Build, s | Tests, s |\n|---|---|---|---|---|")
    for fault, found in zip(faults, results):
        by = f"`{found['by']}`" if "by" in found else f"**{found['state']}**"
        print(f"| {fault.name} | {fault.breaks} | {by} | {found['build']:.0f} | {found['tests']:.0f} |")
    count = sum(found["state"] == "found" for found in results)
    print(f"\n{count} of {len(faults)} found")
    return count == len(faults)


def arguments():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--list", action="store_true", help="print the faults and end")
    parser.add_argument("--check", action="store_true",
                        help="only tell whether each fault's text occurs once in the files as they are")
    parser.add_argument("--only", nargs="+", metavar="NAME", help="plant these alone")
    parser.add_argument("--build", type=Path, default=ROOT / "build/faults/linux", metavar="DIR/PRESET",
                        help="where the copy lies and which preset is built there; else build/faults/linux")
    parser.add_argument("--jobs", type=int, default=2, metavar="N", help="for building and testing; else 2")
    parser.add_argument("--again", action="store_true", help="plant also what was planted before")
    return parser.parse_args()


def main():
    asked = arguments()
    faults = read_faults()
    if asked.only:
        unknown = set(asked.only) - {fault.name for fault in faults}
        if unknown:
            print("there is no fault " + ", ".join(sorted(unknown)), file=sys.stderr)
            return 2
        faults = [fault for fault in faults if fault.name in asked.only]
    if asked.list:
        for fault in faults:
            print(f"{fault.name:24} {fault.file}: {fault.breaks}")
        return 0
    if asked.check:
        found = list(problems(faults, ROOT))
        print("\n".join(found or [f"{len(faults)} faults can be planted"]))
        return 1 if found else 0

    folder = asked.build.resolve().parent
    preset = asked.build.name
    try:
        planter = Planter(folder, preset, asked.jobs)
        found = list(problems(faults, planter.copy.folder))
        if found:
            raise Failed("\n".join(found))
        if asked.again:
            planter.forget(faults)
        return 0 if print_table(faults, planter.find_all(faults)) else 1
    except Failed as failure:
        print(failure, file=sys.stderr)
        return 1


if __name__ == "__main__":
    sys.exit(main())
