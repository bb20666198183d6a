// The readers of all picture formats, each found by what the file begins with; and the writers, for
// what was read.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <vector>

#include "fuzz/targets.h"
#include "host/media/MediaError.h"
#include "host/media/picture_reader.h"
#include "host/media/picture_writer.h"
#include "tests/kit/pixels.h"

namespace fuzz {

namespace {

/// A file that lies in memory.
class MemoryFile {
public:
    explicit MemoryFile(const std::string& bytes)
        : m_descriptor(memfd_create("picture", MFD_CLOEXEC)) {
        if (m_descriptor < 0 ||
            ::write(m_descriptor, bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size()))
            throw std::runtime_error("no file in memory");
    }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;
    ~MemoryFile() { ::close(m_descriptor); }

    std::string path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

private:
    int m_descriptor;
};

/// Larger ones are left to tests/hostile: a trial of those takes the time of a thousand others.
constexpr int kMostPixels = 1 << 16;

/// What the heap gives next was in use, and is full of this value.
void soilHeap(int value) {
    const std::size_t least = 256, most = 1 << 15;
    std::vector<std::vector<unsigned char>> blocks;
    for (std::size_t size = least; size <= most; size += size / 2)
        blocks.emplace_back(size, static_cast<unsigned char>(value));
}

std::unique_ptr<HkImage> filled(const media::PictureInfo& info, int value) {
    auto image = std::make_unique<HkImage>(info.width, info.height, info.channels, nullptr, 1u);
    if (image->data)
        std::fill_n(image->data, std::ptrdiff_t{image->step} * info.height,
                    static_cast<unsigned char>(value));
    return image;
}

struct Read {
    std::unique_ptr<HkImage> image;
    media::PictureProperties properties;
};

/// None of a page that is too large to be tried.
std::optional<Read> readPage(const std::string& path, int page, const media::SampleRange& range) {
    const media::PictureInfo info = media::readPictureInfo(path, page);
    if (std::int64_t{info.width} * info.height > kMostPixels) return std::nullopt;
    // Into memory of different contents: nothing of it may be left in the picture.
    media::PictureProperties properties;
    soilHeap(0x5a);
    auto image = media::readPicture(path, page, range, &properties, filled(info, 0x5a));
    soilHeap(0xa5);
    const auto again = media::readPicture(path, page, range, nullptr, filled(info, 0xa5));
    EXPECT_EQ(image->width, info.width);
    EXPECT_EQ(image->height, info.height);
    EXPECT_EQ(image->channels, info.channels);
    EXPECT_TRUE(pixels(*image) == pixels(*again));
    if (range.kind == media::SampleRange::Each) {
        EXPECT_TRUE(pixels(*image) ==
                    pixels(*media::readPicture(path, page, media::sampleRangeOf(path, page),
                                               nullptr, nullptr)));
    }
    return Read{std::move(image), std::move(properties)};
}

/// From the first picture to the last, and back, where each begins anew.
void readAnimation(const std::string& path) {
    const auto animation = media::PictureAnimation::open(path);
    if (!animation ||
        std::int64_t{animation->info().width} * animation->info().height > kMostPixels)
        return;
    const std::size_t most = 8, count = std::min(animation->delays().size(), most);
    EXPECT_FALSE(count == 0 || animation->properties().hasPagesBehind);
    std::vector<std::vector<unsigned char>> pictures;  // empty: refused
    for (std::size_t i = 0; i < 2 * count; ++i) {
        const std::size_t number = std::min(i, 2 * count - 1 - i);
        std::vector<unsigned char> picture;
        try {
            const int soil = static_cast<int>(i);
            soilHeap(soil);
            picture = pixels(*animation->read(number, filled(animation->info(), soil)));
        } catch (const media::MediaError& error) {
            EXPECT_EQ(std::string(error.what()).find(path + ": frame "), 0u) << error.what();
        }
        if (i < count) pictures.push_back(picture);
        EXPECT_TRUE(picture == pictures[number]);
    }
}

bool sameEntries(const std::vector<media::CameraData::Entry>& before,
                 const std::vector<media::CameraData::Entry>& after) {
    return std::is_permutation(
        before.begin(), before.end(), after.begin(), after.end(), [](const auto& a, const auto& b) {
            return std::tie(a.tag, a.type, a.bytes) == std::tie(b.tag, b.type, b.bytes);
        });
}

/// step: what a format rounds resolutions to, in pixels an inch; most: its largest.
void expectKept(const media::PictureProperties& before, const media::PictureProperties& after,
                double step, double most) {
    const bool isKnown = before.xResolution > 0 && before.yResolution > 0;
    const auto expectNear = [&](double wanted, double got) {
        if (before.resolutionUnit == "cm") wanted *= 2.54;
        if (after.resolutionUnit == "cm") got *= 2.54;
        EXPECT_TRUE(isKnown ? wanted > most || std::abs(got - wanted) <= step + wanted * 1e-6
                            : got == 0)
            << got << ", not " << wanted;
    };
    expectNear(before.xResolution, after.xResolution);
    expectNear(before.yResolution, after.yResolution);
    EXPECT_TRUE(after.iccProfile.empty() || after.iccProfile == before.iccProfile);
    EXPECT_TRUE(sameEntries(before.cameraData.entries, after.cameraData.entries));
    EXPECT_TRUE(sameEntries(before.cameraData.exif, after.cameraData.exif));
    EXPECT_TRUE(sameEntries(before.cameraData.gps, after.cameraData.gps));
}

/// What was read is written and read again: the same, as far as the format can.
void writeAndRead(const Read& read, unsigned choice) {
    const char* const suffixes[] = {".png", ".tif", ".bmp", ".tga", ".jpg", ".pnm"};
    const unsigned holding[] = {6, 2, 6, 4};  // by channels; the first of the suffixes
    const std::string suffix = suffixes[choice % holding[read.image->channels - 1]];
    const std::string name = "picture" + suffix;
    EXPECT_TRUE(media::hasPictureSuffix(name));
    media::WriteOptions options;
    options.compression = static_cast<int>(choice / 12 % 13);
    std::vector<unsigned char> file;
    const int pages = media::holdsPages(name) ? 2 : 1;
    for (int page = 0; page < pages; ++page)
        media::encodePicture(name, *read.image, read.properties, options, file);
    const MemoryFile written(std::string(file.begin(), file.end()));
    EXPECT_EQ(media::pageCountOf(written.path()), pages);
    for (int page = 0; page < pages; ++page) {
        const std::optional<Read> back = readPage(written.path(), page, {});
        ASSERT_TRUE(back);
        const media::PictureProperties &before = read.properties, &after = back->properties;
        EXPECT_EQ(back->image->channels, read.image->channels);
        EXPECT_TRUE(suffix == ".jpg" || pixels(*back->image) == pixels(*read.image)) << suffix;
        EXPECT_TRUE(after.notes.empty());
        EXPECT_EQ(after.hasPagesBehind, page + 1 < pages);
        const bool hasUnit = !before.resolutionUnit.empty();  // else whole numbers
        const double least = std::min(before.xResolution, before.yResolution);
        if (suffix == ".png" && (least <= 0 || least >= 0.5))  // else it may round to none
            expectKept(before, after, hasUnit ? 0.02 : 0.5, 5e7);
        if (suffix == ".tif" && page == 0) expectKept(before, after, 0.002, 4e9);
        if (suffix == ".png" || suffix == ".jpg") {
            EXPECT_EQ(after.xResolution > 0, after.yResolution > 0) << suffix;
        }
        if (suffix != ".jpg") continue;
        // Less than 1 is none, and without a unit equal numbers are.
        if (hasUnit && least >= 1) expectKept(before, after, 1.3, 65535);
    }
}

}  // namespace

void picture(Input input) {
    const std::string bytes = input.rest();
    const MemoryFile file(bytes);
    using Range = media::SampleRange;
    const Range ranges[] = {{Range::Type, 0, 0}, {Range::Each, 0, 0}, {Range::Given, -1.5, 300}};
    const Range& range = ranges[bytes.size() % 3];
    std::optional<Read> last;
    try {
        readAnimation(file.path());
        const int mostPages = 3;
        const int pages = std::min(media::pageCountOf(file.path()), mostPages);
        for (int page = 0; page < pages; ++page) last = readPage(file.path(), page, range);
    } catch (const media::MediaError& error) {
        EXPECT_EQ(std::string(error.what()).find(file.path() + ": "), 0u);
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
    // Any of the bytes decides how it is written.
    unsigned sum = 0;
    for (const char byte : bytes) sum += static_cast<unsigned char>(byte);
    if (last) writeAndRead(*last, sum);
}

}  // namespace fuzz
