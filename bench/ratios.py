#!/usr/bin/env python3
"""Runs numeric_bench and prints how many times as fast as each peer our kernels are.

usage: bench/ratios.py BUILD_FOLDER [FILTER]

FILTER is a regular expression over benchmark names (kernel/scene/size/library). All libraries run
interleaved in one process; the figures are medians of CPU time over nine repetitions.
"""

import json
import subprocess
import sys


def measure(build_folder, name_filter):
    command = [
        f"{build_folder}/bin/numeric_bench",
        f"--benchmark_filter={name_filter}",
        "--benchmark_repetitions=9",
        "--benchmark_min_time=0.05",
        "--benchmark_enable_random_interleaving=true",
        "--benchmark_report_aggregates_only=true",
        "--benchmark_format=json",
    ]
    report = json.loads(subprocess.run(command, check=True, capture_output=True).stdout)
    cases = {}
    for run in report["benchmarks"]:
        if run.get("aggregate_name") == "median":
            case, library = run["run_name"].rsplit("/", 1)
            cases.setdefault(case, {})[library] = run["cpu_time"]
    return cases


def pixels(case):
    width, _, height = case.rsplit("/", 1)[1].partition("x")
    return int(width) * int(height)


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    cases = measure(sys.argv[1], sys.argv[2] if len(sys.argv) == 3 else ".")
    for case, times in sorted(cases.items()):
        ours = times.pop("numeric")
        peers = "  ".join(f"{name} {time:.2f} ms ({time / ours:.1f}x)" for name, time in times.items())
        print(f"{case:48} {ours:8.2f} ms {1e6 * ours / pixels(case):8.2f} ns/pixel  {peers}")


if __name__ == "__main__":
    main()
