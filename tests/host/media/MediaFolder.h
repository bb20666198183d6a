#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/media/MediaError.h"
#include "host/media/MediaSink.h"
#include "host/media/MediaSource.h"
#include "tests/kit/pixels.h"

/// What the tests of pictures and of videos share.
namespace media::test {

namespace fs = std::filesystem;
using Bytes = std::vector<unsigned char>;
using Frames = std::vector<std::int64_t>;

constexpr MediaErrorKind kInvalid = MediaErrorKind::InvalidData;
constexpr MediaErrorKind kMissing = MediaErrorKind::MissingInput;
constexpr MediaErrorKind kCannotCreate = MediaErrorKind::CannotCreate;

/// The message of the error that action must throw, after its kind was checked: one line.
template <typename Action>
std::string errorOf(MediaErrorKind kind, Action action) {
    try {
        action();
    } catch (const MediaError& error) {
        EXPECT_EQ(error.kind(), kind) << error.what();
        EXPECT_THAT(error.what(), testing::Not(testing::HasSubstr("\n")));
        return error.what();
    }
    ADD_FAILURE() << "nothing was thrown";
    return {};
}

/// Files end at so many bytes, as on a full disk.
class FullDisk {
public:
    explicit FullDisk(rlim_t bytes) : m_handler(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &m_before);
        const rlimit small{bytes, m_before.rlim_max};
        EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &small));
    }
    ~FullDisk() {
        setrlimit(RLIMIT_FSIZE, &m_before);
        std::signal(SIGXFSZ, m_handler);
    }
    FullDisk(const FullDisk&) = delete;
    FullDisk& operator=(const FullDisk&) = delete;

private:
    void (*m_handler)(int);
    rlimit m_before{};
};

/// An empty folder for each test; files in it are called by their names.
class MediaFolder : public testing::Test {
protected:
    MediaFolder() {
        std::string name = (fs::temp_directory_path() / "media_test_XXXXXX").string();
        m_root = mkdtemp(name.data());
        folder = m_root + "/work";
        fs::create_directory(folder);
    }
    ~MediaFolder() override { fs::remove_all(m_root); }

    std::string in(const std::string& name) const { return folder + '/' + name; }

    /// Sorted, hidden ones too.
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (const auto& entry : fs::directory_iterator(folder))
            result.push_back(entry.path().filename().string());
        std::sort(result.begin(), result.end());
        return result;
    }

    Bytes bytesOf(const std::string& name) const {
        std::ifstream file(in(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    void writeBytes(const std::string& name, std::string_view bytes) const {
        std::ofstream(in(name), std::ios::binary) << bytes;
    }
    void writeBytes(const std::string& name, const Bytes& bytes) const {
        writeBytes(name,
                   std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    }
    /// The first bytes of a file, in another.
    void writeCut(const std::string& name, const Bytes& bytes, std::size_t length) const {
        writeBytes(name, Bytes(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length)));
    }

    std::unique_ptr<MediaSource> open(const std::string& name,
                                      const ReadOptions& options = {}) const {
        return MediaSource::open({in(name)}, options);
    }
    std::unique_ptr<HkImage> readOnly(const std::string& name,
                                      PictureProperties* properties = nullptr) const {
        return open(name)->read(0, properties);
    }
    /// A source of so many pictures, of which the sinks ask sizes only.
    std::unique_ptr<MediaSource> pictures(int count) const {
        const std::string name = m_root + "/pictures" + std::to_string(count);
        fs::create_directory(name);
        for (int i = 0; i < count; ++i)
            std::ofstream(name + '/' + std::to_string(i) + ".pgm") << "P5 2 2 255\n1234";
        return MediaSource::open({name});
    }
    /// A file of one picture.
    void write(const std::string& name, const HkImage& image,
               const PictureProperties& properties = {}) const {
        const auto sink = MediaSink::open(in(name), *pictures(1), {0});
        sink->write(0, image, properties);
        sink->finish();
    }
    /// The message with which a sink is refused.
    std::string refusalOf(const std::string& path, const MediaSource& source,
                          const WriteOptions& options = {}) const {
        return errorOf(kCannotCreate,
                       [&] { MediaSink::open(path, source, source.frames(), options); });
    }
    /// That reading all frames of a file fails, with words of ours only: the file's name, the
    /// reason, what to do.
    void expectUnreadable(const std::string& name, const char* reason) const {
        SCOPED_TRACE(name);
        testing::internal::CaptureStderr();
        const std::string said = errorOf(kInvalid, [&] {
            const auto source = open(name);
            for (const std::int64_t frame : source->frames()) source->read(frame);
        });
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
        using testing::HasSubstr;
        EXPECT_THAT(said, AllOf(HasSubstr(in(name) + ": "), HasSubstr(reason), HasSubstr("; ")));
    }

    std::string folder;

private:
    std::string m_root;
};

}  // namespace media::test
