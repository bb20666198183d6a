#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/numeric/planes.h"

namespace numeric::test {
namespace {

constexpr int kBySteps = 1, kByDistance = 2, kBorders4 = 64, kBorders8 = 128;

struct Picture {
    BytePlane relief, marker;
};

/// Scratch of exactly the reported size, at an odd address, between guards.
class ExactScratch {
public:
    ExactScratch(int width, int height) {
        EXPECT_EQ(watershedScratchSize(width, height, &m_size), Success);
        m_bytes.assign(m_size + 2 * kGuard, 0x5A);
    }
    unsigned char* data() { return m_bytes.data() + kGuard; }
    bool guardsIntact() const {
        const auto intact = [](int byte) { return byte == 0x5A; };
        return std::all_of(m_bytes.begin(), m_bytes.begin() + kGuard, intact) &&
               std::all_of(m_bytes.end() - kGuard, m_bytes.end(), intact);
    }

private:
    static constexpr int kGuard = 65;
    int m_size = 0;
    std::vector<unsigned char> m_bytes;
};

BytePlane flooded(const Picture& picture, int norm, int flags) {
    BytePlane marker = picture.marker;
    ExactScratch scratch(marker.width(), marker.height());
    EXPECT_EQ(watershed(picture.relief.data(), picture.relief.step(), marker.data(), marker.step(),
                        marker.width(), marker.height(), norm, flags, scratch.data()),
              Success);
    EXPECT_TRUE(scratch.guardsIntact());
    EXPECT_TRUE(marker.surroundingsIntact());
    return marker;
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

TEST(WatershedResult, DividesOverlappingDiscsAtTheBisector) {
    const int size = 201;
    for (double radius : {14.0, 30.0, 45.0}) {
        for (double share : {0.55, 0.8}) {
            for (int degrees = 0; degrees < 180; degrees += 7) {
                const double angle = degrees * std::acos(-1.0) / 180, reach = share * radius;
                const Picture picture = twoDiscs(size, radius, reach, angle);
                const BytePlane result = flooded(picture, 3, kByDistance);
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

/// "Filled" keeps 2 to 254: with borders over 8 neighbours no pixel of an object is lost on its
/// outer edge, and the lines of "Borders only" leave no gap between two areas.
TEST(WatershedResult, LinesAreClosedAndSpareTheOuterEdge) {
    const Picture picture = twoDiscs(121, 30, 22, 0.4);
    const BytePlane labels = flooded(picture, 3, kByDistance);
    const BytePlane lined = flooded(picture, 3, kByDistance | kBorders8);
    for (int y = 1; y < 120; ++y) {
        for (int x = 1; x < 120; ++x) {
            const int own = lined.at(x, y);
            bool meetsOther = false;
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx) {
                    const int other = lined.at(x + dx, y + dy);
                    if (own != 255 && other != 255) {
                        EXPECT_EQ(own, other) << "a gap at " << x << ", " << y;
                    }
                    if (labels.at(x + dx, y + dy) > 1)
                        meetsOther |= labels.at(x + dx, y + dy) != labels.at(x, y);
                }
            if (labels.at(x, y) > 1 && !meetsOther) {
                EXPECT_EQ(own, labels.at(x, y)) << "an outer pixel is lost";
            }
        }
    }
}

TEST(WatershedResult, HandlesPicturesWithNothingToDecide) {
    std::mt19937 random(3);
    for (auto [width, height] :
         {std::pair{1, 1}, {1, 9}, {9, 1}, {20, 1}, {1, 40}, {16, 1}, {33, 40}}) {
        Picture empty{{width, height}, {width, height}};
        empty.relief.set([&](int, int) { return static_cast<unsigned char>(random()); });
        EXPECT_TRUE(samePixels(empty.marker, flooded(empty, 3, kByDistance | kBorders8)))
            << "no seed, no label";
        Picture full = empty;
        full.marker.fill(255);
        EXPECT_TRUE(samePixels(full.marker, flooded(full, 0, kBySteps | kBorders4)));
        Picture one = empty;
        one.marker.at(width - 1, height - 1) = 5;
        BytePlane all = one.marker;
        all.fill(5);
        EXPECT_TRUE(samePixels(all, flooded(one, 3, kByDistance | kBorders8)));
    }
}

TEST(WatershedArguments, AreCheckedInOrderBeforeAnythingIsWritten) {
    const Picture picture = twoDiscs(40, 9, 7, 0);
    const unsigned char* relief = picture.relief.data();
    ExactScratch scratch(40, 40);
    struct Row {
        const char* what;
        KernelStatus expected;
        bool noRelief, noMarker, noScratch;
        int width, height, reliefStep, markerStep, norm, flags;
    };
    const Row rows[] = {
        {"null relief before size", NullPointer, true, false, false, 0, 40, 40, 40, 3, 130},
        {"null marker before size", NullPointer, false, true, false, 0, 40, 40, 40, 3, 130},
        {"null scratch before size", NullPointer, false, false, true, 0, 40, 40, 40, 3, 130},
        {"width before step", BadSize, false, false, false, 0, 40, -1, 40, 3, 130},
        {"height before step", BadSize, false, false, false, 40, 0, 39, 40, 3, 130},
        {"relief step before norm", BadStep, false, false, false, 40, 40, 39, 40, 4, 130},
        {"marker step before norm", BadStep, false, false, false, 40, 40, 40, 39, 4, 130},
        {"norm below", BadArgument, false, false, false, 40, 40, 40, 40, -1, 130},
        {"norm above", BadArgument, false, false, false, 40, 40, 40, 40, 4, 130},
        {"no order", BadArgument, false, false, false, 40, 40, 40, 40, 3, 128},
        {"two orders", BadArgument, false, false, false, 40, 40, 40, 40, 3, 3},
        {"two kinds of borders", BadArgument, false, false, false, 40, 40, 40, 40, 3, 194},
        {"another bit", BadArgument, false, false, false, 40, 40, 40, 40, 3, 2 | 4},
        {"a negative word", BadArgument, false, false, false, 40, 40, 40, 40, 3, -1},
    };
    for (const Row& row : rows) {
        BytePlane marker = picture.marker;
        EXPECT_EQ(
            watershed(row.noRelief ? nullptr : relief, row.reliefStep,
                      row.noMarker ? nullptr : marker.data(), row.markerStep, row.width, row.height,
                      row.norm, row.flags, row.noScratch ? nullptr : scratch.data()),
            row.expected)
            << row.what;
        EXPECT_TRUE(samePixels(picture.marker, marker)) << row.what;
    }
}

TEST(WatershedScratchSize, IsAsPrescribed) {
    int size = 0;
    EXPECT_EQ(watershedScratchSize(1, 1, nullptr), NullPointer);
    EXPECT_EQ(watershedScratchSize(0, 1, &size), BadSize);
    EXPECT_EQ(watershedScratchSize(1, 0, &size), BadSize);
    EXPECT_EQ(watershedScratchSize(100000, 100000, &size), BadSize);
    EXPECT_EQ(watershedScratchSize(std::numeric_limits<int>::max(), std::numeric_limits<int>::max(),
                                   &size),
              BadSize);
    EXPECT_EQ(size, 0);
    EXPECT_EQ(watershedScratchSize(1, 1, &size), Success);
    EXPECT_EQ(size, 323);
    EXPECT_EQ(watershedScratchSize(640, 480, &size), Success);
    EXPECT_EQ(size, 12 * 640 * 480 + 36 + 642 * 482);
}

}  // namespace
}  // namespace numeric::test
