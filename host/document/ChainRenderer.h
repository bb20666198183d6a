#pragma once

#include <QtGlobal>
#include <memory>
#include <string>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"

class HkImageFilter;

namespace document {

/// Runs frames through the filters that the kernel store held when this was made, in their order,
/// with the values in force at each frame. Each has filters of its own, so several may run at once
/// on several threads; one serves one thread at a time.
class ChainRenderer {
public:
    /// GUI thread. Throws std::runtime_error naming the filter when one cannot be made.
    ChainRenderer();
    ~ChainRenderer();
    ChainRenderer(const ChainRenderer&) = delete;
    ChainRenderer& operator=(const ChainRenderer&) = delete;

    /// Any thread. Throws std::runtime_error naming the filter that gave no picture.
    std::unique_ptr<HkImage> render(std::unique_ptr<HkImage> image, qint64 frame);

private:
    struct Step {
        std::string key;
        std::unique_ptr<HkImageFilter> filter;
    };
    std::vector<Step> m_steps;
};

}  // namespace document
