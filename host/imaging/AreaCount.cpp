#include "host/imaging/AreaCount.h"

#include <opencv2/imgproc.hpp>

#include "host/imaging/HkImageAccess.h"

int countWhiteAreas(const HkImage& image) {
    if (!HkImageAccess::isPicture(image) || image.channels != 1) return -1;
    try {
        const cv::Mat region(image.roiHeight, image.roiWidth, CV_8U, image.data,
                             static_cast<std::size_t>(image.step));
        cv::Mat labels;
        const int eightNeighbours = 8;
        return cv::connectedComponents(region, labels, eightNeighbours) -
               1;  // the background counts as one
    } catch (const std::exception&) {
        return -1;
    }
}
