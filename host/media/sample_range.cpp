#include "host/media/sample_range.h"

#include <QRegularExpression>

namespace media {

std::optional<SampleRange> sampleRangeFromText(const std::string& text) {
    if (text == "auto") return SampleRange{SampleRange::Auto, 0, 0};
    if (text == "each") return SampleRange{SampleRange::Each, 0, 0};
    static const QRegularExpression pattern(
        QStringLiteral(R"(^(-?[0-9.]+(?:[eE][-+]?[0-9]+)?)-(-?[0-9.]+(?:[eE][-+]?[0-9]+)?)$)"));
    const auto match = pattern.match(QString::fromStdString(text));
    bool lowIsNumber = false, highIsNumber = false;
    const double low = match.captured(1).toDouble(&lowIsNumber);
    const double high = match.captured(2).toDouble(&highIsNumber);
    if (!lowIsNumber || !highIsNumber || low >= high) return std::nullopt;
    return SampleRange{SampleRange::Given, low, high};
}

}  // namespace media
