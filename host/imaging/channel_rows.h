#pragma once

#include <cstdint>

/// Inner loops over interleaved channels, built for several instruction sets. Source and
/// destination are apart, or rows of one picture that begin at the same address.
namespace channel_rows {

/// The weights of R, G and B, 4899, 9617 and 1868 of 2^14, in bytes. The sum of the low bytes is
/// 256, so that every sum of products fits 16 bits, and half of 2^14 is 32 * 256. Handed on from
/// call to call since the compiler takes products with constants apart into many shifts and
/// additions.
struct LumaWeights {
    std::uint16_t high[3], low[3];
};

/// grey = Y of BT.601 for pixels of three or four channels, R, G, B first, rounded to nearest.
void luma(const unsigned char* rgb, int channels, unsigned char* grey, int width);

/// Copies one channel of pixels of 1 to 4 channels over one channel of others. src and dst point to
/// these channels within the first pixels.
void copyChannel(const unsigned char* src, int srcChannels, unsigned char* dst, int dstChannels,
                 int width);

}  // namespace channel_rows
