#!/usr/bin/python3
"""Makes the pictures of docs/separator.md from real ones.

usage: separator_pictures.py BIN_FOLDER TOUCHING_OBJECTS TIMELAPSE_TEMPLATE OUTPUT_FOLDER
       (python3-numpy, python3-pil)

Writes separator-stages.png (the stages of the method) and separator-timelapse.png (outlines of the separated objects over
three frames) and prints how many objects each setting and each frame shows.
"""
import json
import subprocess
import sys
import tempfile
from pathlib import Path

import numpy as np
from PIL import Image, ImageDraw

OBJECTS = ["-f", "Adaptive threshold:Size=101,Min=0", "-f", "Open_Close:Dilate=3"]
NUCLEI = ["-f", "Blur and enhance:Blur=1", "-f", "Adaptive threshold:Size=31,Min=0", "-f", "Open_Close:Dilate=2",
          "-f", "Object separator:Det=20"]


def apply(folder, source, output, filters):
    report = Path(folder, "report.json")
    subprocess.run([BIN / "fxrender", "apply", source, "-o", output, "-q", "--report", report, *filters], check=True)
    return [frame.get("objects") for frame in json.loads(report.read_text())["frames"]]


def labelled(picture, text, scale):
    picture = picture.convert("RGB").resize((picture.width * scale, picture.height * scale), Image.NEAREST)
    framed = Image.new("RGB", (picture.width + 8, picture.height + 24), "white")
    framed.paste(picture, (4, 4))
    ImageDraw.Draw(framed).text((6, picture.height + 7), text, fill="black")
    return framed


def row(pictures):
    sheet = Image.new("RGB", (sum(p.width for p in pictures), max(p.height for p in pictures)), "white")
    x = 0
    for picture in pictures:
        sheet.paste(picture, (x, 0))
        x += picture.width
    return sheet


def stages(folder, source, output):
    two_level = Path(folder, "two-level.png")
    apply(folder, source, two_level, OBJECTS)
    counts = {d: apply(folder, two_level, Path(folder, "x.png"), ["-f", f"Object separator:Det={d}"])[0]
              for d in (3, 5, 8, 10, 20, 40, 80)}
    apply(folder, two_level, Path(folder, "stage-filled.png"), ["-f", "Object separator:Det=10"])
    subprocess.run([BIN / "separator_stages", two_level, "10", Path(folder, "stage")], check=True,
                   stdout=subprocess.DEVNULL)
    names = ["distance", "peaks", "seeds", "regions", "filled"]
    row([labelled(Image.open(two_level), "two-level input", 1)] +
        [labelled(Image.open(Path(folder, f"stage-{n}.png")), n, 1) for n in names]).save(output)
    print("Details -> objects:", counts)


def timelapse(folder, template, output):
    results = Path(folder, "separated_####.png")
    print("objects per frame:", apply(folder, template, results, NUCLEI))
    pictures = []
    for number in (2, 9, 29):
        frame = np.array(Image.open(template.replace("####", f"{number:04}"))).astype(float)
        grey = np.clip(255 * np.sqrt(frame / frame.max()), 0, 255).astype(np.uint8)
        white = np.array(Image.open(Path(folder, f"separated_{number:04}.png"))) > 0
        inner = white.copy()
        inner[1:-1, 1:-1] &= white[:-2, 1:-1] & white[2:, 1:-1] & white[1:-1, :-2] & white[1:-1, 2:]
        colour = np.stack([grey] * 3, axis=-1)
        colour[white & ~inner] = (255, 140, 0)
        pictures.append(labelled(Image.fromarray(colour), f"frame {number}", 2))
    row(pictures).save(output)


if __name__ == "__main__":
    if len(sys.argv) != 5:
        sys.exit(__doc__)
    BIN, OUT = Path(sys.argv[1]), Path(sys.argv[4])
    with tempfile.TemporaryDirectory() as temporary:
        stages(temporary, sys.argv[2], OUT / "separator-stages.png")
        timelapse(temporary, sys.argv[3], OUT / "separator-timelapse.png")
