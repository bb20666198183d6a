#pragma once

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/opt.h>
}

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"

/// A video made by the encoding library itself, for tests of the reader.
struct VideoRecipe {
    const char* container = "mp4";
    std::vector<std::int64_t> times;  ///< one frame each
    const char* encoder = "libx264";
    const char* x264Options = "";
    AVPixelFormat format = AV_PIX_FMT_YUV420P;
    int width = 160;
    int height = 96;
    AVRational timeBase = {1, 25};
    int displayMatrix[9] = {};  ///< all 0: none
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED;
    bool hasSound = false;  ///< PCM, one packet for each frame's time
    bool hasVideo = true;
    /// Draws a frame; if none, its number is drawn.
    std::function<void(AVFrame&, int number)> draw = nullptr;
};

void makeVideo(const std::string& path, const VideoRecipe& recipe);

/// Frames at even distances.
std::vector<std::int64_t> evenTimes(int count);

/// The number drawn on a frame.
int numberOn(const HkImage& image);

/// The sound packets of a file: time in milliseconds and bytes.
struct SoundPacket {
    std::int64_t milliseconds;
    std::vector<unsigned char> bytes;
    bool operator==(const SoundPacket& other) const {
        return milliseconds == other.milliseconds && bytes == other.bytes;
    }
};
std::vector<SoundPacket> soundOf(const std::string& path);

/// What the video track of a file is tagged with.
AVCodecParameters videoParametersOf(const std::string& path);
