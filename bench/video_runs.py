#!/usr/bin/python3
"""Times a video through the renderer with a filter that is off, against ffmpeg with the same encoder settings.

usage: video_runs.py BIN_FOLDER WORK_FOLDER [RUNS] [CLIP]       (ffmpeg)

Without CLIP, a clip of 10 seconds of 1920 x 1080 in H.264 is made in WORK_FOLDER. The programs take turns; printed are the
medians of wall and processor time and their ratios. The renderer turns each frame into RGB and back, ffmpeg does not.
"""
import os
import resource
import statistics
import subprocess
import sys
import time
from pathlib import Path

# Colours that RGB holds: others would be cut on the way, and the two encoders get different pictures.
SOURCE = "testsrc2=s=1920x1080:r=25:d=10,eq=saturation=0.5:contrast=0.8,noise=c0s=4:c0f=t"
ENCODER = ["-c:v", "libx264", "-preset", "medium", "-crf", "18", "-pix_fmt", "yuv420p"]


def timed(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    begin = time.monotonic()
    subprocess.run([str(part) for part in command], check=True)
    wall = time.monotonic() - begin
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    binaries, work = Path(sys.argv[1]), Path(sys.argv[2])
    runs = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    clip = Path(sys.argv[4]) if len(sys.argv) > 4 else work / "clip.mp4"
    work.mkdir(parents=True, exist_ok=True)
    if not clip.exists():
        subprocess.run(["ffmpeg", "-v", "error", "-f", "lavfi", "-i", SOURCE, *ENCODER, clip], check=True)
    programs = {
        "fxrender": [binaries / "fxrender", "apply", clip, "-o", work / "ours.mp4", "-q", "-f",
                     "Blur and enhance:Enabled=0"],
        "ffmpeg": ["ffmpeg", "-v", "error", "-y", "-i", clip, "-vf", "null", *ENCODER, work / "theirs.mp4"],
    }
    times = {name: [] for name in programs}
    for _ in range(runs):
        for name, command in programs.items():
            times[name].append(timed(command))
    medians = {name: [statistics.median(column) for column in zip(*rows)] for name, rows in times.items()}
    for name, (wall, processor) in medians.items():
        print(f"{name:10} wall {wall:6.2f} s   processor {processor:6.2f} s")
    ours, theirs = medians["fxrender"], medians["ffmpeg"]
    print(f"ratio      wall {ours[0] / theirs[0]:6.2f}     processor {ours[1] / theirs[1]:6.2f}"
          f"     ({runs} runs, {os.cpu_count()} processors)")


if __name__ == "__main__":
    main()
