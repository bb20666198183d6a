#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/media/MediaSink.h"
#include "host/media/MediaSource.h"
#include "host/render/Ledger.h"

namespace render {

/// How an output stands to what a run would write today.
struct Standing {
    enum Kind {
        UpToDate,
        Missing,
        Stale,      ///< it was written from something else
        Changed,    ///< it is not what was written
        Unrecorded  ///< nobody recorded how it was made
    };
    Kind kind = Missing;
    std::string text;  ///< for a user: "stale (the settings changed)"
};

/// Knows which outputs of a run stand and from what they were made, and records those that are
/// written. What it is given must outlive it.
class OutputBook {
public:
    /// GUI thread. frames: those whose fingerprints matter. All outputs lie in one folder, each in
    /// a file of its own. shard: see Ledger.
    /// Throws UsageError when several frames go to one file.
    OutputBook(const media::MediaSource& source, const media::MediaSink& sink,
               const std::vector<std::int64_t>& frames, const OutputOrigin& origin,
               const std::string& shard);

    enum class Look {
        Quick,    ///< a file of the recorded size and time is taken for the one that was written
        Thorough  ///< every byte is read
    };
    Standing standingOf(std::int64_t frame, Look look) const;

    /// To be called when the frame's output is complete. Any thread. Throws media::MediaError.
    void recordOutput(std::int64_t frame);

private:
    const media::MediaSink& m_sink;
    std::map<std::int64_t, Fingerprint> m_fingerprints;
    OutputRecords m_records;
    Ledger m_ledger;
};

}  // namespace render
