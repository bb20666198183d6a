#pragma once

#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/document/FilterAdvice.h"
#include "host/document/PageFacts.h"

namespace document {

/// A frame that a filter cannot take with the values in force. what() is one line of UTF-8 without
/// a full stop at its end: it names the filter, says why, and what to do.
class FrameRefused : public std::runtime_error {
public:
    FrameRefused(const std::string& filterKey, const std::string& reason)
        : std::runtime_error(filterKey + ": " + reason) {}
};

/// What a filter of one type can take. A filter itself says nothing when it cannot do its work: a
/// frame is to be held against this before, and is not to be given to the filter when it is
/// refused.
class FilterLimits {
public:
    /// GUI thread, see pageFacts().
    explicit FilterLimits(int typeId);

    /// Why a frame of this size cannot be rendered with these values, and what to do; nothing when
    /// it can, or when the filter is switched off. Any thread.
    ///
    /// A number is refused when it is neither in the range of the filter's page nor between that
    /// and the default: the filter was not made for it, and may take any time over it.
    std::optional<std::string> refusal(const FilterValues& values, int width, int height) const;

private:
    struct Bound {
        int index;
        QString name;
        ParameterRange page;
        ParameterRange allowed;  ///< and what lies between the page and the default
    };
    QString m_key;
    std::vector<Bound> m_bounds;
};

}  // namespace document
