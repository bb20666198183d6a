#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "drawings.h"
#include "flood_oracle.h"

namespace numeric {
namespace {

using namespace test;

constexpr int kBySteps = 1, kByDistance = 2, kSideBorders = 64, kAllBorders = 128;

/// Floods with a scratch of exactly the size reported, at an odd address.
void flood(const BytePlane& relief, BytePlane& marker, int norm, int flags) {
    TestScratch scratch(watershedScratchSize, relief.width(), relief.height());
    ASSERT_EQ(watershed(relief.data(), relief.step(), marker.data(), marker.step(), relief.width(),
                        relief.height(), norm, flags, scratch.data()),
              Success);
    ASSERT_TRUE(marker.surroundingsIntact());
}

struct Picture {
    BytePlane relief;
    BytePlane marker;
};

/// A norm and an order to flood in.
struct Order {
    int norm, flag;
};
const std::vector<Order> kAllOrders = {{0, kBySteps},    {0, kByDistance}, {1, kBySteps},
                                       {1, kByDistance}, {2, kBySteps},    {2, kByDistance},
                                       {3, kBySteps},    {3, kByDistance}};
const std::vector<Order> kOrdersBySteps = {{0, kBySteps}, {1, kBySteps}};
const std::vector<Order> kMarchingOrder = {{3, kByDistance}};

/// Compares all slots with the plain priority flood.
void expectLikeOracle(const Picture& picture, const std::vector<Order>& orders,
                      const std::vector<int>& borders = {0}) {
    for (const auto& [norm, flag] : orders) {
        const BytePlane labels =
            FloodOracle(picture.relief, picture.marker, norm, flag == kBySteps).labels();
        for (const int border : borders) {
            SCOPED_TRACE("norm " + std::to_string(norm) + " flags " +
                         std::to_string(flag | border));
            const BytePlane expected =
                border == 0 ? labels : withBorders(labels, border == kSideBorders);
            forEachSlot([&, norm = norm, flag = flag] {
                BytePlane actual = picture.marker;
                ASSERT_NO_FATAL_FAILURE(flood(picture.relief, actual, norm, flag | border));
                ASSERT_TRUE(samePixels(expected, actual));
            });
        }
    }
}

void expectLikeOracle(const Picture& picture) {
    expectLikeOracle(picture, kAllOrders, {0, kSideBorders, kAllBorders});
}

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
            randomPicture(width, height, layout, levels[width % 4],
                          width % 7 == 0 ? 1u << 30 : 3 + width % 5 * 9, ++seed);
        expectLikeOracle(picture);
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
            expectLikeOracle(picture);
        }
}

/// Nearly every pixel is a seed: whichever neighbour is free, it must be found.
TEST(Watershed, MatchesPlainPriorityFloodWhereSeedsAreDense) {
    std::mt19937 random(6);
    Picture picture = randomPicture(67, 60, {5, 3}, 1, 1, 6);
    picture.relief.set([](int x, int y) { return x % 3 == 1 && y % 3 == 1 ? 10 : 200; });
    for (int y = 1; y + 1 < 60; y += 3)
        for (int x = 1; x + 1 < 67; x += 3) {
            // One low seed amid high ones, with one low free neighbour.
            const unsigned turn = random() % 8, place = turn < 4 ? turn : turn + 1;
            const int freeX = x - 1 + static_cast<int>(place % 3);
            const int freeY = y - 1 + static_cast<int>(place / 3);
            picture.marker.at(freeX, freeY) = 0;
            picture.relief.at(freeX, freeY) = static_cast<unsigned char>(10 + turn);
            picture.marker.at(x, y) = static_cast<unsigned char>(128 + random() % 128);
        }
    expectLikeOracle(picture);
}

/// Also where objects meet at a corner, which are one for eight neighbours, and two for four.
TEST(Watershed, FillsObjectsWithoutSeedsFromTheirOwnSideOfTheBackground) {
    const std::function<bool(int, int)> scenes[] = {
        [](int x, int y) { return x % 20 > 4 && y % 30 > 6; },
        [](int x, int y) { return x % 40 / 16 == y % 50 / 20 && x % 40 < 32 && y % 50 < 40; },
    };
    for (const auto& isObject : scenes)
        for (const unsigned seedEvery : {900u, 1u << 30}) {
            Picture picture = twoLevelPicture(170, 150, seedEvery, 6, isObject);
            expectLikeOracle(picture, kOrdersBySteps);
            for (int y = 0; y < 150; ++y)
                for (int x = 0; x < 170; ++x)
                    if (!isObject(x, y) && (x / 10 + y) % 160 > 70) picture.marker.at(x, y) = 9;
            expectLikeOracle(picture, kOrdersBySteps);
        }
}

/// Corridors to and fro, one for the queue from both ends, and one for tiles from two pixels at its
/// beginning: the distances overrun what is counted in. Tiles are not tried where seeds are rare:
/// below lie as many as it takes.
TEST(Watershed, FollowsWaysTooLongForOneCount) {
    const struct {
        int corridor, width, height, otherSeed, seedRows;
    } cases[] = {{1, 400, 261, 260, 0}, {11, 1600, 400, 5, 40}};
    for (const auto& c : cases) {
        const auto isObject = [&](int x, int y) {
            if (y >= c.height) return y > c.height;
            const bool turnsRight = y / (c.corridor + 1) % 2 == 0;
            return y % (c.corridor + 1) < c.corridor ||
                   (turnsRight ? x >= c.width - c.corridor : x < c.corridor);
        };
        Picture picture = twoLevelPicture(c.width, c.height + c.seedRows, 1u << 30, 1, isObject);
        picture.marker.at(0, 0) = 3;
        picture.marker.at(0, c.otherSeed) = 2;
        for (int x = 0; x < c.width; x += 4)
            for (int y = c.height + 4; y < c.height + c.seedRows; y += 4)
                picture.marker.at(x, y) = static_cast<unsigned char>(4 + x % 9);
        expectLikeOracle(picture, kMarchingOrder);
    }
}

TEST(Watershed, FollowsWideFrontsTooFarForOneCount) {
    for (const int width : {4, 12}) {  // few pixels of a front, and many
        Picture picture{{width, 800}, {width, 800}};
        picture.relief.set(
            [](int, int y) { return y == 799 ? 9 : 0; });  // two levels of free pixels: a queue
        picture.marker.set([](int x, int y) { return y == 0 ? 2 + x * x % 3 : 0; });
        const BytePlane expected = FloodOracle(picture.relief, picture.marker, 3, false).labels();
        flood(picture.relief, picture.marker, 3, kByDistance);
        EXPECT_TRUE(samePixels(expected, picture.marker)) << width;
    }
}

/// The Euclidean order is worked out in squares of 16 pixels: objects that end at their edges,
/// cross them or lie in their corners, in planes that end within one.
TEST(Watershed, MatchesPlainPriorityFloodOnEdgesOfSquares) {
    const std::function<bool(int, int)> scenes[] = {
        [](int x, int y) { return x % 16 == 15 && y % 16 == 15; },
        [](int x, int y) { return x % 16 % 15 == 0 && y % 16 % 15 == 0; },
        [](int x, int y) { return x / 16 % 2 == y / 16 % 2; },
        [](int x, int y) { return y % 16 == 15 || x % 16 == 0; },
        [](int x, int y) { return std::hypot(x - 16, y - 15) < 14 || x > 40; },
        [](int, int) { return true; },
    };
    unsigned seed = 0;
    for (const int width : {15, 16, 17, 31, 33, 63, 64, 65, 80})
        for (const int height : {16, 17, 50})
            for (const auto& isObject : scenes) {
                SCOPED_TRACE(std::to_string(width) + "x" + std::to_string(height));
                ++seed;
                for (const unsigned seedEvery : {30u, 500u})
                    expectLikeOracle(twoLevelPicture(width, height, seedEvery, seed, isObject),
                                     kMarchingOrder);
            }
}

/// Only what is beside the free pixels is looked at: a seed across a corner, in a square without
/// any free pixel, still arrives.
TEST(Watershed, FindsSeedsBesideTheFreePixels) {
    for (const int x : {31, 32, 40, 47, 48})
        for (const int y : {31, 32, 40, 47, 48}) {
            Picture picture = twoLevelPicture(80, 80, 1u << 30, 1,
                                              [&](int px, int py) { return px == x && py == y; });
            const int seedX = x % 16 == 0 ? x - 1 : x + 1, seedY = y % 16 == 0 ? y - 1 : y + 1;
            picture.relief.at(seedX, seedY) = 0;
            picture.marker.at(seedX, seedY) = 7;
            expectLikeOracle(picture, kMarchingOrder);
        }
}

/// Labels are written from the top while the plane is still being flooded further down.
TEST(Watershed, MatchesPlainPriorityFloodWhereTheEndOfThePlaneMatters) {
    const auto isDisc = [](int x, int y) { return std::hypot(x % 60 - 30, y % 60 - 30) < 26; };
    {
        SCOPED_TRACE("one object from top to bottom, flooded from its end");
        Picture picture =
            twoLevelPicture(50, 700, 1u << 30, 1, [](int x, int y) { return x > 5 + y % 40 / 4; });
        picture.marker.at(49, 699) = 9;
        picture.marker.at(20, 0) = 8;
        expectLikeOracle(picture, kMarchingOrder);
    }
    {
        SCOPED_TRACE("the only seeds, above the free level, come last");
        expectLikeOracle(twoLevelPicture(40, 500, 1u << 30, 1, [](int, int y) { return y < 400; }),
                         kMarchingOrder);
    }
    {
        SCOPED_TRACE("another level below");
        Picture picture = twoLevelPicture(120, 500, 90, 1, isDisc);
        picture.relief.set([&](int x, int y) { return isDisc(x, y) ? y < 450 ? 0 : 3 : 255; });
        expectLikeOracle(picture, kMarchingOrder);
    }
    {
        SCOPED_TRACE("a corridor below, in which the tiles give up");
        const auto isCorridor = [](int x, int y) {
            return y % 4 != 3 || x / 4 == (y % 8 == 3 ? 99 : 0);
        };
        Picture picture = twoLevelPicture(400, 600, 1u << 30, 1, [&](int x, int y) {
            return y < 300 ? isDisc(x, y) : y > 302 && isCorridor(x, y);
        });
        for (int y = 30; y < 300; y += 60)
            for (int x = 20; x < 400; x += 60) picture.marker.at(x, y) = 2 + x / 60;
        picture.marker.at(0, 304) = 3;
        expectLikeOracle(picture, kMarchingOrder);
    }
}

/// Smooth hills of so many levels.
void makeHills(BytePlane& relief, int levels, double wavelength) {
    relief.set([=](int x, int y) {
        const double height = std::sin(x / wavelength) + std::sin(y / wavelength * 1.3) +
                              std::sin((x + 2.0 * y) / wavelength * 0.7) / 2;
        return static_cast<unsigned char>(std::lround((height / 5 + 0.5) * (levels - 1)) * 255 /
                                          (levels - 1));
    });
}

TEST(Watershed, MatchesPlainPriorityFloodOnHillsAndPlateaus) {
    // Higher than two bands of rows, and wider than a word of groups where vectors are short.
    unsigned seed = 40;
    for (const auto& [width, height] : {std::pair{255, 140}, {256, 65}, {641, 70}, {64, 300}})
        for (const auto& [levels, wavelength] : {std::pair{256, 9.0}, {7, 9.0}, {3, 40.0}})
            for (const unsigned seedEvery : {30u, 3000u, 30000u}) {
                Picture picture = randomPicture(width, height, {}, 1, seedEvery, ++seed);
                makeHills(picture.relief, levels, wavelength);
                picture.marker.at(seed % width, height - 1) = 255;
                picture.marker.at(width - 1, seed % height) = 1;
                expectLikeOracle(picture, kOrdersBySteps);
            }
}

/// Floods a drawn marker over a drawn relief; without one the relief is level.
std::string flooded(const std::string& markerDrawing, int norm, int flags,
                    const std::string& reliefDrawing = {}) {
    BytePlane marker = fromDrawing(markerDrawing);
    BytePlane relief(marker.width(), marker.height());
    if (!reliefDrawing.empty()) {
        const BytePlane drawn = fromDrawing(reliefDrawing);
        relief.set([&](int x, int y) { return drawn.at(x, y); });
    }
    flood(relief, marker, norm, flags);
    return toDrawing(marker);
}

TEST(Watershed, MatchesDrawings) {
    // A tie goes to the smaller label, from whichever side it comes.
    EXPECT_EQ(flooded("2...3", 0, kBySteps), "22233");
    EXPECT_EQ(flooded("3...2", 3, kByDistance), "33222");
    // A line lies on the side of the smaller label.
    EXPECT_EQ(flooded("2...3", 1, kBySteps | kSideBorders), "22#33");
    EXPECT_EQ(flooded("22\n23", 1, kBySteps | kSideBorders), "2#\n#3");
    EXPECT_EQ(flooded("22\n23", 1, kBySteps | kAllBorders), "##\n#3");
    // Lower ground is flooded first, even through a seedless basin beyond a ridge.
    EXPECT_EQ(flooded("2...3", 0, kByDistance, "1.113"), "22223");
    EXPECT_EQ(flooded("2.....3", 0, kByDistance, "..5.5.."), "2222333");
    // Seeds start at their own level: high ground does not eat into the object beside it.
    EXPECT_EQ(flooded("1..2..1", 3, kByDistance | kAllBorders, "9.....9"), "#22222#");
    // The four neighbours go round the corner that the eight cut.
    EXPECT_EQ(flooded("2.1\n1..", 0, kBySteps), "211\n111");
    // No seed: nothing to grow. Nothing but seeds: nothing to do but borders.
    EXPECT_EQ(flooded("...\n...", 3, kByDistance | kAllBorders), "...\n...");
    EXPECT_EQ(flooded("21\n13", 2, kByDistance), "21\n13");
    EXPECT_EQ(flooded(".", 0, kBySteps), ".");
    EXPECT_EQ(flooded("7", 3, kByDistance | kSideBorders), "7");
    // 255 is a label like any other; what meets it turns into border.
    EXPECT_EQ(flooded("#..3", 1, kBySteps), "##33");
    EXPECT_EQ(flooded("#..3", 1, kBySteps | kSideBorders), "###3");
}

/// Discs of the given radius at +-reach along a direction, each with a blob in its middle; ground
/// is a seed of its own.
Picture twoDiscs(int size, double radius, double reach, double angle) {
    Picture picture{{size, size}, {size, size}};
    const double c = (size - 1) / 2.0;
    const auto distanceTo = [&](int side, int x, int y) {
        return std::hypot(x - c - side * reach * std::cos(angle),
                          y - c - side * reach * std::sin(angle));
    };
    picture.relief.set([&](int x, int y) {
        return distanceTo(-1, x, y) <= radius || distanceTo(1, x, y) <= radius ? 0 : 255;
    });
    picture.marker.set([&](int x, int y) {
        if (picture.relief.at(x, y) == 255) return 1;
        return distanceTo(-1, x, y) <= 2.5 ? 2 : distanceTo(1, x, y) <= 2.5 ? 3 : 0;
    });
    return picture;
}

TEST(Watershed, DividesOverlappingDiscsAtTheBisector) {
    const int size = 201;
    for (double radius : {14.0, 30.0, 45.0}) {
        for (double share : {0.55, 0.8}) {
            for (int degrees = 0; degrees < 180; degrees += 7) {
                const double angle = degrees * std::acos(-1.0) / 180, reach = share * radius;
                const Picture picture = twoDiscs(size, radius, reach, angle);
                BytePlane result = picture.marker;
                flood(picture.relief, result, 3, kByDistance);
                for (int y = 0; y < size; ++y) {
                    for (int x = 0; x < size; ++x) {
                        const double side = (x - (size - 1) / 2.0) * std::cos(angle) +
                                            (y - (size - 1) / 2.0) * std::sin(angle);
                        if (picture.relief.at(x, y) == 255) {
                            ASSERT_EQ(result.at(x, y), 1) << "the ground has eaten or lost a pixel";
                        } else if (std::abs(side) > 1) {
                            ASSERT_EQ(result.at(x, y), side < 0 ? 2 : 3)
                                << "radius " << radius << ", " << degrees << " degrees, " << side
                                << " from the bisector";
                        }
                    }
                }
            }
        }
    }
}

}  // namespace
}  // namespace numeric
