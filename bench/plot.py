#!/usr/bin/python3
"""Measures all kernels and writes the plot and the tables of docs/performance.md.

usage: bench/plot.py BUILD_FOLDER OUTPUT_PREFIX    (python3-matplotlib)

Writes OUTPUT_PREFIX.svg, a bar per case: how many times as fast as the best peer on full HD planes; and
OUTPUT_PREFIX-tables.md: the same in figures, and how the cost of a pixel grows with the size of the plane.
"""
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt

from ratios import measure, pixels

KERNELS = ["deconvFFT", "deconvLR", "distance", "peak step", "label", "watershed", "elementwise", "separator"]
FULL_HD = "1920x1080"
SIZES = ["512x512", FULL_HD, "3840x2160"]


def rows(cases):
    for case, times in cases.items():
        peers = {name: time for name, time in times.items() if name != "numeric"}
        if case.endswith("/" + FULL_HD) and "numeric" in times and peers:
            peer = min(peers, key=peers.get)
            yield case.rsplit("/", 1)[0], times["numeric"], peer, peers[peer]


def growths(cases):
    """The cost of a pixel at each size, in nanoseconds, of the cases measured at all sizes."""
    for case in cases:
        name, size = case.rsplit("/", 1)
        costs = [1e6 * cases[f"{name}/{s}"]["numeric"] / pixels(f"{name}/{s}") for s in SIZES
                 if "numeric" in cases.get(f"{name}/{s}", {})]
        if size == FULL_HD and len(costs) == len(SIZES):
            yield name, costs


def write_tables(table, growth, path):
    with open(path, "w") as out:
        out.write("| kernel / case | ours, ms | best peer | peer, ms | ratio |\n|---|---:|---|---:|---:|\n")
        for case, ours, peer, theirs in table:
            out.write(f"| {case} | {ours:.3g} | {peer} | {theirs:.3g} | **{theirs / ours:.1f}** |\n")
        out.write(f"\n| ns per pixel | {' | '.join(SIZES)} | largest / smallest |\n|---|{'---:|' * len(SIZES)}---:|\n")
        for case, costs in growth:
            figures = " | ".join(f"{cost:.2g}" for cost in costs)
            out.write(f"| {case} | {figures} | {max(costs) / min(costs):.2f} |\n")


def draw(table, path):
    figure, axes = plt.subplots(figsize=(8, 0.24 * len(table) + 1))
    ratios = [theirs / ours for _, ours, _, theirs in table]
    colours = {kernel: f"C{i}" for i, kernel in enumerate(KERNELS)}
    axes.barh([f"{case}  ({peer})" for case, _, peer, _ in table], ratios,
              color=[next(colours[k] for k in KERNELS if case.startswith(k)) for case, *_ in table])
    axes.axvline(1, color="black", linewidth=0.8)
    axes.set_xscale("log")
    axes.set_xticks([0.5, 1, 2, 4, 8, 16, 32], ["½", "1", "2", "4", "8", "16", "32"])
    axes.invert_yaxis()
    axes.tick_params(axis="y", labelsize=7)
    axes.set_xlabel("times as fast as the peer (1920 × 1080, one thread, medians of CPU time)")
    axes.margins(y=0.01)
    figure.tight_layout()
    figure.savefig(path, metadata={"Date": None})


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    build_folder, prefix = sys.argv[1:]
    cases = {}
    for kernel in KERNELS:
        cases.update(sorted(measure(build_folder, f"^{kernel}").items()))
    table = list(rows(cases))
    for kernel in KERNELS:
        if not any(case.startswith(kernel) for case, *_ in table):
            print(f"{kernel} is left out: the build has no peer for it; install the library and configure anew", file=sys.stderr)
    write_tables(table, growths(cases), prefix + "-tables.md")
    draw(table, prefix + ".svg")


if __name__ == "__main__":
    main()
