#!/usr/bin/python3
"""Whole runs beside a script of ten lines with OpenCV: read, filter, write.

    bench/whole_runs.py FXRENDER [PICTURE]

Makes photographs of 1920 x 1080 (PICTURE enlarged, or clouds, with the noise of a sensor), then runs both programs over them in
turn. The cost of a frame is the processor time of a long run less that of a short one, by the number of frames between: so the
start of Python and of the plug-in do not count. Medians over the repetitions. Needs python3-opencv, which nothing else does.

The files are in memory where the system has a folder with room for that: on a disk the kernel writes them with threads of its own,
whose time counts for neither program and is taken from whichever runs at the time.
"""
import concurrent.futures
import os
import shutil
import statistics
import subprocess
import sys
import tempfile
import time

import cv2
import numpy

SHORT, LONG, REEL, REPETITIONS = 2, 14, 168, 5
MEMORY, ROOM = "/dev/shm", 2 << 30
BLUR = ["-f", "Blur and enhance:Blur=4"]
FOUR = BLUR + ["-f", "Channel separation:Channel=5", "-f", "Adaptive threshold:Size=51,Min=0", "-f", "Object separator:Det=20"]
PEER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "whole_runs_peer.py")


def photographs(folder, picture):
    """LONG pictures in each format; returns nothing."""
    random = numpy.random.default_rng(1)
    if picture:
        scene = cv2.imread(picture)
        scale = max(1920 / scene.shape[1], 1080 / scene.shape[0])
        scene = cv2.resize(scene, None, fx=scale, fy=scale, interpolation=cv2.INTER_CUBIC)
        top = (scene.shape[0] - 1080) // 2
        scene = scene[top:top + 1080, :1920].astype(float)
    else:
        scene = sum(cv2.resize(random.uniform(0, 255, (1080 // size + 2, 1920 // size + 2, 3)), (1920, 1080),
                               interpolation=cv2.INTER_CUBIC) / 4 for size in (270, 90, 30, 10))
    for i in range(LONG):
        frame = numpy.clip(scene + random.normal(0, 3, scene.shape), 0, 255).astype(numpy.uint8)
        for suffix in "png", "jpg", "tif":
            cv2.imwrite(f"{folder}/{suffix}_{i:04}.{suffix}", frame)


def run(command):
    """Processor and wall time of a command, in seconds."""
    begin = time.monotonic()
    process = subprocess.Popen(command, stdout=subprocess.DEVNULL)
    _, status, usage = os.wait4(process.pid, 0)
    process.returncode = os.waitstatus_to_exitcode(status)
    if process.returncode != 0:
        raise SystemExit(f"{command[:3]} failed")
    return usage.ru_utime + usage.ru_stime, time.monotonic() - begin


def main():
    fxrender = sys.argv[1]
    isInMemory = os.path.isdir(MEMORY) and shutil.disk_usage(MEMORY).free >= ROOM
    if not isInMemory:
        print(f"{MEMORY} has no room: the files are in {tempfile.gettempdir()}, and what a disk costs is measured too", file=sys.stderr)
    work = tempfile.mkdtemp(prefix="whole_runs_", dir=MEMORY if isInMemory else None)
    photographs(work, sys.argv[2] if len(sys.argv) > 2 else None)

    def pattern(name):
        return f"{work}/{name}_####.{'png' if name == 'reel' else name}"

    def ours(name, filters, count, jobs=1):
        out = f"{work}/ours"
        shutil.rmtree(out, ignore_errors=True)
        return run([fxrender, "apply", pattern(name), "-o", out + "/", "--frames", f"0-{count - 1}",
                    "-j", str(jobs), "-q"] + filters)

    def twoPrograms(name, filters, count):
        """What the machine's processors have to give: nothing is shared between the two."""
        for shard in 1, 2:
            shutil.rmtree(f"{work}/half_{shard}", ignore_errors=True)
        begin = time.monotonic()
        with concurrent.futures.ThreadPoolExecutor() as pool:
            list(pool.map(lambda shard: run([fxrender, "apply", pattern(name), "-o", f"{work}/half_{shard}/",
                                             "--frames", f"0-{count - 1}", "--shard", f"{shard}/2", "-j", "1", "-q"] + filters),
                          (1, 2)))
        return 0, time.monotonic() - begin

    def peers(suffix, steps, count):
        out = f"{work}/peers"
        shutil.rmtree(out, ignore_errors=True)
        os.mkdir(out)
        return run(["/usr/bin/python3", PEER, steps, out] + [f"{work}/{suffix}_{i:04}.{suffix}" for i in range(count)])

    def perFrame(measure):
        """Milliseconds of processor time and of wall time."""
        short, long = measure(SHORT), measure(LONG)
        return [1000 * (b - a) / (LONG - SHORT) for a, b in zip(short, long)]

    def sizes(folder):
        return sum(os.path.getsize(f"{work}/{folder}/{name}") for name in os.listdir(f"{work}/{folder}"))

    try:
        print("| run, 1920 x 1080 | ours, ms | OpenCV, ms | ratio | size of ours |\n|---|---:|---:|---:|---:|")
        for suffix, steps, filters in (("png", "blur", BLUR), ("jpg", "blur", BLUR), ("tif", "blur", BLUR),
                                       ("png", "four", FOUR)):
            mine, others = [], []
            for _ in range(REPETITIONS):
                mine.append(perFrame(lambda count: ours(suffix, filters, count))[0])
                others.append(perFrame(lambda count: peers(suffix, steps, count))[0])
            a, b = statistics.median(mine), statistics.median(others)
            print(f"| {suffix}, {steps} | {a:.1f} | {b:.1f} | **{b / a:.2f}** | {sizes('ours') / sizes('peers'):.0%} |", flush=True)
        # By the clock, from the start of the program to its end, over the same photographs several times.
        for i in range(REEL):
            os.link(f"{work}/png_{i % LONG:04}.png", f"{work}/reel_{i:04}.png")
        ways = {"--jobs 1": lambda: ours("reel", BLUR, REEL, 1), "--jobs 2": lambda: ours("reel", BLUR, REEL, 2),
                "two programs": lambda: twoPrograms("reel", BLUR, REEL)}
        seconds = {way: [] for way in ways}
        for _ in range(REPETITIONS):
            for way, measure in ways.items():
                seconds[way].append(measure()[1])
        print(f"\n| {REEL} frames, PNG, blur | s | times as fast |\n|---|---:|---:|")
        for way, times in seconds.items():
            ratio = statistics.median(one / own for one, own in zip(seconds["--jobs 1"], times))
            print(f"| {way} | {statistics.median(times):.2f} | {ratio:.2f} |")
    finally:
        shutil.rmtree(work)


main()
