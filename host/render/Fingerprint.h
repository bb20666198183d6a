#pragma once

#include <array>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/kernel/InstanceState.h"
#include "host/media/MediaSource.h"

namespace render {

/// What the result of one frame depends on, each part as a hash: when all of them are the same, the
/// same bytes would be written again.
struct Fingerprint {
    enum Part { Version, Settings, Input, Format, PartCount };
    std::array<std::string, PartCount> parts;

    std::string text() const;  ///< one word
    /// Of what text() gave; parts are empty where there were none.
    static Fingerprint fromText(const std::string& text);

    /// "the settings and the input", what is not the same in both.
    std::string differenceTo(const Fingerprint& other) const;
};
inline bool operator==(const Fingerprint& a, const Fingerprint& b) {
    return a.parts == b.parts;
}

/// What outputs depend on beside filters and inputs.
struct OutputOrigin {
    std::string plugin;  ///< the library; empty for the one of this program
    std::string range;   ///< of samples, as the user wrote it
    std::string format;  ///< what the user chose about the files that are written
};

/// The fingerprints of frames for the chain that the kernel store held when this was made.
class Fingerprints {
public:
    /// GUI thread. The program's own plug-in goes by the program's version, another by its bytes.
    Fingerprints(const media::MediaSource& source, const OutputOrigin& origin);

    /// For a frame that is written to a file of this name. The settings are the values in force at
    /// the frame of the filters that are switched on, in their order; the input is its file's name
    /// without folder, its size and the time of its last change, the frame's number where several
    /// frames come from one file, and the first frame's file where that sets the range.
    Fingerprint of(std::int64_t frame, const std::string& output) const;

private:
    struct Filter {
        int typeId;
        std::string key;
        InstanceState state;
    };
    std::string settingsAt(std::int64_t frame) const;
    std::string inputAt(std::int64_t frame) const;
    std::string fileAt(std::int64_t frame) const;

    const media::MediaSource& m_source;
    const std::string m_version;
    const OutputOrigin m_origin;
    std::vector<Filter> m_filters;
    std::set<std::string> m_sharedInputs;  ///< files of several frames
};

}  // namespace render
