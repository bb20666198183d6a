#!/usr/bin/python3
"""The script somebody would write with OpenCV: whole_runs_peer.py STEPS OUTPUT_FOLDER PICTURE..."""
import os
import sys

import cv2
import numpy

cv2.setNumThreads(1)
steps, folder, pictures = sys.argv[1], sys.argv[2], sys.argv[3:]


def separate(cells):
    """Touching objects apart: distance, seeds, watershed, borders."""
    distance = cv2.distanceTransform(cells, cv2.DIST_L2, cv2.DIST_MASK_PRECISE)
    peaks = cv2.dilate(distance, numpy.ones((15, 15), numpy.uint8))
    seeds = numpy.uint8((distance == peaks) & (distance > 2)) * 255
    count, markers = cv2.connectedComponents(seeds)
    markers = markers + 1
    markers[(cells > 0) & (seeds == 0)] = 0
    cv2.watershed(cv2.cvtColor(cells, cv2.COLOR_GRAY2BGR), markers)
    cells[markers == -1] = 0
    return cells


for path in pictures:
    picture = cv2.imread(path)
    picture = cv2.GaussianBlur(picture, (7, 7), 0)
    if steps == "four":
        grey = cv2.cvtColor(picture, cv2.COLOR_BGR2GRAY)
        picture = separate(cv2.adaptiveThreshold(grey, 255, cv2.ADAPTIVE_THRESH_MEAN_C, cv2.THRESH_BINARY, 51, 0))
    cv2.imwrite(os.path.join(folder, os.path.basename(path)), picture)
