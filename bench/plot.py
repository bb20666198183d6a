#!/usr/bin/python3
"""Measures all kernels on full HD planes and writes docs/performance.svg and the table beside it.

usage: bench/plot.py BUILD_FOLDER OUTPUT_PREFIX    (python3-matplotlib)

Writes OUTPUT_PREFIX.svg, a bar per case: how many times as fast as the best peer; and OUTPUT_PREFIX-table.md.
"""
import sys

import matplotlib

matplotlib.use("svg")
import matplotlib.pyplot as plt

from ratios import measure

KERNELS = ["deconvFFT", "deconvLR", "distance", "peak step", "label", "watershed", "separator"]


def rows(build_folder):
    for kernel in KERNELS:
        for case, times in measure(build_folder, f"^{kernel}.*1920x1080").items():
            ours = times.pop("numeric", None)
            if ours is None or not times:
                continue
            peer = min(times, key=times.get)
            yield case.rsplit("/", 1)[0], ours, peer, times[peer]


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__)
    build_folder, prefix = sys.argv[1:]
    table = list(rows(build_folder))
    with open(prefix + "-table.md", "w") as out:
        out.write("| kernel / case | ours, ms | best peer | peer, ms | ratio |\n|---|---:|---|---:|---:|\n")
        for case, ours, peer, theirs in table:
            out.write(f"| {case} | {ours:.2f} | {peer} | {theirs:.2f} | **{theirs / ours:.1f}** |\n")

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
    figure.savefig(prefix + ".svg", metadata={"Date": None})


if __name__ == "__main__":
    main()
