#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"
#include "host/document/FilterLimits.h"
#include "host/kernel/KernelStore.h"

class HkImageFilter;

namespace document {

/// Runs frames through the filters that the kernel store held when this was made, in their order,
/// with the values in force at each frame. Each has filters of its own, so several may run at once
/// on several threads; one serves one thread at a time.
class ChainRenderer {
public:
    /// GUI thread. Throws std::runtime_error naming the filter when one cannot be made.
    ChainRenderer();
    /// The same for these instances instead of those in the store's order.
    explicit ChainRenderer(const std::vector<InstanceId>& instances);
    ~ChainRenderer();
    ChainRenderer(const ChainRenderer&) = delete;
    ChainRenderer& operator=(const ChainRenderer&) = delete;

    /// Told of each picture before and after an enabled filter worked on it; either may be empty.
    struct Observer {
        using Look = std::function<void(const QString& filterKey, const HkImage& picture)>;
        Look input, result;
    };

    /// Any thread. Throws FrameRefused before the first filter that cannot take the frame, and
    /// std::runtime_error naming the filter that gave no picture.
    std::unique_ptr<HkImage> render(std::unique_ptr<HkImage> image, qint64 frame,
                                    const Observer& observer = Observer());

    /// Whether the white areas of render()'s result at this frame are objects that a user counts:
    /// whether the last enabled filter is one that shows objects.
    bool showsObjects(qint64 frame) const;

private:
    struct Step {
        QString key;
        int typeId;
        int objectId;
        FilterLimits limits;
        std::unique_ptr<HkImageFilter> filter;
    };
    /// The values in force; none when the instance is gone.
    static std::optional<FilterValues> valuesAt(const Step& step, qint64 frame);

    std::vector<Step> m_steps;
};

}  // namespace document
