#pragma once

#include <optional>
#include <string>

#include "host/media/MediaSource.h"

namespace media {

/// What a user writes for a range: "auto", "each", or LO-HI with LO below HI, such as "0-4095".
/// Nothing for any other text.
std::optional<SampleRange> sampleRangeFromText(const std::string& text);

}  // namespace media
