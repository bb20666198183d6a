#include "bench/seeds.h"

#include <opencv2/imgproc.hpp>

namespace scenes {

Scene seeds(const Scene& scene) {
    Scene result = scene;
    const cv::Mat source(scene.height, scene.width, CV_8U,
                         const_cast<unsigned char*>(scene.pixels.data()));
    cv::Mat distances, largest;
    cv::distanceTransform(source, distances, cv::DIST_L2, cv::DIST_MASK_PRECISE);
    cv::dilate(distances, largest, cv::Mat::ones(25, 25, CV_8U));
    cv::Mat marker(scene.height, scene.width, CV_8U, result.pixels.data());
    cv::Mat((distances >= largest - 2) & (distances > 4)).copyTo(marker);
    return result;
}

}  // namespace scenes
