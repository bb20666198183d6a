// Videos through the program: what goes in is made by the encoding library itself.
#include <gmock/gmock.h>

#include "host/media/MediaSource.h"
#include "tests/host/media/video_maker.h"
#include "tests/host/render/Program.h"
#include "tests/kit/pixels.h"

namespace {

using media::MediaSource;

constexpr const char* kOff = "Blur and enhance:Enabled=0";

class FxrenderVideo : public FxrenderTest {
protected:
    void SetUp() override { av_log_set_level(AV_LOG_ERROR); }  // the encoder's own words
    std::string in(const QString& name) const { return path(name).toStdString(); }
    std::unique_ptr<MediaSource> open(const QString& name) const {
        return MediaSource::open({in(name)});
    }

    static constexpr int kFrames = 30;
};

// That times, sound and rotation are right is held in tests/host/media.
TEST_F(FxrenderVideo, FramesAndSoundGoIntoAVideoOrPictures) {
    VideoRecipe recipe{"mov", evenTimes(kFrames)};
    recipe.hasSound = true;
    makeVideo(in("clip.mov"), recipe);
    const auto clip = open("clip.mov");
    for (const std::string name : {"lossless.mkv", "lossy.mov"}) {
        SCOPED_TRACE(name);
        const bool isLossless = name == "lossless.mkv";
        apply({"clip.mov", "-o", name, "--codec", isLossless ? "ffv1" : "h264", "-f", kOff});
        EXPECT_EQ(videoParametersOf(in(name.c_str())).codec_id,
                  isLossless ? AV_CODEC_ID_FFV1 : AV_CODEC_ID_H264);
        EXPECT_FALSE(soundOf(in(name.c_str())).empty());
        const auto made = open(name.c_str());
        ASSERT_EQ(made->frames(), clip->frames());
        for (const std::int64_t frame : clip->frames()) {
            EXPECT_EQ(numberOn(*made->read(frame)), frame);
            EXPECT_TRUE(!isLossless || pixels(*made->read(frame)) == pixels(*clip->read(frame)));
        }
    }
    apply({"clip.mov", "-o", "some/", "--frames", "3,17", "-j", "2", "-f", kOff});
    EXPECT_EQ(files().filter("some/"), (QStringList{"some/clip_0003.png", "some/clip_0017.png"}));
    for (const int frame : {3, 17}) {
        const QString name = QStringLiteral("some/clip_%1.png").arg(frame, 4, 10, QChar('0'));
        EXPECT_EQ(pixels(*open(name)->read(0)), pixels(*clip->read(frame)));
    }
}

TEST_F(FxrenderVideo, DamageEndsTheRunAndLeavesNothing) {
    makeVideo(in("hit.mkv"), {"matroska", evenTimes(kFrames)});  // read on past the damage
    std::string damaged = contents("hit.mkv");
    for (std::size_t i = 0; i < 300; ++i) damaged[damaged.size() / 2 + i] ^= 0x5a;
    write("hit.mkv", QByteArray::fromStdString(damaged));
    expectRefusal({"apply", "hit.mkv", "-o", "o.mkv", "-q", "-f", kOff}, 65, "hit.mkv: ");
    EXPECT_EQ(files(), QStringList{"hit.mkv"});
}

}  // namespace
