// The readers of all picture formats, each found by what the file begins with.

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "fuzz/targets.h"
#include "host/media/MediaError.h"
#include "host/media/picture_reader.h"
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

void readPage(const std::string& path, int page, const media::SampleRange& range) {
    const media::PictureInfo info = media::readPictureInfo(path, page);
    if (std::int64_t{info.width} * info.height > kMostPixels) return;
    // Into memory of different contents: nothing of it may be left in the picture.
    media::PictureProperties properties;
    soilHeap(0x5a);
    const auto image = media::readPicture(path, page, range, &properties, filled(info, 0x5a));
    soilHeap(0xa5);
    const auto again = media::readPicture(path, page, range, nullptr, filled(info, 0xa5));
    EXPECT_EQ(image->width, info.width);
    EXPECT_EQ(image->height, info.height);
    EXPECT_EQ(image->channels, info.channels);
    EXPECT_TRUE(pixels(*image) == pixels(*again));
}

}  // namespace

void picture(Input input) {
    const std::string bytes = input.rest();
    const MemoryFile file(bytes);
    using Range = media::SampleRange;
    const Range ranges[] = {{Range::Type, 0, 0}, {Range::Each, 0, 0}, {Range::Given, -1.5, 300}};
    const Range& range = ranges[bytes.size() % 3];
    try {
        const int mostPages = 3;
        const int pages = std::min(media::pageCountOf(file.path()), mostPages);
        for (int page = 0; page < pages; ++page) readPage(file.path(), page, range);
    } catch (const media::MediaError& error) {
        EXPECT_EQ(std::string(error.what()).find(file.path() + ": "), 0u);
        EXPECT_EQ(std::string(error.what()).find('\n'), std::string::npos);
    }
}

}  // namespace fuzz
