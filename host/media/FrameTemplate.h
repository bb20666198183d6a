#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace media {

/// More digits than this do not fit a frame number.
constexpr int kMostFrameDigits = 18;

/// A path whose file name has a place for the frame number: shot_####.png or shot_%04d.png, both
/// shot_0007.png for frame 7. The number of # is the least number of digits, as the 4 of %04d is.
class FrameTemplate {
public:
    /// The template in a path, if its file name holds one; # and % in the folder mean themselves.
    /// Where there are several runs of #, the last is the number's place; %% beside %d is one %.
    static std::optional<FrameTemplate> parse(const std::string& path);

    const std::string& folder() const { return m_folder; }  ///< as typed, with its /; may be empty
    std::string path(std::int64_t frame) const { return m_folder + fileName(frame); }
    std::string fileName(std::int64_t frame) const;

    /// The frame whose fileName() this is.
    std::optional<std::int64_t> frameOf(const std::string& fileName) const;

private:
    std::string m_folder;
    std::string m_before;  ///< file name up to the number
    std::string m_after;   ///< and after it
    int m_digits = 1;      ///< least number of digits
};

}  // namespace media
