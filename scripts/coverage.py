#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""How much of module, host and engine the tests and the fuzzers' known inputs run.

scripts/coverage.py [--skip-tests] [--branches]     after cmake --build --preset coverage

Counts lines that hold more than brackets, and each condition's two ways as written in the source: what compilers add for
exceptions and destructors is none of it, nor is a condition that the compiler decided. Several instances of a template,
and a kernel's instruction sets, count as one. Fails when a line is neither reached nor named in tests/coverage.toml, when
one that is named there is reached or gone, or when less is reached than it says.
"""
import argparse
import collections
import json
import os
import pathlib
import re
import subprocess
import sys
import tomllib

ROOT = pathlib.Path(__file__).resolve().parent.parent
BUILD = ROOT / "build/coverage"
PROFILES = BUILD / "profiles"
FOLDERS = ("simd", "host", "framework", "filters", "engine")
SETS = ("baseline", "avx2", "avx512")
NO_CODE = re.compile(r"[\s{}();]*(else)?[\s{]*|\s*#.*")


def run(*command, **options):
    return subprocess.run([*map(str, command)], check=True, cwd=ROOT, **options)


def run_everything():
    PROFILES.mkdir(exist_ok=True)
    for profile in PROFILES.iterdir():
        profile.unlink()
    environment = {**os.environ, "LLVM_PROFILE_FILE": str(PROFILES / "%4m.profraw")}
    run("ctest", "--preset", "coverage", "--no-tests=error", env=environment)
    for corpus in sorted((ROOT / "tests/fuzz/corpus").iterdir()):
        program = BUILD / f"bin/{corpus.name}_fuzzer"
        for instructions in () if not program.exists() else SETS if corpus.name == "module" else ("",):
            run(program, "-runs=0", corpus, env={**environment, "VIREO_ISA": instructions}, stderr=subprocess.DEVNULL)


class Counts:
    """What clang's tools say of all programs and libraries together. The functions whose data they call mismatched are
    those that a file has and does not use; where they are used, they count."""

    def __init__(self):
        profile = PROFILES / "all.profdata"
        run("llvm-profdata-14", "merge", "-sparse", *PROFILES.glob("*.profraw"), "-o", profile)
        binaries = [path for path in (BUILD / "bin").iterdir() if path.is_file() and not path.is_symlink()
                    and path.read_bytes()[:4] == b"\x7fELF"]
        objects = [word for path in binaries[1:] for word in ("-object", path)]
        self._arguments = [f"-instr-profile={profile}", binaries[0], *objects,
                           *(ROOT / folder for folder in FOLDERS)]

    def files(self):
        export = run("llvm-cov-14", "export", "-format=text", "-skip-functions", *self._arguments,
                     stdout=subprocess.PIPE)
        return json.loads(export.stdout)["data"][0]["files"]

    def decided_conditions(self):
        """Lines and columns of the conditions that the compiler decided, by file."""
        shown = run("llvm-cov-14", "show", "-show-branches=count", "-show-instantiations=false", "-use-color=false",
                    *self._arguments, stdout=subprocess.PIPE, text=True).stdout
        decided, file = collections.defaultdict(set), None
        for line in shown.splitlines():
            if line.startswith(str(ROOT)) and line.endswith(":"):
                file = line[:-1]
            elif found := re.search(r"Branch \((\d+):(\d+)\): \[Folded", line):
                decided[file].add((int(found[1]), int(found[2])))
        return decided


def line_counts(segments, text):
    """How often each line ran, as its most frequent part. Some counts are differences, which turn negative where threads
    that count at once lost some: those did not run."""
    by_line = collections.defaultdict(list)
    for line, _, count, has_count, is_entry, is_gap in segments:
        by_line[line].append((count if count < 2**63 else 0, has_count, is_entry, is_gap))
    counts, wrapped = {}, None
    for line in range(segments[0][0], segments[-1][0] + 1) if segments else ():
        here = by_line.get(line, [])
        starts = [count for count, has_count, is_entry, is_gap in here if has_count and is_entry and not is_gap]
        skipped = here and not here[0][1] and here[0][2]
        holds_code = not NO_CODE.fullmatch(text[line - 1])
        if holds_code and not skipped and ((wrapped and wrapped[1]) or starts):
            counts[line] = max([*starts, *([wrapped[0]] if wrapped else [])])
        wrapped = here[-1] if here else wrapped
    return counts


def branch_counts(branches, decided):
    """Of each condition by its place, how often it held and how often not."""
    counts = collections.defaultdict(lambda: [0, 0])
    for line, column, end_line, end_column, held, not_held, *_ in branches:
        place = counts[line, column, end_line, end_column]
        place[0] += held
        place[1] += not_held
    return {place: count for place, count in counts.items() if any(count) or place[:2] not in decided}


def unreached_runs(lines):
    """Lines that follow one another and none of which ran."""
    runs, goes_on = [], False
    for line, count in sorted(lines.items()):
        if not count and goes_on:
            runs[-1].append(line)
        elif not count:
            runs.append([line])
        goes_on = not count
    return runs


def percent(part, whole):
    return 100 * part / whole if whole else 100.0


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--skip-tests", action="store_true", help="count what ran before")
    parser.add_argument("--branches", action="store_true", help="list the conditions that went one way alone")
    options = parser.parse_args()
    if not options.skip_tests:
        run_everything()

    kept = tomllib.loads((ROOT / "tests/coverage.toml").read_text(encoding="utf-8"))
    left = [(group, collections.Counter(group["lines"])) for group in kept["unreached"]]
    named, faults = collections.Counter(), []
    totals = collections.defaultdict(lambda: [0, 0, 0, 0])
    counts = Counts()
    decided = counts.decided_conditions()
    for file in counts.files():
        path = pathlib.Path(file["filename"]).relative_to(ROOT).as_posix()
        text = (ROOT / path).read_text(encoding="utf-8").splitlines()
        lines = line_counts(file["segments"], text)
        branches = branch_counts(file["branches"], decided[file["filename"]])
        ways = [bool(way) for count in branches.values() for way in count]
        for key in (path.split("/")[0], "all"):
            for index, number in enumerate((sum(map(bool, lines.values())), len(lines), sum(ways), len(ways))):
                totals[key][index] += number
        for unreached in unreached_runs(lines):
            name = f"{path}: {text[unreached[0] - 1].strip()}"
            for group, names in left:
                if names[name]:
                    names[name] -= 1
                    named[group["reason"]] += len(unreached)
                    break
            else:
                faults += ["neither reached nor named: "] + [f"    {path}:{line}: {text[line - 1]}" for line in unreached]
        if options.branches:
            for (line, column, *_), (held, not_held) in sorted(branches.items()):
                if not held or not not_held:
                    way = "never runs" if not held and not not_held else "never holds" if not held else "always holds"
                    print(f"{path}:{line}:{column}: {way}: {text[line - 1].strip()}")

    print(f"{'':10} {'lines':>23} {'branches':>23}")
    for key in (*FOLDERS, "all"):
        reached, lines, taken, ways = totals[key]
        print(f"{key:10} {reached:5} of {lines:5} {percent(reached, lines):6.2f} % "
              f"{taken:5} of {ways:5} {percent(taken, ways):6.2f} %")
    for reason, lines in named.items():
        print(f"{lines:4} lines not reached: {reason}")
    for group, names in left:
        if not group.get("depends_on_the_processor") and not group.get("is_miscounted"):
            faults += [f"named and reached or gone: {name}" for name in names.elements()]
    reached, lines, taken, ways = totals["all"]
    for what, now in (("lines", percent(reached, lines)), ("branches", percent(taken, ways))):
        if now < kept[what]:
            faults.append(f"{now:.2f} % of {what} are reached, {kept[what]} % are promised")
    print("\n".join(faults))
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
