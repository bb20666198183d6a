#include "host/imaging/Areas.h"

#include <array>
#include <opencv2/imgproc.hpp>

#include "host/imaging/HkImageAccess.h"

namespace {

constexpr int kEightNeighbours = 8;

cv::Mat regionOf(const HkImage& image) {
    return cv::Mat(image.roiHeight, image.roiWidth, CV_8UC(image.channels), image.data,
                   static_cast<std::size_t>(image.step));
}

bool isBlackAndWhite(const cv::Mat& region) {
    for (int y = 0; y < region.rows; ++y) {
        const unsigned char* row = region.ptr(y);
        for (int x = 0; x < region.cols; ++x)
            if (row[x] != 0 && row[x] != 255) return false;
    }
    return true;
}

bool reachesBorder(const Area& area, const cv::Mat& region) {
    return area.left == 0 || area.top == 0 || area.left + area.width == region.cols ||
           area.top + area.height == region.rows;
}

Area measured(const cv::Mat& stats, const cv::Mat& centroids, int label) {
    Area area;
    area.pixels = stats.at<int>(label, cv::CC_STAT_AREA);
    area.centroidX = centroids.at<double>(label, 0);
    area.centroidY = centroids.at<double>(label, 1);
    area.left = stats.at<int>(label, cv::CC_STAT_LEFT);
    area.top = stats.at<int>(label, cv::CC_STAT_TOP);
    area.width = stats.at<int>(label, cv::CC_STAT_WIDTH);
    area.height = stats.at<int>(label, cv::CC_STAT_HEIGHT);
    return area;
}

void findAreas(const cv::Mat& region, const AreaRules& rules, AreaMap& map) {
    map.width = region.cols;
    map.height = region.rows;
    map.areas.clear();
    map.leftOut = 0;
    map.labels.resize(region.total());
    cv::Mat labels(region.rows, region.cols, CV_32S, map.labels.data());
    cv::Mat stats;
    cv::Mat centroids;
    const int count =
        cv::connectedComponentsWithStats(region, labels, stats, centroids, kEightNeighbours);

    // The library numbers areas in the order its algorithm meets them: number those that are kept
    // anew, row by row.
    constexpr std::int32_t kUnseen = -1;
    std::vector<std::int32_t> newLabel(static_cast<std::size_t>(count), kUnseen);
    newLabel[0] = 0;
    for (std::int32_t& label : map.labels) {
        std::int32_t& known = newLabel[static_cast<std::size_t>(label)];
        if (known == kUnseen) {
            const Area area = measured(stats, centroids, label);
            if (area.pixels < rules.fewestPixels ||
                (rules.withoutBorder && reachesBorder(area, region))) {
                known = 0;
                ++map.leftOut;
            } else {
                map.areas.push_back(area);
                known = static_cast<std::int32_t>(map.areas.size());
            }
        }
        label = known;
    }
}

/// Whether a pixel of an area has a neighbour at a side that is not of the area.
bool isOnOutline(const AreaMap& map, int x, int y) {
    if (x == 0 || y == 0 || x == map.width - 1 || y == map.height - 1) return true;
    const std::int32_t* label = map.labels.data() + static_cast<std::size_t>(y) * map.width + x;
    return label[-1] != *label || label[1] != *label || label[-map.width] != *label ||
           label[map.width] != *label;
}

}  // namespace

int countWhiteAreas(const HkImage& image) {
    if (!HkImageAccess::isPicture(image) || image.channels != 1) return -1;
    try {
        cv::Mat labels;
        return cv::connectedComponents(regionOf(image), labels, kEightNeighbours) -
               1;  // the background counts as one
    } catch (const std::exception&) {
        return -1;
    }
}

AreaStatus mapAreas(const HkImage& image, const AreaRules& rules, AreaMap& map) {
    if (!HkImageAccess::isPicture(image) || image.channels != 1) return AreaStatus::NotOneChannel;
    if (!isBlackAndWhite(regionOf(image))) return AreaStatus::NotBlackAndWhite;
    try {
        findAreas(regionOf(image), rules, map);
    } catch (const std::exception&) {
        return AreaStatus::NoMemory;
    }
    return AreaStatus::Success;
}

std::unique_ptr<HkImage> withOutlines(const HkImage& picture, const AreaMap& map) {
    if (!HkImageAccess::isPicture(picture) || picture.roiWidth != map.width ||
        picture.roiHeight != map.height)
        return nullptr;
    const bool hasAlpha = picture.channels == 2 || picture.channels == 4;
    const bool isGrey = picture.channels <= 2;
    const int channels = hasAlpha ? 4 : 3;
    auto result = std::make_unique<HkImage>(map.width, map.height, channels, nullptr,
                                            HkImageAccess::kRowAlignment);
    if (!result->data) return nullptr;
    const std::array<unsigned char, 4> orange = {255, 140, 0, 255};
    for (int y = 0; y < map.height; ++y) {
        const unsigned char* in = picture.data + static_cast<std::ptrdiff_t>(y) * picture.step;
        unsigned char* out = result->data + static_cast<std::ptrdiff_t>(y) * result->step;
        const std::int32_t* label = map.labels.data() + static_cast<std::size_t>(y) * map.width;
        for (int x = 0; x < map.width; ++x, in += picture.channels, out += channels) {
            const bool drawn = label[x] != 0 && isOnOutline(map, x, y);
            for (int c = 0; c < 3; ++c) out[c] = drawn ? orange[c] : in[isGrey ? 0 : c];
            if (hasAlpha) out[3] = drawn ? orange[3] : in[picture.channels - 1];
        }
    }
    return result;
}
