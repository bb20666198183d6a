// Videos through the program: what goes in is made by the encoding library itself.
#include <gmock/gmock.h>

#include <cmath>

#include "host/media/MediaSource.h"
#include "tests/host/media/video_maker.h"
#include "tests/host/render/Program.h"
#include "tests/kit/pixels.h"

namespace {

using media::MediaSource;
using testing::HasSubstr;

constexpr const char* kOff = "Blur and enhance:Enabled=0";

class FxrenderVideo : public FxrenderTest {
protected:
    /// Turned by a quarter, with sound, each frame shown for another time.
    void SetUp() override {
        av_log_set_level(AV_LOG_ERROR);  // the encoder's own words
        VideoRecipe recipe;
        recipe.container = "mov";
        recipe.hasSound = true;
        for (int i = 0; i < kFrames; ++i) recipe.times.push_back(i * (i + 3) / 2);
        av_display_rotation_set(recipe.displayMatrix, 90);
        makeVideo(in("clip.mov"), recipe);
    }
    std::string in(const QString& name) const { return path(name).toStdString(); }
    std::unique_ptr<MediaSource> open(const QString& name) const {
        return MediaSource::open({in(name)});
    }
    static std::vector<long> millisecondsOf(const MediaSource& video) {
        const media::VideoTrack& track = *video.videoTrack();
        std::vector<long> result;
        for (const std::int64_t time : track.timeStamps)
            result.push_back(std::lround(1000.0 * static_cast<double>(time) *
                                         track.timeBase.numerator / track.timeBase.denominator));
        return result;
    }
    /// Each container cuts the sound into packets as it likes.
    std::vector<unsigned char> soundBytesOf(const QString& name) const {
        std::vector<unsigned char> bytes;
        for (const SoundPacket& packet : soundOf(in(name)))
            bytes.insert(bytes.end(), packet.bytes.begin(), packet.bytes.end());
        return bytes;
    }
    static double meanDifference(const HkImage& a, const HkImage& b) {
        const auto first = pixels(a), second = pixels(b);
        EXPECT_EQ(first.size(), second.size());
        double sum = 0;
        for (std::size_t i = 0; i < first.size(); ++i) sum += std::abs(first[i] - second[i]);
        return sum / static_cast<double>(first.size());
    }

    static constexpr int kFrames = 30;
};

TEST_F(FxrenderVideo, FramesTimesSoundAndRotationSurvive) {
    const auto clip = open("clip.mov");
    ASSERT_EQ(clip->frames().size(), static_cast<std::size_t>(kFrames));
    ASSERT_EQ(clip->info(0).width, 96);
    const struct {
        const char* name;
        const char* codec;
        double tolerance;  ///< in levels, on average
    } outputs[] = {{"lossless.mkv", "ffv1", 0}, {"lossy.mov", "h264", 3}};
    for (const auto& [name, codec, tolerance] : outputs) {
        SCOPED_TRACE(name);
        apply({"clip.mov", "-o", name, "--codec", codec, "-f", kOff});
        const auto made = open(name);
        EXPECT_EQ(millisecondsOf(*made), millisecondsOf(*clip));
        for (const std::int64_t frame : clip->frames())
            EXPECT_LE(meanDifference(*made->read(frame), *clip->read(frame)), tolerance) << frame;
        EXPECT_GT(soundBytesOf("clip.mov").size(), 9000u);
        EXPECT_EQ(soundBytesOf(name), soundBytesOf("clip.mov"));
    }
    apply({"clip.mov", "-o", "some/", "--frames", "3,17", "-j", "2", "-f", kOff});
    EXPECT_EQ(files().filter("some/"), (QStringList{"some/clip_0003.png", "some/clip_0017.png"}));
    for (const int frame : {3, 17})
        EXPECT_EQ(
            pixels(
                *open(QStringLiteral("some/clip_%1.png").arg(frame, 4, 10, QChar('0')))->read(0)),
            pixels(*clip->read(frame)));
}

TEST_F(FxrenderVideo, DamageEndsTheRunAndLeavesNothing) {
    const std::string whole = contents("clip.mov");
    write("clip.mov", QByteArray::fromStdString(whole.substr(0, whole.size() / 2)));
    expectRefusal({"apply", "clip.mov", "-o", "o.mkv", "-f", kOff}, 65, "clip.mov: ");

    VideoRecipe recipe;  // a container that is read on past the damage
    recipe.container = "matroska";
    recipe.times = evenTimes(kFrames);
    makeVideo(in("hit.mkv"), recipe);
    std::string damaged = contents("hit.mkv");
    for (std::size_t i = 0; i < 300; ++i) damaged[damaged.size() / 2 + i] ^= 0x5a;
    write("hit.mkv", QByteArray::fromStdString(damaged));
    expectRefusal({"apply", "hit.mkv", "-o", "o.mkv", "-q", "-f", kOff}, 65, "hit.mkv: ");
    EXPECT_EQ(files(), (QStringList{"clip.mov", "hit.mkv"}));
}

}  // namespace
