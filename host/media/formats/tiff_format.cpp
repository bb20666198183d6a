// TIFF. The writer is our own: strips of deflated rows behind one another, pages and camera data in
// directories, nothing that depends on the time or the machine.

#include <tiff.h>

#include <algorithm>
#include <cstring>

#include "host/media/formats/TiffDecoder.h"
#include "host/media/formats/camera_data.h"
#include "host/media/formats/deflate.h"

namespace media::formats {

namespace {

unsigned unitOf(const std::string& unit) {
    return unit == "in" ? RESUNIT_INCH : unit == "cm" ? RESUNIT_CENTIMETER : RESUNIT_NONE;
}

constexpr int kStripBytes = 1 << 18;

/// A row of `bytes` as TIFF's horizontal predictor has it: each sample less that of the pixel
/// before.
template <typename Sample>
void putDifferences(const unsigned char* in, unsigned char* out, std::size_t bytes, int channels) {
    const auto at = [in](std::size_t i) {
        Sample sample;
        std::memcpy(&sample, in + i * sizeof sample, sizeof sample);
        return sample;
    };
    const auto pixel = static_cast<std::size_t>(channels);
    for (std::size_t i = 0; i < bytes / sizeof(Sample); ++i) {
        const auto difference = static_cast<Sample>(i < pixel ? at(i) : at(i) - at(i - pixel));
        std::memcpy(out + i * sizeof difference, &difference, sizeof difference);
    }
}

/// Appends a page to a file that is empty or ends with another page. Its strips are of a size that
/// deflate likes and that can be read on its own.
void encodeTiff(const PictureRows& rows, const PictureProperties& properties,
                const WriteOptions& options, const std::string&, std::vector<unsigned char>& file) {
    const bool isFirst = file.empty();
    if (isFirst) file = {'I', 'I', '*', 0, 0, 0, 0, 0};
    const int rowsPerStrip =
        std::clamp(kStripBytes / static_cast<int>(rows.rowBytes()), 1, rows.height);
    std::vector<unsigned> offsets, sizes;
    thread_local Scratch scratch;
    for (int first = 0; first < rows.height; first += rowsPerStrip) {
        const int count = std::min(rowsPerStrip, rows.height - first);
        const std::size_t size = rows.rowBytes();
        unsigned char* strip = scratch.atLeast(size * static_cast<std::size_t>(rowsPerStrip));
        for (int y = 0; y < count; ++y) {
            const unsigned char* in = rows.row(first + y);
            unsigned char* out = strip + size * static_cast<std::size_t>(y);
            if (rows.sampleBytes == 2)
                putDifferences<std::uint16_t>(in, out, size, rows.channels);
            else
                putDifferences<unsigned char>(in, out, size, rows.channels);
        }
        offsets.push_back(static_cast<unsigned>(file.size()));
        deflateTo({strip, size * static_cast<std::size_t>(count)}, options.compression, file);
        sizes.push_back(static_cast<unsigned>(file.size()) - offsets.back());
    }
    if (file.size() % 2) file.push_back(0);

    const int colours = rows.channels >= 3 ? 3 : 1;
    const unsigned photometric = colours == 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;
    std::vector<CameraData::Entry> entries = {
        longsEntry(TIFFTAG_IMAGEWIDTH, {static_cast<unsigned>(rows.width)}),
        longsEntry(TIFFTAG_IMAGELENGTH, {static_cast<unsigned>(rows.height)}),
        shortsEntry(TIFFTAG_BITSPERSAMPLE,
                    std::vector<unsigned>(static_cast<std::size_t>(rows.channels),
                                          8u * static_cast<unsigned>(rows.sampleBytes))),
        shortsEntry(TIFFTAG_COMPRESSION, {COMPRESSION_ADOBE_DEFLATE}),
        shortsEntry(TIFFTAG_PHOTOMETRIC, {photometric}),
        longsEntry(TIFFTAG_STRIPOFFSETS, offsets),
        shortsEntry(TIFFTAG_ORIENTATION, {1}),
        shortsEntry(TIFFTAG_SAMPLESPERPIXEL, {static_cast<unsigned>(rows.channels)}),
        longsEntry(TIFFTAG_ROWSPERSTRIP, {static_cast<unsigned>(rowsPerStrip)}),
        longsEntry(TIFFTAG_STRIPBYTECOUNTS, sizes),
        shortsEntry(TIFFTAG_PLANARCONFIG, {PLANARCONFIG_CONTIG}),
        shortsEntry(TIFFTAG_PREDICTOR, {2}),
    };
    if (rows.channels > colours)
        entries.push_back(shortsEntry(TIFFTAG_EXTRASAMPLES, {EXTRASAMPLE_UNASSALPHA}));
    if (properties.xResolution > 0 && properties.yResolution > 0) {
        entries.push_back(rationalEntry(TIFFTAG_XRESOLUTION, properties.xResolution));
        entries.push_back(rationalEntry(TIFFTAG_YRESOLUTION, properties.yResolution));
        entries.push_back(shortsEntry(TIFFTAG_RESOLUTIONUNIT, {unitOf(properties.resolutionUnit)}));
    }
    if (!properties.iccProfile.empty())
        entries.push_back(bytesEntry(TIFFTAG_ICCPROFILE, properties.iccProfile));

    // The directory before this one, or the head, tells where this one is.
    std::size_t place = 4;
    for (std::size_t next = place; !isFirst;) {
        const auto number = [&](std::size_t at, int bytes) {
            std::size_t value = 0;
            for (int i = bytes; i-- > 0;)
                value = value << 8 | file[at + static_cast<std::size_t>(i)];
            return value;
        };
        const std::size_t directory = number(next, 4);
        place = next;
        if (directory == 0) break;
        next = directory + 2 + 12 * number(directory, 2);
    }
    const Directory directory = putDirectory(std::move(entries), properties.cameraData, 0, file);
    set32(static_cast<unsigned>(directory.begin), place, file);
}

bool isTiff(const Bytes& file) {
    return file.startsWith("II*\0", 4) || file.startsWith("MM\0*", 4) ||
           file.startsWith("II+\0", 4) || file.startsWith("MM\0+", 4);
}

}  // namespace

Format tiff() {
    return {"TIFF", {".tif", ".tiff"}, isTiff, openTiff, tiffPageCount, encodeTiff, 0b1111,
            32768,  nullptr,           true};
}

}  // namespace media::formats
