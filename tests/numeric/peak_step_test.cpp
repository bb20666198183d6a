#include <limits>
#include <random>
#include <utility>

#include "bench/scenes.h"
#include "tests/numeric/oracles.h"

namespace numeric::test {
namespace {

constexpr int kChessboard = 0;
constexpr int kCityBlock = 1;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

/// The plane after the peak step, with scratch of exactly the reported size.
FloatPlane peakStepOf(const FloatPlane& bound, const FloatPlane& start, int mode,
                      int scratchOffset = 0) {
    TestScratch scratch(peakStepScratchSize, start.width(), start.height(), scratchOffset);
    FloatPlane plane(start);
    EXPECT_EQ(peakStep(bound.data(), bound.step(), plane.data(), plane.step(), plane.width(),
                       plane.height(), scratch.data(), mode),
              Success);
    EXPECT_TRUE(plane.surroundingsIntact());
    return plane;
}

/// In both neighbourhoods and every slot.
void expectReconstruction(const FloatPlane& bound, const FloatPlane& start) {
    for (const int mode : {kChessboard, kCityBlock}) {
        SCOPED_TRACE("mode " + std::to_string(mode));
        const FloatPlane expected = raisedUntilStable(bound, start, mode == kCityBlock);
        forEachSlot([&] {
            EXPECT_TRUE(
                samePixels(expected, peakStepOf(bound, start, mode, (7 * start.width()) % 16)));
        });
    }
}

/// The plane becomes `expected` in both neighbourhoods and every slot.
void expectFilled(const FloatPlane& expected, const FloatPlane& bound, const FloatPlane& start) {
    forEachSlot([&] {
        for (const int mode : {kChessboard, kCityBlock})
            EXPECT_TRUE(samePixels(expected, peakStepOf(bound, start, mode)));
    });
}

TEST(PeakStep, MatchesRaisingUntilStableForEveryWidthLayoutAndSlot) {
    std::mt19937 random(11);
    for (const int width : widths()) {
        SCOPED_TRACE("width " + std::to_string(width));
        for (const Layout layout : layouts<float>()) {
            const int height = 1 + width % 11;
            // Few levels make plateaus, many make slopes.
            std::uniform_int_distribution<int> level(-3, width % 2 == 0 ? 4 : 300);
            FloatPlane bound(width, height, layout);
            bound.set([&](int, int) { return static_cast<float>(level(random)); });
            FloatPlane start(width, height, layout);
            start.set([&](int x, int y) {
                return random() % 8 == 0 ? bound.at(x, y) + 1
                                         : static_cast<float>(level(random) - 4);
            });
            expectReconstruction(bound, start);
        }
    }
}

TEST(PeakStep, TreatsSpecialNumbersAsDocumented) {
    const float values[] = {0.0F, -0.0F,     1.0F,       -1.0F,  kNaN, -kNaN,
                            2.0F, kInfinity, -kInfinity, 1e-42F, 3e38F};
    std::mt19937 random(5);
    const auto any = [&](int, int) { return values[random() % std::size(values)]; };
    for (const int width : {1, 3, 17, 18, 40, 67}) {
        SCOPED_TRACE("width " + std::to_string(width));
        for (int height : {1, 2, 9}) {
            FloatPlane bound(width, height), start(width, height);
            expectReconstruction(bound.set(any), start.set(any));
        }
    }
    // One pixel each, so that the rule can be read: bound, plane, result.
    const float cases[][3] = {{kNaN, 2, 2},
                              {2, kNaN, -kInfinity},
                              {-0.0F, 1, 0},
                              {kInfinity, 5, 5},
                              {-kInfinity, 5, -kInfinity},
                              {1, kInfinity, 1},
                              {kNaN, kNaN, -kInfinity}};
    for (const auto& [bound, start, result] : cases) {
        FloatPlane bounds(1, 1), plane(1, 1), expected(1, 1);
        bounds.fill(bound);
        plane.fill(start);
        expected.fill(result);
        expectFilled(expected, bounds, plane);
    }
    // A NaN in the bound is not passed, yet its own pixel passes on what it has.
    FloatPlane bound(5, 1), start(5, 1);
    const float row[] = {4, 4, kNaN, 4, 4};
    bound.set([&](int x, int) { return row[x]; });
    start.set([](int x, int) { return x == 0 ? 3.0F : x == 2 ? 1.0F : 0.0F; });
    const FloatPlane result = peakStepOf(bound, start, kChessboard);
    EXPECT_EQ(toText(result), "3 3 1 1 1 \n");
}

/// Walls and winding ways between them, on which values from many sources meet.
TEST(PeakStep, FindsEveryWayThroughCaves) {
    std::mt19937 random(23);
    for (const auto& [width, height] : {std::pair(80, 70), {19, 300}, {300, 40}, {3, 90}}) {
        for (const double wallShare : {0.15, 0.4, 0.55}) {
            SCOPED_TRACE(std::to_string(width) + " wide, walls " + std::to_string(wallShare));
            std::bernoulli_distribution isWall(wallShare);
            const auto ground = [&](int, int) {
                if (isWall(random)) return -9.0F;
                return random() % 9 == 0 ? -0.0F : static_cast<float>(random() % 40);
            };
            FloatPlane bound(width, height), start(width, height);
            bound.set(ground);
            start.set([&](int, int) { return random() % 60 == 0 ? random() % 50 : -5.0F; });
            expectReconstruction(bound, start);
        }
    }
}

/// A way that goes up and down: '#' is wall, 's' the source, '0' a negative zero.
TEST(PeakStep, FollowsAWayThatTurnsBackTowardsTheSweep) {
    const std::vector<std::string> drawing = {
        "####.##", "####.##", "...#.##", ".#.#.##", ".#.#.##",
        ".#.#.##", ".#0#.##", ".#.#.##", "s#.#.##", "##...##",
    };
    FloatPlane bound(7, 10), start(7, 10);
    bound.set([&](int x, int y) {
        return drawing[y][x] == '#' ? -9.0F : drawing[y][x] == '0' ? -0.0F : 1.0F;
    });
    start.set([&](int x, int y) { return drawing[y][x] == 's' ? 1.0F : -9.0F; });
    expectReconstruction(bound, start);
}

/// Rooms with a winding way through each, entered at their lowest row from one shaft on the left:
/// while the shaft leads on from room to room, more ways are under way than the queue can hold.
TEST(PeakStep, FindsItsWayWhenTheQueueIsFull) {
    constexpr int kWidth = 9, kRooms = 40, kRoomRows = 101, kHeight = 2 + kRooms * (kRoomRows + 1);
    FloatPlane bound(kWidth, kHeight), start(kWidth, kHeight);
    bound.set([](int x, int y) {
        if (x == 0 || y == 0) return 1.0F;
        const int rowFromBottom = (kHeight - 1 - y) % (kRoomRows + 1);
        if (y == 1 || rowFromBottom == kRoomRows) return 0.0F;
        if (x == 1) return rowFromBottom == 0 ? 1.0F : 0.0F;
        const int turn = rowFromBottom % 4 == 1 ? kWidth - 1 : 2;
        return rowFromBottom % 2 == 0 || x == turn ? 1.0F : 0.0F;
    });
    start.fill(0);
    start.at(kWidth - 1, 0) = 1;
    expectFilled(bound, bound, start);
}

/// Turned by 180 degrees and mirrored along the diagonal.
FloatPlane turned(const FloatPlane& plane) {
    FloatPlane result(plane.height(), plane.width());
    return result.set(
        [&](int x, int y) { return plane.at(plane.width() - 1 - y, plane.height() - 1 - x); });
}

/// Runs check(bound, start) on a scene as it is and turned.
template <class Planes, class Check>
void bothWays(const Planes& planes, Check check) {
    FloatPlane bound(planes.width, planes.height), start(planes.width, planes.height);
    const auto at = [&](int x, int y) { return static_cast<std::size_t>(y) * planes.width + x; };
    bound.set([&](int x, int y) { return planes.mask[at(x, y)]; });
    start.set([&](int x, int y) { return planes.marker[at(x, y)]; });
    check(bound, start);
    SCOPED_TRACE("turned");
    check(turned(bound), turned(start));
}

/// A corridor up and down across the plane that turns at any row.
scenes::Scene raggedSerpentine(int width, int height) {
    scenes::Scene scene = scenes::noise(width, height, 1, 0);
    std::mt19937 random(3);
    int y = 0;
    for (int x = 0; x < width; x += 2) {
        const int turn = static_cast<int>(random() % (height / 2)) + (x % 4 == 0 ? height / 2 : 0);
        for (; y != turn; y += y < turn ? 1 : -1) scene.at(x, y) = 255;
        scene.at(x, y) = 255;
        if (x + 2 < width) scene.at(x + 1, y) = 255;
    }
    return scene;
}

// Large enough for the allowance of several sweeps to run out.
TEST(PeakStep, FillsLargeMazesAndCombs) {
    for (const auto& [name, scene] : {std::pair("spiral", scenes::spiral(400, 300)),
                                      {"serpentine", scenes::serpentine(300, 400)},
                                      {"ragged serpentine", raggedSerpentine(400, 300)}}) {
        SCOPED_TRACE(name);
        bothWays(scenes::floodFromFirstPixel(scene),
                 [](const FloatPlane& bound, const FloatPlane& start) {
                     expectFilled(bound, bound, start);
                 });
    }
    const auto comb = scenes::combInflows(400, 200);
    const float highest = *std::max_element(comb.marker.begin(), comb.marker.end());
    bothWays(comb, [&](const FloatPlane& bound, const FloatPlane& start) {
        // The brightest inflow fills the basin, and with it every arch.
        FloatPlane expected(bound);
        expected.set([&](int x, int y) { return std::min(bound.at(x, y), highest); });
        EXPECT_TRUE(samePixels(expected, peakStepOf(bound, start, kCityBlock)));
    });
}

/// Planes of several bands, each of which is swept on its own. Turned, they meet elsewhere.
TEST(PeakStep, RisesFromBandToBand) {
    constexpr int kWidth = 900, kHeight = 800;
    std::mt19937 random(29);
    FloatPlane caves(kWidth, kHeight), sources(kWidth, kHeight);
    caves.set(
        [&](int, int) { return random() % 5 < 2 ? -9.0F : static_cast<float>(random() % 40); });
    sources.set([&](int, int) { return random() % 3000 == 0 ? random() % 50 : -5.0F; });
    for (const int mode : {kChessboard, kCityBlock})
        EXPECT_TRUE(samePixels(turned(peakStepOf(caves, sources, mode)),
                               peakStepOf(turned(caves), turned(sources), mode)));
}

/// Every row raises all rows above it, through so many bands that the allowance runs out.
TEST(PeakStep, RisesThroughManyBands) {
    constexpr int kWidth = 8, kHeight = 300000;
    FloatPlane highGround(kWidth, kHeight), slope(kWidth, kHeight), expected(kWidth, kHeight);
    highGround.fill(kHeight);
    slope.set([](int, int y) { return static_cast<float>(y); });
    expected.fill(kHeight - 1);
    EXPECT_TRUE(samePixels(expected, peakStepOf(highGround, slope, kCityBlock)));
}

}  // namespace
}  // namespace numeric::test
