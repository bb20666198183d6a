#pragma once

#include <QString>
#include <optional>
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
    double number(int index) const { return m_values.at(index).getValue().toDouble(); }
    bool isEnabled() const;

private:
    int m_typeId;
    HkParamKeyframeVector m_values;
};

/// What the filter's page leaves unsaid about a parameter, or says wrongly; mostly nothing.
QString remarkOn(const QString& key, const QString& parameterName);

/// Why the filter cannot take frames of this size, and what to do: it would give back something
/// else than a result.
std::optional<std::string> refusalOfSize(const QString& key, const FilterValues& values, int width,
                                         int height);

/// A sentence for each setting that cannot give a meaningful result.
std::vector<std::string> adviceOnSettings(const QString& key, const FilterValues& values);

/// The same for what only a picture tells: the one that reaches the filter, and the one that it
/// made.
std::vector<std::string> adviceOnInput(const QString& key, const HkImage& input);
std::vector<std::string> adviceOnResult(const QString& key, const HkImage& result);

/// Whether these have anything to say about this filter, when pictures of so many channels go into
/// the chain.
bool looksAtInput(const QString& key, int channels);
bool looksAtResult(const QString& key);

/// Whether the white areas of the filter's result are objects that a user counts.
bool resultShowsObjects(const QString& key, const FilterValues& values);

/// The memory in bytes that the filter works in at its peak, beside the picture of this size that
/// it is given and one more; measured with large pictures. Of a filter that is not known, as much
/// as the most that one takes for each pixel.
double workingBytes(const QString& key, const FilterValues& values, int width, int height);

}  // namespace document
