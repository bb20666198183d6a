#pragma once

#include <memory>

#include "host/media/formats/Format.h"

/// Animated PNG: a still picture and, in chunks of their own, frames that are drawn one after the
/// other onto a canvas of its size.
namespace media::formats {

/// Composites the frames as the W3C's PNG, third edition, says: each is cleared, kept or taken back
/// after it was shown, and replaces or covers what it is drawn on. The still picture is a frame
/// only where it stands behind a frame's head. 16 bits become 8; a canvas that shows through gets
/// alpha. Null: the file is a still picture, damaged ones among them. Throws FormatError when the
/// file says that it is an animation and its chunks contradict each other; frames whose pixels are
/// damaged throw when they are drawn.
std::unique_ptr<AnimationDecoder> openPngAnimation(const Bytes& file);

}  // namespace media::formats
