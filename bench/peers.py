#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs vireo_bench once for each instruction set, peers held to the same one, and prints how many times as long as
ours each job's best peer takes, with the geometric means. Takes a quarter of an hour on an idle machine.
"""
import argparse
import math
import os
import pathlib
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
    arguments = parser.parse_args()

    sets = arguments.set or list(SETS)
    ratios = {}  # (job, set): [(ratio, peer) at each size]
    for name in sets:
        for job, who in measured(arguments.program, SETS[name]).items():
            ours = who.pop("Vireo")
            if who:
                best = [min(who.items(), key=lambda peer, i=i: peer[1][i]) for i in range(len(SIZES))]
                ratios[job, name] = [(peer[1][i] / ours[i], peer[0]) for i, peer in enumerate(best)]
    print("| Job | Best peer |" + "".join(f" {name}, {size} |" for name in sets for size in SIZES))
    print("|---|---|" + "---|" * (len(sets) * len(SIZES)))
    for job in dict.fromkeys(job for job, _ in ratios):
        peers = dict.fromkeys(peer for name in sets for _, peer in ratios[job, name])
        print(f"| {job} | {'; '.join(peers)} |"
              + "".join(f" {ratio:.1f} |" if ratio >= 2 else f" {ratio:.2f} |"
                        for name in sets for ratio, _ in ratios[job, name]))
    means = [math.exp(sum(math.log(row[i][0]) for (_, of), row in ratios.items() if of == name)
                      / sum(of == name for _, of in ratios)) for name in sets for i in range(len(SIZES))]
    print("| Geometric mean | |" + "".join(f" {mean:.2f} |" for mean in means))


if __name__ == "__main__":
    main()
