// PNG on libdeflate. A reader (PngDecoder) and a writer of our own, because the pixels' stream is
// most of the work and the PNG libraries leave it to zlib, which takes three times as long.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "host/media/formats/Format.h"
#include "host/media/formats/PngDecoder.h"
#include "host/media/formats/camera_data.h"
#include "host/media/formats/deflate.h"
#include "host/media/formats/png_animation.h"

namespace media::formats {

using namespace png_code;

namespace {

void put32(unsigned value, std::vector<unsigned char>& out) {
    for (int shift = 24; shift >= 0; shift -= 8)
        out.push_back(static_cast<unsigned char>(value >> shift));
}

/// Appends a chunk whose contents the function appends.
template <typename Contents>
void putChunk(const char* name, std::vector<unsigned char>& out, Contents contents) {
    const std::size_t begin = out.size();
    put32(0, out);
    out.insert(out.end(), name, name + 4);
    contents();
    const unsigned size = static_cast<unsigned>(out.size() - begin - 8);
    for (std::size_t i = 0; i < 4; ++i)
        out[begin + i] = static_cast<unsigned char>(size >> (24 - 8 * i));
    put32(crc32Of({out.data() + begin + 4, out.size() - begin - 4}), out);
}

void filterRow(int filter, const unsigned char* row, const unsigned char* up, std::size_t pixel,
               unsigned char* out, std::size_t size) {
    const auto byte = [](int value) { return static_cast<unsigned char>(value); };
    const std::size_t first = std::min(pixel, size);
    switch (filter) {
        case Sub:
            std::memcpy(out, row, first);
            for (std::size_t i = first; i < size; ++i) out[i] = byte(row[i] - row[i - pixel]);
            return;
        case Up:
            for (std::size_t i = 0; i < size; ++i) out[i] = byte(row[i] - up[i]);
            return;
        case Average:
            for (std::size_t i = 0; i < first; ++i) out[i] = byte(row[i] - up[i] / 2);
            for (std::size_t i = first; i < size; ++i)
                out[i] = byte(row[i] - (row[i - pixel] + up[i]) / 2);
            return;
        default:
            std::memcpy(out, row, size);
    }
}

/// The words of a picture as PNG has them, in rows without gaps.
std::vector<unsigned char> highByteFirst(const PictureRows& rows) {
    std::vector<unsigned char> out;
    out.reserve(rows.rowBytes() * static_cast<std::size_t>(rows.height));
    for (int y = 0; y < rows.height; ++y) {
        const unsigned char* row = rows.row(y);
        for (std::size_t i = 0; i < rows.rowBytes(); i += 2) {
            std::uint16_t word;
            std::memcpy(&word, row + i, 2);
            out.push_back(static_cast<unsigned char>(word >> 8));
            out.push_back(static_cast<unsigned char>(word));
        }
    }
    return out;
}

/// Masks: their rows hold long runs, and differ little from those above.
bool isBlackAndWhite(const PictureRows& rows) {
    for (int y = 0; y < rows.height; ++y) {
        const unsigned char* row = rows.row(y);
        unsigned char other = 0;
        for (std::size_t i = 0; i < rows.rowBytes(); ++i)
            other |= static_cast<unsigned char>(row[i] + 1) & 0xFE;
        if (other != 0) return false;
    }
    return true;
}

/// Small differences compress well: the usual measure, the sum of their sizes.
unsigned long cost(const unsigned char* filtered, std::size_t size) {
    unsigned long sum = 0;
    for (std::size_t i = 0; i < size; ++i)
        sum += static_cast<unsigned>(std::abs(static_cast<signed char>(filtered[i])));
    return sum;
}

/// The rows, each behind the number of its filter, which is one of the candidates. One filter for
/// sixteen rows, the best one for the first of them: as small as choosing for each row within 1 %,
/// for little time.
Bytes filtered(const PictureRows& rows, std::initializer_list<int> candidates, Scratch& scratch) {
    constexpr int kRowsOfOneFilter = 16;
    const std::size_t size = rows.rowBytes();
    const std::size_t pixel = rows.pixelBytes();
    unsigned char* const begin =
        scratch.atLeast((size + 1) * static_cast<std::size_t>(rows.height));
    const std::vector<unsigned char> nothing(size);
    unsigned char* out = begin;
    int filter = *candidates.begin();
    for (int y = 0; y < rows.height; ++y, out += size + 1) {
        const unsigned char* up = y > 0 ? rows.row(y - 1) : nothing.data();
        // Row 0 has nothing above it and says nothing about the others.
        if (candidates.size() > 1 && (y % kRowsOfOneFilter == 1 || y == 0)) {
            unsigned long least = 0;
            for (int candidate : candidates) {
                filterRow(candidate, rows.row(y), up, pixel, out + 1, size);
                const unsigned long price = cost(out + 1, size);
                if (candidate == *candidates.begin() || price < least) {
                    least = price;
                    filter = candidate;
                }
            }
        }
        out[0] = static_cast<unsigned char>(filter);
        filterRow(filter, rows.row(y), up, pixel, out + 1, size);
    }
    return {begin, static_cast<std::size_t>(out - begin)};
}

void encodePng(const PictureRows& given, const PictureProperties& properties,
               const WriteOptions& options, const std::string&, std::vector<unsigned char>& file) {
    PictureRows rows = given;
    std::vector<unsigned char> words;
    if (rows.sampleBytes == 2) {
        words = highByteFirst(given);
        rows.data = words.data();
        rows.step = static_cast<std::ptrdiff_t>(rows.rowBytes());
    }
    file.insert(file.end(), kSignature, kSignature + kSignatureSize);
    putChunk("IHDR", file, [&] {
        constexpr unsigned char colourTypes[] = {Grey, GreyAlpha, Rgb, RgbAlpha};
        put32(static_cast<unsigned>(rows.width), file);
        put32(static_cast<unsigned>(rows.height), file);
        const auto bits = static_cast<unsigned char>(8 * rows.sampleBytes);
        file.insert(file.end(), {bits, colourTypes[rows.channels - 1], 0, 0, 0});
    });
    if (!properties.iccProfile.empty())
        putChunk("iCCP", file, [&] {
            const std::string name("profile\0", 8);
            file.insert(file.end(), name.begin(), name.end());
            file.push_back(0);
            deflateTo({properties.iccProfile.data(), properties.iccProfile.size()},
                      options.compression, file);
        });
    const bool hasUnit = !properties.resolutionUnit.empty();
    const double perMetre = properties.resolutionUnit == "in" ? 100 / 2.54 : hasUnit ? 100 : 1;
    const auto stored = [perMetre](double value) {
        const double rounded = std::round(value * perMetre);
        return rounded > 0 ? static_cast<unsigned>(std::min(rounded, 2147483647.0)) : 0;
    };
    const unsigned x = stored(properties.xResolution), y = stored(properties.yResolution);
    if (x > 0 && y > 0)
        putChunk("pHYs", file, [&] {
            put32(x, file);
            put32(y, file);
            file.push_back(hasUnit ? 1 : 0);
        });
    const std::vector<unsigned char> camera = asExif(properties.cameraData);
    if (!camera.empty())
        putChunk("eXIf", file, [&] { file.insert(file.end(), camera.begin(), camera.end()); });
    putChunk("IDAT", file, [&] {
        thread_local Scratch scratch;
        // Up to this level, runs alone make masks smaller than the usual search does.
        constexpr int kLastOfRuns = 4;
        if (options.compression >= 1 && options.compression <= kLastOfRuns && isBlackAndWhite(rows))
            return deflateRunsTo(filtered(rows, {Up}, scratch), file);
        // Paeth's is left out: three times the time of the others together, and no smaller with
        // pictures that were filtered.
        deflateTo(filtered(rows, {None, Sub, Up, Average}, scratch), options.compression, file);
    });
    putChunk("IEND", file, [] {});
}

}  // namespace

std::vector<Format> png() {
    Format still = {"PNG",
                    {".png"},
                    [](const Bytes& file) { return file.startsWith(kSignature, kSignatureSize); },
                    [](const Bytes& file, int) -> std::unique_ptr<PictureDecoder> {
                        return std::make_unique<PngDecoder>(file);
                    },
                    nullptr,
                    encodePng,
                    0b1111,
                    32768,
                    openPngAnimation,
                    true};
    Format animated = still;
    animated.suffixes = {".apng"};
    animated.encode = nullptr;  // stills have the other suffix
    return {still, animated};
}

}  // namespace media::formats
