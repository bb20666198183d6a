#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "oracles.h"

namespace numeric {
namespace {

using namespace test;

BytePlane noise(int width, int height, Layout layout, unsigned density, unsigned seed) {
    std::mt19937 random(seed);
    BytePlane plane(width, height, layout);
    return plane.set([&](int, int) {
        return static_cast<unsigned char>(random() % 100 < density ? 1 + random() % 255 : 0);
    });
}

/// Labels a plane with a scratch of exactly the size reported, at an odd address. Returns count.
int label(BytePlane& marker, int smallest, int largest, int connectivity) {
    TestScratch scratch(labelSeedsScratchSize, marker.width(), marker.height());
    int count = -1;
    EXPECT_EQ(labelSeeds(marker.data(), marker.step(), marker.width(), marker.height(), smallest,
                         largest, connectivity, &count, scratch.data()),
              Success);
    EXPECT_TRUE(marker.surroundingsIntact());
    return count;
}

TEST(LabelSeeds, NumbersAreasLikeAFloodFill) {
    forEachSlot([] {
        unsigned seed = 0;
        for (const Layout layout : layouts<unsigned char>())
            for (const int width : widths())
                for (const int height : {1, 2, 5, 8}) {
                    const unsigned density = 20 + seed % 5 * 15;
                    for (const int connectivity : {0, 1}) {
                        BytePlane marker = noise(width, height, layout, density, ++seed);
                        TestPlane<int> areas(width, height);
                        const int expected = floodFill(marker, connectivity, areas);
                        ASSERT_EQ(label(marker, 1, 255, connectivity), expected);
                        if (expected > 255) continue;
                        BytePlane numbers(width, height);
                        numbers.set([&](int x, int y) { return areas.at(x, y) & 255; });
                        ASSERT_TRUE(samePixels(numbers, marker)) << "connectivity " << connectivity;
                    }
                }
    });
}

TEST(LabelSeeds, CountsAllAreasAndStaysInRangeWhenLabelsRunOut) {
    for (const auto& [smallest, largest] : {std::pair{2, 254}, {1, 255}, {9, 9}, {250, 253}})
        for (const int connectivity : {0, 1}) {
            BytePlane marker = noise(321, 203, {5, 3}, 40, 7);
            TestPlane<int> areas(321, 203);
            const int expected = floodFill(marker, connectivity, areas);
            ASSERT_GT(expected, 255);
            std::vector<int> labelOf(expected + 1, 0);
            ASSERT_EQ(label(marker, smallest, largest, connectivity), expected);
            for (int y = 0; y < 203; ++y)
                for (int x = 0; x < 321; ++x) {
                    const int area = areas.at(x, y);
                    const int found = marker.at(x, y);
                    if (area != 0 && labelOf[area] == 0) {
                        ASSERT_TRUE(smallest <= found && found <= largest) << found;
                        labelOf[area] = found;
                    }
                    ASSERT_EQ(found, labelOf[area]) << "at (" << x << ", " << y << ")";
                }
        }
}

struct Dot {
    int x, y, radius;
};

/// The smallest distance between two dots of one label.
double nearestTwins(const std::vector<Dot>& dots, const BytePlane& marker) {
    double nearest = 1e9;
    for (const Dot& a : dots)
        for (const Dot& b : dots)
            if (&a < &b && marker.at(a.x, a.y) == marker.at(b.x, b.y))
                nearest = std::min(nearest, std::hypot(a.x - b.x, a.y - b.y));
    return nearest;
}

BytePlane drawDots(int width, int height, const std::vector<Dot>& dots) {
    BytePlane marker(width, height);
    for (const Dot& dot : dots)
        for (int y = dot.y - dot.radius; y <= dot.y + dot.radius; ++y)
            for (int x = dot.x - dot.radius; x <= dot.x + dot.radius; ++x)
                if (std::hypot(x - dot.x, y - dot.y) <= dot.radius) marker.at(x, y) = 255;
    return marker;
}

TEST(LabelSeeds, ReusedLabelsLieFarApart) {
    constexpr int kWidth = 3840, kHeight = 2160, kDots = 5000;
    // 253 labels on 5,000 dots: at best, equal labels repeat every 16 dots or so in each direction.
    std::mt19937 random(11);
    std::vector<Dot> scattered;
    while (static_cast<int>(scattered.size()) < kDots) {
        const Dot dot{static_cast<int>(4 + random() % (kWidth - 8)),
                      static_cast<int>(4 + random() % (kHeight - 8)), 2};
        const bool isFree = std::none_of(scattered.begin(), scattered.end(), [&](const Dot& other) {
            return std::hypot(dot.x - other.x, dot.y - other.y) < 16;
        });
        if (isFree) scattered.push_back(dot);
    }
    std::vector<Dot> grid, staggered, shaken;  // the last as seeds of discs that touch
    for (int i = 0; i < kDots; ++i) {
        const int column = i % 93, row = i / 93;
        grid.push_back({20 + 40 * column, 20 + 39 * row, 4});
        staggered.push_back({20 + 40 * column + 20 * (row % 2), 20 + 39 * row, 4});
        shaken.push_back({staggered.back().x + static_cast<int>(random() % 5),
                          staggered.back().y + static_cast<int>(random() % 5), 4});
    }
    for (const auto& dots : {scattered, grid, staggered, shaken})
        for (const int connectivity : {0, 1}) {
            BytePlane marker = drawDots(kWidth, kHeight, dots);
            ASSERT_EQ(label(marker, 2, 254, connectivity), kDots);
            EXPECT_GT(nearestTwins(dots, marker), 3 * 40);
        }
}

TEST(LabelSeeds, SmallAreasBesideLargeOnesHaveLabelsOfTheirOwn) {
    // 5,000 dots crowd around 16 others that stand alone within wide rings.
    std::vector<Dot> dots;
    for (int i = 0; i < 16; ++i) dots.push_back({140 + 280 * (i % 4), 140 + 280 * (i / 4), 6});
    const std::vector<Dot> lonely = dots;
    for (int y = 4; y < 1120; y += 14)
        for (int x = 4; x < 1120; x += 14)
            if (std::none_of(lonely.begin(), lonely.end(),
                             [&](const Dot& dot) { return std::hypot(x - dot.x, y - dot.y) < 70; }))
                dots.push_back({x, y, 2});
    BytePlane marker = drawDots(1120, 1120, dots);
    ASSERT_EQ(label(marker, 2, 254, 1), static_cast<int>(dots.size()));
    for (const Dot& centre : lonely)
        for (const Dot& dot : dots) {
            const double distance = std::hypot(centre.x - dot.x, centre.y - dot.y);
            if (distance == 0 || distance > 90) continue;
            EXPECT_NE(marker.at(centre.x, centre.y), marker.at(dot.x, dot.y));
        }
}

TEST(LabelSeeds, AreasAboveTheFootOfALongOneHaveOtherLabels) {
    // Angles within each other, all beginning in the first row: their feet pass far to the right
    // below rows of dots, which are numbered long after them.
    constexpr int kWidth = 1200, kHeight = 1000, kAngles = 40, kFirstDot = 200;
    const auto footOf = [](int angle) { return kHeight - 1 - 23 * angle; };
    BytePlane marker(kWidth, kHeight);
    std::vector<Dot> dots;
    for (int angle = 0; angle < kAngles; ++angle) {
        for (int y = 0; y <= footOf(angle); ++y) marker.at(4 * angle, y) = 255;
        for (int x = 4 * angle; x < kWidth; ++x)
            for (int row = 0; row < 8; ++row) marker.at(x, footOf(angle) - row) = 255;
        for (int x = kFirstDot; x < kWidth; x += 6) {
            dots.push_back({x, footOf(angle) - 10, 0});
            marker.at(x, footOf(angle) - 10) = 255;
        }
    }
    ASSERT_EQ(label(marker, 2, 254, 1), kAngles + static_cast<int>(dots.size()));
    for (const Dot& dot : dots) ASSERT_NE(marker.at(dot.x, dot.y), marker.at(dot.x, dot.y + 3));
}

}  // namespace
}  // namespace numeric
