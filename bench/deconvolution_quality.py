#!/usr/bin/python3
"""How much closer deconvolution brings a blurred picture to its original.

usage: deconvolution_quality.py FXRENDER PICTURE...    (python3-numpy, python3-pil)

Blurs each picture with the very kernel that a method undoes, rounds it to 8 bits, renders every setting of that method with
fxrender and prints a table of PSNR in decibels as Markdown. A border of 8 pixels is left out of the comparison.
"""
import subprocess
import sys
import tempfile
from pathlib import Path

import numpy as np
from PIL import Image

BORDER = 8
KERNELS = {
    "FFT": (0, np.outer([1, 2, 1], [1, 2, 1]) / 16),
    "LR": (1, np.array([[2, 7, 12, 7, 2], [7, 31, 52, 31, 7], [12, 52, 127, 52, 12],
                        [7, 31, 52, 31, 7], [2, 7, 12, 7, 2]]) / 571),
}


def blurred(picture, kernel):
    reach = kernel.shape[0] // 2
    padding = [(reach, reach), (reach, reach)] + [(0, 0)] * (picture.ndim - 2)
    padded = np.pad(picture.astype(float), padding, mode="edge")
    height, width = picture.shape[:2]
    total = sum(weight * padded[y:y + height, x:x + width] for (y, x), weight in np.ndenumerate(kernel))
    return np.clip(np.rint(total), 0, 255).astype(np.uint8)


def psnr(picture, original):
    difference = picture.astype(float) - original.astype(float)
    difference = difference[BORDER:-BORDER, BORDER:-BORDER]
    return 10 * np.log10(255 ** 2 / np.mean(difference ** 2))


def main():
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    fxrender, pictures = sys.argv[1], sys.argv[2:]
    columns, settings = [], range(1, 16)
    with tempfile.TemporaryDirectory() as folder:
        for path in pictures:
            original = np.array(Image.open(path))
            for name, (method, kernel) in KERNELS.items():
                source, result = Path(folder, "blurred.png"), Path(folder, "result.png")
                soft = blurred(original, kernel)
                Image.fromarray(soft).save(source)
                column = [f"{Path(path).stem}, {name}", psnr(soft, original)]
                for amount in settings:
                    subprocess.run([fxrender, "apply", source, "-o", result, "--quiet", "-f",
                                    f"Degauss:Method={method},Threshold={amount}"], check=True)
                    column.append(psnr(np.array(Image.open(result)), original))
                columns.append(column)
    print("| Amount | " + " | ".join(c[0] for c in columns) + " |")
    print("|---|" + "---:|" * len(columns))
    best = [max(c[2:]) for c in columns]
    for row, label in enumerate(["blurred", *settings], start=1):
        cells = [f"**{c[row]:.2f}**" if row > 1 and c[row] == b else f"{c[row]:.2f}" for c, b in zip(columns, best)]
        print(f"| {label} | " + " | ".join(cells) + " |")


if __name__ == "__main__":
    main()
