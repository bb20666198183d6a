#pragma once

/// Inner loops between 8-bit samples and floats, built for several instruction sets.
namespace level_rows {

/// Samples that toLevels() settles at once.
constexpr int kBlock = 64;

/// Converts (value - lo) * scale to the nearest level, 0 to 255 (NaN to 0), as long as single
/// precision leaves no doubt about it, whatever the rounding of lo and scale to floats has cost.
/// Returns how many samples it converted: width, or the multiple of kBlock at which the block
/// begins that holds a value too near the middle between two levels. Nothing when width < kBlock.
int toLevels(const float* in, unsigned char* out, int width, float lo, float scale);

/// out = lo + sample * scale in single precision, each operation rounded.
void toFloats(const unsigned char* in, float* out, int width, float lo, float scale);

}  // namespace level_rows
