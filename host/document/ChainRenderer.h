#pragma once

#include <QString>
#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"
#include "host/document/FilterLimits.h"
#include "host/kernel/KernelStore.h"

class HkImageFilter;

namespace document {

/// What a filter did that none may do; the text names it and what to do.
class FilterMisconduct : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Runs frames through the filters that the kernel store held when this was made, in their order,
/// with the values in force at each frame. Each has filters of its own, so several may run at once
/// on several threads; one serves one thread at a time.
class ChainRenderer {
public:
    /// GUI thread. Throws FilterMisconduct when a filter cannot be made.
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

    /// Any thread. Throws FrameRefused before the first filter that cannot take the frame,
    /// std::bad_alloc when a filter found no memory, whether it says so or not, and
    /// FilterMisconduct when one broke off or gave what is no picture.
    std::unique_ptr<HkImage> render(std::unique_ptr<HkImage> image, qint64 frame,
                                    const Observer& observer = Observer());

    /// Whether the white areas of render()'s result at this frame are objects that a user counts:
    /// whether the last enabled filter is one that shows objects.
    bool showsObjects(qint64 frame) const { return showsObjectsAfter(stepCount() - 1, frame); }

    /// How many they are; none when the result shows no objects, or memory ran out.
    std::optional<int> objectsIn(const HkImage& result, qint64 frame) const;

    // --- Step by step, for a preview that keeps the picture after each. All on any thread. ---

    int stepCount() const { return static_cast<int>(m_steps.size()); }
    int objectIdOf(int step) const { return m_steps.at(static_cast<std::size_t>(step)).objectId; }

    /// What the result of a step depends on beside its input: the filter and its values in force.
    std::string settingsOf(int step, qint64 frame) const;

    /// The picture after this step, given the one after the step before. Throws as render() does.
    std::unique_ptr<HkImage> renderStep(int step, std::unique_ptr<HkImage> input, qint64 frame);

    /// What `check` would object to in this step, given its input and its result; a sentence each.
    std::vector<std::string> objectionsTo(int step, const HkImage& input, const HkImage& result,
                                          qint64 frame) const;

    /// Whether the white areas of the picture after this step are objects that a user counts.
    bool showsObjectsAfter(int step, qint64 frame) const;

private:
    struct Step {
        QString key;
        int typeId;
        int objectId;
        FilterLimits limits;
        std::unique_ptr<HkImageFilter> filter;
    };
    /// Whether the step is switched on. Throws FrameRefused when it cannot take the picture.
    static bool admits(const Step& step, const HkImage& input, qint64 frame);
    static std::unique_ptr<HkImage> process(const Step& step, std::unique_ptr<HkImage> input,
                                            qint64 frame);
    /// The values in force; none when the instance is gone.
    static std::optional<FilterValues> valuesAt(const Step& step, qint64 frame);

    std::vector<Step> m_steps;
};

}  // namespace document
