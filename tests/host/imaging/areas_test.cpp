#include "host/imaging/Areas.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "tests/kit/pixels.h"

namespace {

/// Black and white noise; rows are longer than the region.
std::unique_ptr<HkImage> speckles(int width, int height, int percentWhite, unsigned seed) {
    auto image = noise(width + 3, height + 1, 1, seed);
    image->roiWidth = width;
    image->roiHeight = height;
    for (int i = 0; i < image->step * image->height; ++i)
        image->data[i] = image->data[i] % 100 < percentWhite ? 255 : 0;
    return image;
}

/// The pixels of each area, found by walking from neighbour to neighbour.
std::vector<std::vector<int>> walkedAreas(const HkImage& image) {
    const int width = image.roiWidth, height = image.roiHeight;
    std::vector<bool> seen(std::size_t(width * height));
    std::vector<std::vector<int>> areas;
    for (int start = 0; start < width * height; ++start) {
        std::vector<int> pixels;
        const auto visit = [&](int x, int y) {
            if (x < 0 || y < 0 || x >= width || y >= height || sample(image, x, y) != 255) return;
            if (!seen[y * width + x]) pixels.push_back(y * width + x);
            seen[y * width + x] = true;
        };
        visit(start % width, start / width);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            for (const int dy : {-1, 0, 1})
                for (const int dx : {-1, 0, 1})
                    visit(pixels[i] % width + dx, pixels[i] / width + dy);
        if (!pixels.empty()) areas.push_back(pixels);
    }
    return areas;
}

/// The places of these pixels along an axis: what is measured of an area.
struct Extent {
    explicit Extent(const std::vector<int>& places)
        : first(*std::min_element(places.begin(), places.end())),
          last(*std::max_element(places.begin(), places.end())),
          mean(std::accumulate(places.begin(), places.end(), 0.0) / double(places.size())) {}
    int first, last;
    double mean;
};

TEST(Areas, AreThoseAWalkFromNeighbourToNeighbourFinds) {
    const AreaRules everyRule[] = {{1, false}, {4, false}, {1, true}, {9, true}};
    for (auto [width, height] : {std::pair{1, 1}, {1, 9}, {8, 1}, {33, 20}, {64, 64}, {101, 57}})
        for (int percent : {0, 5, 20, 35, 60, 100})
            for (const AreaRules& rules : everyRule) {
                SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << percent
                                                << " %, " << rules.fewestPixels);
                const auto image = speckles(width, height, percent, unsigned(width + percent));
                const auto walked = walkedAreas(*image);
                AreaMap map;
                ASSERT_EQ(mapAreas(*image, rules, map), AreaStatus::Success);
                std::vector<std::int32_t> labels(std::size_t(width * height));
                std::size_t kept = 0;
                for (const std::vector<int>& pixels : walked) {
                    std::vector<int> columns, rows;
                    for (const int pixel : pixels)
                        columns.push_back(pixel % width), rows.push_back(pixel / width);
                    const Extent x(columns), y(rows);
                    const bool reachesBorder =
                        x.first == 0 || x.last == width - 1 || y.first == 0 || y.last == height - 1;
                    if (int(pixels.size()) < rules.fewestPixels ||
                        (rules.withoutBorder && reachesBorder))
                        continue;
                    ASSERT_LT(kept, map.areas.size());
                    const Area& area = map.areas[kept++];
                    for (const int pixel : pixels) labels[pixel] = std::int32_t(kept);
                    ASSERT_EQ(area.pixels, int(pixels.size()));
                    ASSERT_NEAR(area.centroidX, x.mean, 1e-9);
                    ASSERT_NEAR(area.centroidY, y.mean, 1e-9);
                    ASSERT_EQ(std::pair(area.left, area.width),
                              std::pair(x.first, x.last - x.first + 1));
                    ASSERT_EQ(std::pair(area.top, area.height),
                              std::pair(y.first, y.last - y.first + 1));
                }
                EXPECT_EQ(map.areas.size(), kept);
                EXPECT_EQ(map.labels, labels);
                EXPECT_EQ(map.leftOut, int(walked.size() - kept));
                EXPECT_EQ(countWhiteAreas(*image), int(walked.size()));
            }
}

TEST(Areas, AreRefusedWhereTheyAreNotKnown) {
    AreaMap map;
    EXPECT_EQ(mapAreas(HkImage(), {}, map), AreaStatus::NotOneChannel);
    EXPECT_EQ(mapAreas(HkImage(4, 4, 3, nullptr, 4), {}, map), AreaStatus::NotOneChannel);
    const auto image = speckles(9, 9, 50, 1);
    image->data[image->step * 8 + 8] = 254;
    EXPECT_EQ(mapAreas(*image, {}, map), AreaStatus::NotBlackAndWhite);
    const auto white = speckles(4, 4, 100, 1);
    ASSERT_EQ(mapAreas(*white, {}, map), AreaStatus::Success);
    EXPECT_EQ(withOutlines(*image, map), nullptr) << "of another size";
}

TEST(Outlines, CoverTheRimAndKeepAllElse) {
    // Two areas, one at the border; the hole of the other has a rim as well.
    const char* const drawing[] = {"oo........", "oo.ooooo..", "...oxxxo..",
                                   "...ox.xo..", "...oxxxo..", "...ooooo.."};
    for (int channels : {1, 2, 3, 4}) {
        HkImage result(10, 6, 1, nullptr, 4), picture(10, 6, channels, nullptr, 4);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 10; ++x) {
                sample(result, x, y) = drawing[y][x] == '.' ? 0 : 255;
                for (int c = 0; c < channels; ++c)
                    sample(picture, x, y, c) = static_cast<unsigned char>(y * 20 + x * 3 + c * 50);
            }
        AreaMap map;
        ASSERT_EQ(mapAreas(result, {}, map), AreaStatus::Success);
        EXPECT_EQ(map.areas.size(), 2u);
        const auto drawn = withOutlines(picture, map);
        ASSERT_TRUE(drawn);
        ASSERT_EQ(drawn->channels, channels % 2 == 0 ? 4 : 3);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 10; ++x) {
                // The pixels beside the hole have a side in common with it; its corners have not.
                const bool besideHole = (y == 3 && (x == 4 || x == 6)) || (x == 5 && y != 3);
                const bool rim = drawing[y][x] == 'o' || (drawing[y][x] == 'x' && besideHole);
                const int orange[] = {255, 140, 0, 255};
                for (int c = 0; c < drawn->channels; ++c) {
                    const int source = c == 3 ? channels - 1 : channels <= 2 ? 0 : c;
                    EXPECT_EQ(sample(*drawn, x, y, c),
                              rim ? orange[c] : sample(picture, x, y, source))
                        << x << ' ' << y << ' ' << c;
                }
            }
    }
}

}  // namespace
