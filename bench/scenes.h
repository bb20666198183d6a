#pragma once

#include <vector>

/// Pictures on which the kernels are measured. Every scene is computed, the same on every machine;
/// another seed gives another picture of the kind.
namespace scenes {

/// A two-level picture, one byte per pixel and rows without padding: 255 object, 0 background.
struct Scene {
    int width;
    int height;
    std::vector<unsigned char> pixels;

    unsigned char& at(int x, int y) { return pixels[static_cast<std::size_t>(y) * width + x]; }
    unsigned char at(int x, int y) const { return pixels[static_cast<std::size_t>(y) * width + x]; }
};

/// Discs of radius 15 to 22 on a hexagonal grid so narrow that neighbours touch or overlap.
Scene denseDiscs(int width, int height, unsigned seed = 1);
/// Discs of radius 8 to 24 far apart: about one pixel in seven belongs to an object.
Scene sparseDiscs(int width, int height, unsigned seed = 1);
/// Each pixel on its own an object pixel with the given probability.
Scene noise(int width, int height, unsigned seed = 1, double objectShare = 0.5);
/// One corridor, one pixel wide between walls of one pixel, from the top left corner to the middle.
Scene spiral(int width, int height);
/// One corridor, one pixel wide, along every second row, joined alternately right and left.
Scene serpentine(int width, int height);
/// The same with its columns as rows.
Scene transposed(const Scene& scene);
/// Arches of rising height, one pixel wide, whose right legs all stand in one basin that fills the
/// lower half. The left legs end just above the basin.
Scene comb(int width, int height);
/// Corridors of that width side by side from top to bottom, between walls of one pixel, or that
/// slope at 45 degrees.
Scene teeth(int width, int height, int toothWidth);
Scene diagonalTeeth(int width, int height, int toothWidth);
/// Winding corridors of that width between walls of one pixel, all joined, none in a circle.
Scene maze(int width, int height, int corridorWidth);
/// Object everywhere but for one background pixel in a corner: the farthest distances there are.
Scene oneZeroPixel(int width, int height);
/// Object everywhere but for a frame of background, one pixel wide.
Scene zeroBorder(int width, int height);
/// Background lines, one pixel wide, at 45 degrees and the given number of columns apart.
Scene diagonalLines(int width, int height, int spacing);

/// Planes for a reconstruction, without padding.
struct MarkerAndMask {
    int width;
    int height;
    std::vector<float> marker;
    std::vector<float> mask;
};

/// A corridor scene as a reconstruction: the mask is 1 inside objects and 0 elsewhere, the marker
/// is 1 at the corridor's first pixel.
MarkerAndMask floodFromFirstPixel(const Scene& corridor);
/// The comb as a reconstruction: a marker at the foot of every left leg, the brighter the higher
/// its arch. A method that floods the basin at once for each inflow does so for every arch again.
MarkerAndMask combInflows(int width, int height);

}  // namespace scenes
