#pragma once

#include <cstdint>

#include "host/document/ContactSheet.h"
#include "host/media/MediaSink.h"

namespace render {

/// Draws a sheet and writes it as this frame. Throws as MediaSink::write() does.
inline void writeSheet(media::MediaSink& sink, std::int64_t frame,
                       const document::ContactSheet& sheet) {
    QImage drawn = document::drawContactSheet(sheet);
    const int rgb = 3;
    const unsigned int alignment = 4;  // of the toolkit's rows
    const HkImage picture(drawn.width(), drawn.height(), rgb, drawn.bits(), alignment);
    sink.write(frame, picture);
}

}  // namespace render
