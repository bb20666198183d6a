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

/// The fingerprints of frames for the chain that the kernel store held when this was made.
class Fingerprints {
public:
    /// GUI thread. plugin: the library, empty for the one of this program, which goes by the
    /// program's version; another goes by its bytes. format: what the user chose about how samples
    /// are read and outputs are written, in words of any kind.
    Fingerprints(const media::MediaSource& source, const std::string& plugin,
                 const std::string& format);

    /// For a frame that is written to a file of this name. The settings are the values in force at
    /// the frame of the filters that are switched on, in their order; the input is its file's name
    /// without folder, its size and the time of its last change, and the frame's number where
    /// several frames come from one file.
    Fingerprint of(std::int64_t frame, const std::string& output) const;

private:
    struct Filter {
        int typeId;
        std::string key;
        InstanceState state;
    };
    std::string settingsAt(std::int64_t frame) const;
    std::string inputAt(std::int64_t frame) const;

    const media::MediaSource& m_source;
    const std::string m_version;
    const std::string m_format;
    std::vector<Filter> m_filters;
    std::set<std::string> m_sharedInputs;  ///< files of several frames
};

}  // namespace render
