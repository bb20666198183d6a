#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "drawings.h"
#include "flood_oracle.h"
#include "planes.h"

namespace numeric {
namespace {

using namespace test;

constexpr int kBySteps = 1, kByDistance = 2, kSideBorders = 64, kAllBorders = 128;

/// Floods with a scratch of exactly the size reported, at an odd address.
void flood(const BytePlane& relief, BytePlane& marker, int norm, int flags) {
    int size = 0;
    ASSERT_EQ(watershedScratchSize(relief.width(), relief.height(), &size), Success);
    BytePlane scratch(size, 1, {3, 1});
    ASSERT_EQ(watershed(relief.data(), relief.step(), marker.data(), marker.step(), relief.width(),
                        relief.height(), norm, flags, scratch.data()),
              Success);
    ASSERT_TRUE(scratch.surroundingsIntact());
    ASSERT_TRUE(marker.surroundingsIntact());
}

BytePlane withBorders(const BytePlane& labels, bool sidesOnly) {
    BytePlane result(labels.width(), labels.height());
    return result.set([&](int x, int y) {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx) {
                if (sidesOnly && dx != 0 && dy != 0) continue;
                const int nx = x + dx, ny = y + dy;
                if (nx < 0 || ny < 0 || nx >= labels.width() || ny >= labels.height()) continue;
                if (labels.at(nx, ny) > labels.at(x, y)) return static_cast<unsigned char>(255);
            }
        return labels.at(x, y);
    });
}

/// Compares all norms, orders and borders in all slots with the plain priority flood.
void expectLikeOracle(const BytePlane& relief, const BytePlane& marker) {
    for (const int norm : {0, 1, 2, 3})
        for (const int order : {kBySteps, kByDistance}) {
            const BytePlane labels = FloodOracle(relief, marker, norm, order == kBySteps).labels();
            for (const int borders : {0, kSideBorders, kAllBorders}) {
                SCOPED_TRACE("norm " + std::to_string(norm) + " flags " +
                             std::to_string(order | borders));
                const BytePlane expected =
                    borders == 0 ? labels : withBorders(labels, borders == kSideBorders);
                forEachSlot([&] {
                    BytePlane actual = marker;
                    ASSERT_NO_FATAL_FAILURE(flood(relief, actual, norm, order | borders));
                    ASSERT_TRUE(samePixels(expected, actual));
                });
            }
        }
}

struct Picture {
    BytePlane relief;
    BytePlane marker;
};

/// Random relief of so many levels, spread over the whole range, and one seed pixel in seedEvery.
Picture randomPicture(int width, int height, Layout layout, unsigned levels, unsigned seedEvery,
                      unsigned seed) {
    std::mt19937 random(seed);
    Picture picture{{width, height, layout}, {width, height, layout}};
    picture.relief.set([&](int, int) {
        return static_cast<unsigned char>(levels < 2 ? 77 : random() % levels * 255 / (levels - 1));
    });
    picture.marker.set([&](int, int) {
        return static_cast<unsigned char>(random() % seedEvery == 0 ? 1 + random() % 255 : 0);
    });
    return picture;
}

TEST(Watershed, MatchesPlainPriorityFloodForEveryWidthAndVariant) {
    unsigned seed = 0;
    for (const int width : widths()) {
        const Layout layout = layouts<unsigned char>()[width % 3];
        const int height = 1 + width % 9;
        const unsigned levels[] = {1, 2, 5, 256};
        const Picture picture =
            randomPicture(width, height, layout, levels[width % 4], 3 + width % 5 * 9, ++seed);
        expectLikeOracle(picture.relief, picture.marker);
    }
}

/// Objects at level 0 in a background at level 255 that is one seed of label 1; one object pixel in
/// seedEvery is a seed.
Picture twoLevelPicture(int width, int height, unsigned seedEvery, unsigned seed,
                        const std::function<bool(int, int)>& isObject) {
    Picture picture = randomPicture(width, height, {5, 3}, 1, seedEvery, seed);
    picture.relief.set([&](int x, int y) { return isObject(x, y) ? 0 : 255; });
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (!isObject(x, y)) picture.marker.at(x, y) = 1;
    return picture;
}

TEST(Watershed, MatchesPlainPriorityFloodOnObjectsAndMazes) {
    std::mt19937 random(3);
    std::vector<std::array<int, 3>> discs;
    for (int i = 0; i < 40; ++i)
        discs.push_back({static_cast<int>(random() % 150), static_cast<int>(random() % 130),
                         static_cast<int>(3 + random() % 16)});
    BytePlane caves(150, 130);
    caves.set([&](int, int) { return static_cast<unsigned char>(random() % 100 < 65); });
    const std::function<bool(int, int)> scenes[] = {
        [&](int x, int y) {
            return std::any_of(discs.begin(), discs.end(), [&](const std::array<int, 3>& disc) {
                return std::hypot(x - disc[0], y - disc[1]) <= disc[2];
            });
        },
        [&](int x, int y) { return caves.at(x, y) != 0; },
        [](int x, int y) { return y % 2 == 0 || x == (y % 4 == 1 ? 149 : 0); },  // serpentine
        [](int x, int y) { return x % 2 == 0 || y > 120; },                      // comb
        [](int x, int y) { return (x / 8 + y / 8) % 2 == 0 || x % 8 == 3; },     // rooms
        [](int, int) { return true; },
    };
    for (const auto& isObject : scenes)
        for (const unsigned seedEvery : {60u, 900u, 7000u}) {
            const Picture picture = twoLevelPicture(150, 130, seedEvery, random(), isObject);
            expectLikeOracle(picture.relief, picture.marker);
        }
}

TEST(Watershed, MatchesPlainPriorityFloodWhereTheBackgroundHasSeveralSeeds) {
    Picture picture = randomPicture(90, 70, {}, 1, 300, 4);
    picture.relief.set([](int x, int y) { return (x / 9 + y / 7) % 3 == 0 ? 200 : 50; });
    expectLikeOracle(picture.relief, picture.marker);
}

}  // namespace
}  // namespace numeric
