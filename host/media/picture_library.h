#pragma once

#include <OpenImageIO/imageio.h>

namespace media {

/// Frames are read and written side by side, one thread each; a pool of threads inside OpenImageIO
/// would only compete with them. It knows this setting for the whole process only. Called before
/// each use; only the first call does anything.
inline void keepToOwnThread() {
    [[maybe_unused]] static const bool done = OIIO::attribute("threads", 1);
}

}  // namespace media
