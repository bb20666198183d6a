#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <queue>
#include <random>
#include <tuple>

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

/// The order as it is defined, one pixel at a time: a queue sorted by distance and label for each
/// level. Distances in 70ths of a pixel. Slow and obviously right.
BytePlane bruteForce(const Picture& picture, int norm, int flags) {
    const int width = picture.relief.width(), height = picture.relief.height();
    const bool steps = (flags & kBySteps) != 0 || norm < 2;
    const int axis = steps ? 1 : 70;
    const int diagonal = norm == 1 ? 0 : steps ? 1 : 99;
    const bool marching = norm == 3 && !steps;
    const int unreached = std::numeric_limits<int>::max();
    BytePlane label = picture.marker;
    std::vector<int> done(width * height, 0);  // 1: flooded at an earlier level
    const auto inside = [&](int x, int y) { return x >= 0 && y >= 0 && x < width && y < height; };

    for (int level = 0; level < 256; ++level) {
        std::vector<int> distance(width * height, unreached);
        using Entry = std::tuple<int, int, int, int>;  // distance, label, x, y
        std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue;
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x)
                if (done[y * width + x] ||
                    (picture.marker.at(x, y) != 0 && picture.relief.at(x, y) == level))
                    queue.emplace(0, label.at(x, y), x, y);
        while (!queue.empty()) {
            const auto [d, name, x, y] = queue.top();
            queue.pop();
            if (distance[y * width + x] != unreached) continue;
            distance[y * width + x] = d;
            label.at(x, y) = static_cast<unsigned char>(name);
            done[y * width + x] = 1;
            for (int dy = -1; dy <= 1; ++dy) {
                for (int dx = -1; dx <= 1; ++dx) {
                    const int u = x + dx, v = y + dy;
                    if ((dx == 0 && dy == 0) || !inside(u, v)) continue;
                    const bool straight = dx == 0 || dy == 0;
                    if (!straight && diagonal == 0) continue;
                    if (done[v * width + u] || picture.marker.at(u, v) != 0 ||
                        picture.relief.at(u, v) > level)
                        continue;
                    int step = straight ? axis : diagonal;
                    // The front may pass between (x, y) and its neighbours that touch (u, v) by a
                    // corner.
                    for (int side : {-1, 1}) {
                        const int p = x + (dx == 0 ? side : 0), q = y + (dy == 0 ? side : 0);
                        if (!marching || !straight || !inside(p, q)) continue;
                        const int earlier = d - distance[q * width + p];
                        if (distance[q * width + p] == unreached || label.at(p, q) != name ||
                            earlier < 0 || earlier > 49)
                            continue;
                        step = std::min<int>(
                            step, std::lround(std::sqrt(70.0 * 70.0 - earlier * earlier)));
                    }
                    queue.emplace(d + step, name, u, v);
                }
            }
        }
    }
    if ((flags & (kBorders4 | kBorders8)) == 0) return label;
    BytePlane result = label;
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int dy = -1; dy <= 1; ++dy)
                for (int dx = -1; dx <= 1; ++dx)
                    if (((flags & kBorders8) != 0 || dx == 0 || dy == 0) &&
                        inside(x + dx, y + dy) && label.at(x + dx, y + dy) > label.at(x, y))
                        result.at(x, y) = 255;
    return result;
}

/// A picture of the given kind: the levels of its relief and the share of seeds.
Picture randomPicture(std::mt19937& random, int width, int height, Layout layout = {}) {
    const int levels = std::array{1, 2, 4, 256}[random() % 4];
    const int seedsIn = std::array{2, 9, 60}[random() % 3];
    const int labels = std::array{2, 5, 255}[random() % 3];
    Picture picture{{width, height, layout}, {width, height, layout}};
    const bool smooth = random() % 2 == 0;
    picture.relief.set([&](int x, int y) {
        const double wave = 0.5 + 0.25 * std::sin(x * 0.7) + 0.25 * std::cos(y * 0.9);
        const int level = smooth ? int(wave * levels) : int(random() % levels);
        return static_cast<unsigned char>(std::min(level, levels - 1) * (256 / levels));
    });
    picture.marker.set([&](int, int) {
        return static_cast<unsigned char>(random() % seedsIn == 0 ? 1 + random() % labels : 0);
    });
    return picture;
}

TEST(Watershed, EqualsThePlainFlood) {
    std::mt19937 random(1);
    for (int norm = 0; norm <= 3; ++norm)
        for (int order : {kBySteps, kByDistance})
            for (int borders : {0, kBorders4, kBorders8})
                for (int trial = 0; trial < 12; ++trial) {
                    const Picture picture =
                        randomPicture(random, 1 + random() % 40, 1 + random() % 30);
                    SCOPED_TRACE("norm " + std::to_string(norm) + ", flags " +
                                 std::to_string(order | borders) + ", trial " +
                                 std::to_string(trial));
                    ASSERT_TRUE(samePixels(bruteForce(picture, norm, order | borders),
                                           flooded(picture, norm, order | borders)));
                }
}

TEST(Watershed, GivesTheSamePixelsInEverySlotAndLayout) {
    std::mt19937 random(2);
    for (int width : widths()) {
        for (const Layout& layout : layouts<unsigned char>()) {
            const Picture picture = randomPicture(random, width, 5, layout);
            const int norm = random() % 4;
            const BytePlane expected = bruteForce(picture, norm, kByDistance | kBorders8);
            forEachSlot([&] {
                ASSERT_TRUE(samePixels(expected, flooded(picture, norm, kByDistance | kBorders8)));
            });
        }
    }
}

/// One corridor of relief 0 wound into the plane, walls of 255: longer than the moments have bits.
TEST(Watershed, FollowsCorridorsOfAnyLength) {
    const int width = 641, height = 761;
    Picture picture{{width, height}, {width, height}};
    picture.relief.set([&](int x, int y) {
        if (y % 2 == 0) return 0;
        return x == (y % 4 == 1 ? width - 1 : 0) ? 0 : 255;
    });
    picture.marker.at(0, 0) = 7;
    picture.marker.at(0, height - 1) = 9;
    for (int norm : {1, 3}) {
        const BytePlane result = flooded(picture, norm, kByDistance);
        for (int y = 0; y < height; y += 2) {
            const int expected =
                y < height / 2 ? 7 : 9;  // the two floods meet half way, in the middle row
            if (y != height / 2) {
                ASSERT_EQ(result.at(width / 2, y), expected) << "norm " << norm << ", row " << y;
            }
        }
    }
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
TEST(Watershed, LinesAreClosedAndSpareTheOuterEdge) {
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

TEST(Watershed, HandlesPicturesWithNothingToDecide) {
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
