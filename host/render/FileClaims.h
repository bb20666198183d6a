#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/media/MediaSink.h"
#include "host/media/MediaSource.h"

namespace render {

/// The files that a command reads and writes: none serves two purposes, whatever roads lead to it.
class FileClaims {
public:
    explicit FileClaims(const media::MediaSource& source);

    /// purpose: "the report". Throws UsageError when the file has another purpose already.
    void claim(const std::string& path, const std::string& purpose);
    void claim(const media::MediaSink& sink, const std::vector<std::int64_t>& frames,
               const std::string& purpose);

private:
    std::map<std::string, std::string> m_purposes;
};

}  // namespace render
