#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/media/video_library.h"

namespace media {

/// The sound of one video on its way into another, packet for packet as it is.
class CompanionTracks {
public:
    /// startSeconds: what is 0 in the new video. Takes those sound tracks that the container can
    /// hold. Throws MediaError (InvalidData) when the file cannot be opened.
    CompanionTracks(const std::string& path, double startSeconds, const std::string& container);

    int trackCount() const;

    /// Tracks that are not taken, for the user: "2 subtitle tracks".
    const std::vector<std::string>& leftOut() const { return m_leftOut; }

    /// Adds the tracks, and what the file says of itself (title ...), to the new video. Throws
    /// std::bad_alloc.
    void addTo(AVFormatContext& output);

    /// Hands over what is heard up to this time, with output's stream numbers and time bases. write
    /// returns 0 or the library's error. Throws MediaError (InvalidData) when the file cannot be
    /// read or write finds the packet damaged; returns write's other errors, else 0.
    int copyUntil(double seconds, AVFormatContext& output,
                  const std::function<int(AVPacket&)>& write);

private:
    bool fetch();  // false at the end
    [[noreturn]] void failDamaged(int error) const;

    const std::string m_path;
    const double m_startSeconds;
    AvInput m_input;
    std::vector<int> m_outputStreams;  // of each stream of the input, -1: not taken
    std::vector<std::string> m_leftOut;
    AvOwned<AVPacket> m_packet;
    bool m_hasPacket = false;
};

}  // namespace media
