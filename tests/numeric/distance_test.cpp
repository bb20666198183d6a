#include <cmath>
#include <functional>
#include <random>

#include "tests/numeric/oracles.h"

namespace numeric::test {
namespace {

FloatPlane distances(const BytePlane& src, Layout layout = {}, int scratchOffset = 0) {
    FloatPlane dst(src.width(), src.height(), layout);
    dst.fill(-1.0F);
    TestScratch scratch(distanceTransformScratchSize, src.width(), src.height(), scratchOffset);
    EXPECT_EQ(distanceTransform(src.data(), src.step(), dst.data(), dst.step(), src.width(),
                                src.height(), scratch.data()),
              Success);
    EXPECT_TRUE(dst.surroundingsIntact());
    return dst;
}

BytePlane filledPlane(int width, int height, Layout layout = {}) {
    BytePlane plane(width, height, layout);
    plane.fill(255);
    return plane;
}

BytePlane randomPlane(int width, int height, double zeroShare, unsigned seed, Layout layout = {}) {
    std::mt19937 random(seed);
    std::bernoulli_distribution isZero(zeroShare);
    std::uniform_int_distribution<int> object(1, 255);
    return BytePlane(width, height, layout).set([&](int, int) {
        return static_cast<unsigned char>(isZero(random) ? 0 : object(random));
    });
}

TEST(DistanceTransform, MatchesBruteForceForEveryWidthLayoutAndSlot) {
    for (const int width : widths()) {
        for (const Layout layout : layouts<unsigned char>()) {
            const double zeroShare = width % 3 == 0 ? 0.5 : width % 3 == 1 ? 0.04 : 0.004;
            const BytePlane src = randomPlane(width, 1 + width % 9, zeroShare, 100 + width, layout);
            const FloatPlane expected = distancesByTrying(src);
            const Layout floats{4 * layout.paddingBytes, 4 * layout.offsetBytes};
            SCOPED_TRACE("width " + std::to_string(width));
            forEachSlot(
                [&] { EXPECT_TRUE(samePixels(expected, distances(src, floats, width % 16))); });
        }
    }
}

struct Picture {
    const char* name;
    int width, height;
    std::vector<std::pair<int, int>> zeros;
};

/// A row in which the pixel in the middle alone has its nearest zeros 61 columns away, and one
/// below it that is a little farther.
std::vector<std::pair<int, int>> zerosJustOutOfReach() {
    std::vector<std::pair<int, int>> zeros{{100, 63}};
    for (int x = 0; x < 40; ++x) {
        zeros.emplace_back(x, 1);
        zeros.emplace_back(200 - x, 1);
    }
    return zeros;
}

std::vector<std::pair<int, int>> line(int count,
                                      const std::function<std::pair<int, int>(int)>& at) {
    std::vector<std::pair<int, int>> pixels;
    for (int i = 0; i < count; ++i) pixels.push_back(at(i));
    return pixels;
}

TEST(DistanceTransform, MatchesBruteForceInEverySlotWhereZerosAreFew) {
    const Picture pictures[] = {
        {"one pixel, object", 1, 1, {}},
        {"one pixel, zero", 1, 1, {{0, 0}}},
        {"no zero", 70, 300, {}},
        {"no zero, narrow", 3, 2, {}},
        {"no zero, wide", 40000, 2, {}},
        {"zero in the first corner", 301, 283, {{0, 0}}},
        {"zero in the last corner", 301, 283, {{300, 282}}},
        {"two zeros far apart", 500, 260, {{3, 250}, {499, 1}}},
        {"a tie in every row", 257, 90, {{0, 89}, {256, 89}}},
        {"row", 5003, 1, {{0, 0}}},
        {"column", 1, 5003, {{0, 5002}}},
        {"two columns", 2, 700, {{1, 350}}},
        {"as wide as integers reach", 32768, 3, {{0, 0}}},
        {"wider than integers reach", 32769, 3, {{32768, 2}, {5, 0}}},
        {"higher than integers reach", 3, 40001, {{2, 40000}}},
        // Either side of the distances at which one search hands over to the next.
        {"columns far apart", 800, 3, {{0, 1}, {181, 1}, {375, 0}, {569, 2}, {765, 1}}},
        {"just out of reach", 201, 66, zerosJustOutOfReach()},
        {"rows at 181 and 255", 130, 520, {{0, 0}, {129, 183}, {60, 519}}},
        {"near above, far below", 200, 620, line(200, [](int i) { return std::pair(i, i % 5); })},
        {"far above, near below", 200, 620,
         line(200, [](int i) { return std::pair(i, 619 - i % 7); })},
        // Largest distances that rise and fall from row to row, within reach and beyond.
        {"scattered", 301, 211,
         line(45, [](int i) { return std::pair(i * i * 37 % 301, i * 53 % 211); })},
        {"steep line", 330, 400, line(400, [](int i) { return std::pair(i / 9, i); })},
        {"diagonal", 400, 400, line(400, [](int i) { return std::pair(i, 399 - i); })},
        {"circle round the middle", 431, 431, line(360, [](int i) {
             const double angle = i * 3.14159265 / 180;
             return std::pair(215 + static_cast<int>(std::lround(214 * std::cos(angle))),
                              215 + static_cast<int>(std::lround(214 * std::sin(angle))));
         })}};
    for (const Picture& picture : pictures) {
        SCOPED_TRACE(picture.name);
        BytePlane src = filledPlane(picture.width, picture.height);
        for (const auto& [x, y] : picture.zeros) src.at(x, y) = 0;
        const FloatPlane expected = distancesByTrying(src);
        const FloatPlane slot0 = distances(src);
        expectDistances(expected, slot0);
        forEachSlot([&] { EXPECT_TRUE(samePixels(slot0, distances(src))); });
    }
}

}  // namespace
}  // namespace numeric::test
