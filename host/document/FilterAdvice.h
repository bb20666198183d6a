#pragma once

#include <QString>
#include <string>
#include <vector>

#include "framework/contract/FxKernelApi/HkParamKeyframe.h"
#include "framework/contract/ImageProcessor/HkImage.h"

namespace document {

// What experience tells about single filters. The contract has no words for it, so this is the one
// place of the host that knows filters by name; one that it does not know is never objected to.

/// A filter's values at one frame, by name.
class FilterValues {
public:
    FilterValues(int typeId, const HkParamKeyframeVector& values)
        : m_typeId(typeId), m_values(values) {}

    int toInt(const char* name) const;  ///< 0 when there is no such parameter
    bool isEnabled() const;

private:
    int m_typeId;
    HkParamKeyframeVector m_values;
};

/// A sentence for each setting that cannot give a meaningful result on frames of this size.
std::vector<std::string> adviceOnSettings(const QString& key, const FilterValues& values, int width,
                                          int height);

/// The same for what only the picture that reaches the filter tells.
std::vector<std::string> adviceOnPicture(const QString& key, const HkImage& input);

/// Whether adviceOnPicture has anything to say about this filter.
bool looksAtPicture(const QString& key);

/// Whether the white areas of the filter's result are objects that a user counts.
bool resultShowsObjects(const QString& key, const FilterValues& values);

}  // namespace document
