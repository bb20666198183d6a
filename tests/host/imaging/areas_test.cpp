#include "host/imaging/Areas.h"

#include <gtest/gtest.h>

#include <random>

namespace {

/// A picture whose rows are longer than its pixels.
std::unique_ptr<HkImage> noise(int width, int height, int percentWhite, unsigned seed) {
    auto image = std::make_unique<HkImage>(width + 3, height + 1, 1, nullptr, 4u);
    image->roiWidth = width;
    image->roiHeight = height;
    std::mt19937 random(seed);
    for (int y = 0; y <= height; ++y)
        for (int x = 0; x < width + 3; ++x)
            image->data[y * image->step + x] =
                static_cast<int>(random() % 100) < percentWhite ? 255 : 0;
    return image;
}

/// Area by area, found by walking from neighbour to neighbour.
class WalkedAreas {
public:
    WalkedAreas(const HkImage& image, const AreaRules& rules)
        : m_image(image), m_width(image.roiWidth), m_height(image.roiHeight) {
        std::vector<bool> seen(std::size_t(m_width * m_height));
        labels.resize(seen.size());
        for (int start = 0; start < m_width * m_height; ++start) {
            if (seen[start] || !isWhite(start)) continue;
            std::vector<int> members = {start};
            seen[start] = true;
            for (std::size_t i = 0; i < members.size(); ++i)
                for (int other : neighbours(members[i]))
                    if (isWhite(other) && !seen[other]) {
                        seen[other] = true;
                        members.push_back(other);
                    }
            keep(members, rules);
        }
    }

    std::vector<Area> areas;
    std::vector<std::int32_t> labels;
    int leftOut = 0;

private:
    bool isWhite(int pixel) const {
        return m_image.data[pixel / m_width * m_image.step + pixel % m_width] == 255;
    }
    std::vector<int> neighbours(int pixel) const {
        std::vector<int> result;
        for (int y = pixel / m_width - 1; y <= pixel / m_width + 1; ++y)
            for (int x = pixel % m_width - 1; x <= pixel % m_width + 1; ++x)
                if (x >= 0 && y >= 0 && x < m_width && y < m_height)
                    result.push_back(y * m_width + x);
        return result;
    }
    void keep(const std::vector<int>& members, const AreaRules& rules) {
        int left = m_width, top = m_height, right = 0, bottom = 0;
        Area area;
        for (int pixel : members) {
            const int x = pixel % m_width, y = pixel / m_width;
            left = std::min(left, x), right = std::max(right, x);
            top = std::min(top, y), bottom = std::max(bottom, y);
            area.centroidX += double(x) / members.size();
            area.centroidY += double(y) / members.size();
        }
        area.pixels = static_cast<int>(members.size());
        area.left = left, area.top = top;
        area.width = right - left + 1, area.height = bottom - top + 1;
        const bool reachesBorder =
            left == 0 || top == 0 || right == m_width - 1 || bottom == m_height - 1;
        if (area.pixels < rules.fewestPixels || (rules.withoutBorder && reachesBorder)) {
            ++leftOut;
            return;
        }
        areas.push_back(area);
        for (int pixel : members) labels[pixel] = static_cast<std::int32_t>(areas.size());
    }

    const HkImage& m_image;
    int m_width, m_height;
};

TEST(Areas, AreThoseAWalkFromNeighbourToNeighbourFinds) {
    const AreaRules everyRule[] = {{1, false}, {4, false}, {1, true}, {9, true}};
    for (auto [width, height] : {std::pair{1, 1}, {1, 9}, {8, 1}, {33, 20}, {64, 64}, {101, 57}})
        for (int percent : {0, 5, 20, 35, 60, 100})
            for (const AreaRules& rules : everyRule) {
                const auto image = noise(width, height, percent, unsigned(width + percent));
                const WalkedAreas walked(*image, rules);
                AreaMap map;
                ASSERT_EQ(mapAreas(*image, rules, map), AreaStatus::Success);
                SCOPED_TRACE(testing::Message() << width << " x " << height << ", " << percent
                                                << " %, " << rules.fewestPixels);
                ASSERT_EQ(map.areas.size(), walked.areas.size());
                EXPECT_EQ(map.labels, walked.labels);
                EXPECT_EQ(map.leftOut, walked.leftOut);
                EXPECT_EQ(countWhiteAreas(*image), map.leftOut + int(map.areas.size()));
                for (std::size_t i = 0; i < map.areas.size(); ++i) {
                    const Area &area = map.areas[i], &expected = walked.areas[i];
                    ASSERT_EQ(area.pixels, expected.pixels);
                    ASSERT_NEAR(area.centroidX, expected.centroidX, 1e-9);
                    ASSERT_NEAR(area.centroidY, expected.centroidY, 1e-9);
                    ASSERT_EQ(area.left, expected.left);
                    ASSERT_EQ(area.top, expected.top);
                    ASSERT_EQ(area.width, expected.width);
                    ASSERT_EQ(area.height, expected.height);
                }
            }
}

TEST(Areas, AreRefusedWhereTheyAreNotKnown) {
    AreaMap map;
    EXPECT_EQ(mapAreas(HkImage(), {}, map), AreaStatus::NotOneChannel);
    EXPECT_EQ(mapAreas(HkImage(4, 4, 3, nullptr, 4), {}, map), AreaStatus::NotOneChannel);
    const auto image = noise(9, 9, 50, 1);
    image->data[image->step * 8 + 8] = 254;
    EXPECT_EQ(mapAreas(*image, {}, map), AreaStatus::NotBlackAndWhite);
    const auto white = noise(4, 4, 100, 1);
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
                result.data[y * result.step + x] = drawing[y][x] == '.' ? 0 : 255;
                for (int c = 0; c < channels; ++c)
                    picture.data[y * picture.step + x * channels + c] =
                        static_cast<unsigned char>(y * 20 + x * 3 + c * 50);
            }
        AreaMap map;
        ASSERT_EQ(mapAreas(result, {}, map), AreaStatus::Success);
        EXPECT_EQ(map.areas.size(), 2u);
        const auto drawn = withOutlines(picture, map);
        ASSERT_TRUE(drawn);
        ASSERT_EQ(drawn->channels, channels % 2 == 0 ? 4 : 3);
        for (int y = 0; y < 6; ++y)
            for (int x = 0; x < 10; ++x) {
                const unsigned char* out = drawn->data + y * drawn->step + x * drawn->channels;
                const unsigned char* in = picture.data + y * picture.step + x * channels;
                // The pixels beside the hole have a side in common with it; its corners have not.
                const bool besideHole = (y == 3 && (x == 4 || x == 6)) || (x == 5 && y != 3);
                const bool rim = drawing[y][x] == 'o' || (drawing[y][x] == 'x' && besideHole);
                const int orange[] = {255, 140, 0, 255};
                for (int c = 0; c < drawn->channels; ++c) {
                    const int source = c == 3 ? channels - 1 : channels <= 2 ? 0 : c;
                    EXPECT_EQ(out[c], rim ? orange[c] : in[source]) << x << ' ' << y << ' ' << c;
                }
            }
    }
}

}  // namespace
