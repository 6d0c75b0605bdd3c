#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs vireo_bench for each instruction set, peers held to the same one, and prints how many times as long as ours each
job's best peer takes, medians over the runs, with the geometric means. A round of the three sets takes a quarter of an
hour on an idle machine.
"""
import argparse
import os
import pathlib
import statistics
import subprocess

ROOT = pathlib.Path(__file__).resolve().parents[1]

# libyuv is held to VIREO_ISA by the program itself.
NO_AVX512 = "AVX512-SKX,AVX512-COMMON,AVX512-CNL,AVX512-CLX,AVX512-ICL"
SETS = {
    "AVX-512": {"VIREO_ISA": "avx512"},
    "AVX2": {"VIREO_ISA": "avx2", "OPENCV_CPU_DISABLE": NO_AVX512},
    "SSE2": {"VIREO_ISA": "baseline",
             "OPENCV_CPU_DISABLE": NO_AVX512 + ",AVX2,FMA3,FP16,AVX,SSE4.2,SSE4.1,SSSE3,SSE3,POPCNT"},
}
SIZES = ("1080p", "2160p")


def measured(program, settings):
    """{job: {who: [multiple of memcpy at each size]}}"""
    output = subprocess.run([program, "--benchmark_filter=-Camera Blur, 100 %.OpenCV"], env={**os.environ, **settings},
                            check=True, capture_output=True, text=True).stdout
    jobs = {}
    for line in output.splitlines():
        cells = [cell.strip() for cell in line.strip("| ").split("|")]
        if line.startswith("| ") and len(cells) == 4 and cells[0] not in ("Job", "memcpy"):
            jobs.setdefault(cells[0], {})[cells[1]] = [float(cell) for cell in cells[2:]]
    return jobs


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--program", default=ROOT / "build/bench/bin/vireo_bench")
    parser.add_argument("--set", choices=SETS, action="append", help="only this one; may be given several times")
    parser.add_argument("--rounds", type=int, default=1, help="how often each set is run, in turn")
    arguments = parser.parse_args()

    sets = arguments.set or list(SETS)
    ratios = {}  # (job, set): for each size, for each run, (ratio, peer)
    for name in sets * arguments.rounds:
        for job, who in measured(arguments.program, SETS[name]).items():
            ours = who.pop("Vireo")
            for i in range(len(SIZES) if who else 0):
                peer, theirs = min(who.items(), key=lambda entry, i=i: entry[1][i])
                ratios.setdefault((job, name), [[] for _ in SIZES])[i].append((theirs[i] / ours[i], peer))
    medians = {key: [statistics.median(ratio for ratio, _ in runs) for runs in row] for key, row in ratios.items()}
    print("| Job | Best peer |" + "".join(f" {name}, {size} |" for name in sets for size in SIZES))
    print("|---|---|" + "---|" * (len(sets) * len(SIZES)))
    for job in dict.fromkeys(job for job, _ in ratios):
        peers = dict.fromkeys(peer for name in sets for runs in ratios[job, name] for _, peer in runs)
        print(f"| {job} | {'; '.join(peers)} |"
              + "".join(f" {ratio:.1f} |" if ratio >= 2 else f" {ratio:.2f} |"
                        for name in sets for ratio in medians[job, name]))
    means = [statistics.geometric_mean(row[i] for (_, of), row in medians.items() if of == name)
             for name in sets for i in range(len(SIZES))]
    print("| Geometric mean | |" + "".join(f" {mean:.2f} |" for mean in means))


if __name__ == "__main__":
    main()
