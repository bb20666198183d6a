// Videos in and out. The frames that are read carry their number, so that no decoder's word is
// taken for which one it is.
#include "tests/host/media/MediaFolder.h"
#include "tests/host/media/video_maker.h"

extern "C" {
#include <libavutil/crc.h>
}

#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cmath>
#include <thread>

using namespace media;
using namespace media::test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;

namespace {

class Video : public MediaFolder {};

/// Renders frames of the source into the sink.
void pass(const MediaSource& source, MediaSink& sink, const std::vector<std::int64_t>& frames) {
    EXPECT_TRUE(sink.writesInOrder());
    for (const std::int64_t frame : frames) sink.write(frame, *source.read(frame));
    sink.finish();
}

/// Distances from 1 to 5 units: the rate changes from frame to frame.
std::vector<std::int64_t> unevenTimes(int count) {
    std::vector<std::int64_t> times = {0};
    while (static_cast<int>(times.size()) < count)
        times.push_back(times.back() + 1 + static_cast<std::int64_t>(times.size()) * 7 % 5);
    return times;
}

TEST_F(Video, AFrameReadAloneIsTheOneOfAFullDecode) {
    constexpr int kFrames = 150;
    const struct {
        const char* name;
        const char* container;
        const char* encoder;
        std::vector<std::int64_t> times;
        const char* x264Options = "";
    } clips[] = {{"b-frames.mp4", "mp4", "libx264", evenTimes(kFrames)},
                 {"b-frames.ts", "mpegts", "libx264", evenTimes(kFrames)},
                 {"uneven.mkv", "matroska", "libx264", unevenTimes(kFrames)},
                 {"b-frames.mov", "mov", "libx265", evenTimes(kFrames)},
                 {"open.mp4", "mp4", "libx264", evenTimes(kFrames), "open-gop=1"},
                 {"open.ts", "mpegts", "mpeg2video", evenTimes(kFrames)},
                 {"old.avi", "avi", "mpeg4", evenTimes(kFrames)}};
    for (const auto& [name, container, encoder, times, x264Options] : clips) {
        SCOPED_TRACE(name);
        testing::internal::CaptureStderr();  // an encoder's own words
        makeVideo(in(name), {container, times, encoder, x264Options});
        testing::internal::GetCapturedStderr();
        const auto source = open(name);
        ASSERT_EQ(source->frames().size(), static_cast<std::size_t>(kFrames));
        EXPECT_EQ(source->frameName(7), fs::path(name).stem().string() + "_0007");
        EXPECT_EQ(source->info(3).width, 160);
        EXPECT_EQ(source->info(3).channels, 3);
        std::vector<Bytes> decoded;
        for (const std::int64_t frame : source->frames()) {
            const auto image = source->read(frame);
            ASSERT_EQ(numberOn(*image), frame);
            decoded.push_back(pixels(*image));
        }
        std::minstd_rand random(1);
        const auto other = open(name);
        for (int i = 0; i < 100; ++i) {
            const auto frame = static_cast<std::int64_t>(random() >> 8) % kFrames;
            ASSERT_EQ(pixels(*other->read(frame)), decoded[static_cast<std::size_t>(frame)])
                << frame;
        }
        std::atomic<int> wrong{0};
        std::atomic<std::int64_t> next{0};
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t)
            threads.emplace_back([&] {
                for (std::int64_t f = next++; f < kFrames; f = next++)
                    if (pixels(*other->read(f)) != decoded[static_cast<std::size_t>(f)]) ++wrong;
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(wrong, 0);
        EXPECT_THAT(errorOf(kMissing, [&] { source->read(kFrames); }), HasSubstr("0 to 149"));
    }
}

TEST_F(Video, AnimatedPicturesAreFramesAndAVideoTakesNoRange) {
    makeVideo(in("a.webp"), {"webp", evenTimes(12), "libwebp_anim"});
    const auto source = open("a.webp");
    ASSERT_EQ(source->frames().size(), 12u);
    for (const std::int64_t frame : {3, 11, 0, 7}) EXPECT_EQ(numberOn(*source->read(frame)), frame);

    makeVideo(in("v.mp4"), {"mp4", evenTimes(2)});
    ReadOptions options;
    options.range = {SampleRange::Given, 0, 100};
    EXPECT_THAT(errorOf(kInvalid, [&] { open("v.mp4", options); }),
                HasSubstr("--range is for pictures"));
}

/// A frame of an animated PNG as its chunks say it.
struct MovingPart {
    int x, y;
    std::unique_ptr<HkImage> image;
    int delay, unit;
    int dispose, blend;
};

/// As PNG has them: the highest byte first.
Bytes numbers(std::initializer_list<int> values, int bytes = 4) {
    Bytes result;
    for (const int value : values)
        for (int byte = bytes; byte-- > 0;)
            result.push_back(static_cast<unsigned char>(static_cast<unsigned>(value) >> 8 * byte));
    return result;
}

void append(Bytes& out, const Bytes& more) {
    out.insert(out.end(), more.begin(), more.end());
}

Bytes chunk(const std::string& name, std::initializer_list<Bytes> contents) {
    Bytes named(name.begin(), name.end());
    for (const Bytes& part : contents) append(named, part);
    Bytes result = numbers({static_cast<int>(named.size() - 4)});
    append(result, named);
    const AVCRC* table = av_crc_get_table(AV_CRC_32_IEEE_LE);
    append(result,
           numbers({static_cast<int>(~av_crc(table, 0xffffffff, named.data(), named.size()))}));
    return result;
}

Bytes headChunk(int width, int height, int channels) {
    return chunk("IHDR", {numbers({width, height}),
                          numbers({8 << 8 | (channels == 4 ? 6 : 2), 0}, 2), numbers({0}, 1)});
}

class AnimatedPicture : public Video {
protected:
    /// The stream of pixels of a picture, by the PNG writer.
    Bytes pixelStream(const HkImage& image) {
        write("part.png", image);
        const Bytes file = bytesOf("part.png");
        Bytes stream;
        for (std::size_t at = 8; at < file.size();) {
            const std::size_t size = static_cast<std::size_t>(file[at + 2]) << 8 | file[at + 3];
            if (std::equal(&file[at + 4], &file[at + 8], "IDAT"))
                stream.insert(stream.end(), &file[at + 8], &file[at + 8] + size);
            at += 12 + size;
        }
        return stream;
    }

    Bytes animation(int width, int height, const std::vector<MovingPart>& parts,
                    const HkImage* stillOutside) {
        Bytes file = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
        append(file, headChunk(width, height, parts[0].image->channels));
        append(file, chunk("acTL", {numbers({static_cast<int>(parts.size()), 0})}));
        if (stillOutside) append(file, chunk("IDAT", {pixelStream(*stillOutside)}));
        int sequence = 0;
        for (const MovingPart& part : parts) {
            const bool isStill = sequence == 0 && !stillOutside;
            append(
                file,
                chunk("fcTL",
                      {numbers({sequence++, part.image->width, part.image->height, part.x, part.y}),
                       numbers({part.delay, part.unit, part.dispose << 8 | part.blend}, 2)}));
            const Bytes stream = pixelStream(*part.image);
            const auto half = stream.begin() + static_cast<std::ptrdiff_t>(stream.size() / 2);
            if (isStill)
                append(file, chunk("IDAT", {stream}));
            else
                for (const Bytes& of : {Bytes(stream.begin(), half), Bytes(half, stream.end())})
                    append(file, chunk("fdAT", {numbers({sequence++}), of}));
        }
        append(file, chunk("IEND", {}));
        return file;
    }

    /// Twelve frames of all kinds: in part transparent, in part of the canvas.
    std::vector<MovingPart> parts(int width, int height, int channels, bool firstIsWhole) {
        std::vector<MovingPart> result;
        std::minstd_rand random(static_cast<unsigned>(channels));
        const auto below = [&](int limit) { return static_cast<int>(random() >> 8) % limit; };
        const int units[] = {100, 0, 30, 1000};
        for (int i = 0; i < 12; ++i) {
            const bool isWhole = i == 0 && firstIsWhole;
            const int x = isWhole ? 0 : below(width), y = isWhole ? 0 : below(height);
            auto image = noise(isWhole ? width : 1 + below(width - x),
                               isWhole ? height : 1 + below(height - y), channels,
                               static_cast<unsigned>(i + 1));
            if (channels == 4)
                for (int row = 0; row < image->height; ++row)
                    for (int column = 0; column < image->width; ++column) {
                        unsigned char& alpha = image->data[row * image->step + 4 * column + 3];
                        if (alpha % 3 < 2) alpha = alpha % 3 == 0 ? 0 : 255;
                    }
            result.push_back(
                {x, y, std::move(image), 1 + below(9), units[i % 4], i % 3, i / 3 % 2});
        }
        return result;
    }
};

/// What the format's standard says, in real numbers: pictures of red, green, blue, alpha.
std::vector<std::vector<double>> composited(int width, int height,
                                            const std::vector<MovingPart>& parts) {
    std::vector<double> canvas(static_cast<std::size_t>(4 * width * height), 0.0);
    std::vector<std::vector<double>> result;
    for (const MovingPart& part : parts) {
        const std::vector<double> before = canvas;
        const auto eachPixel = [&](auto action) {
            for (int y = 0; y < part.image->height; ++y)
                for (int x = 0; x < part.image->width; ++x)
                    action(static_cast<std::size_t>(4 * ((part.y + y) * width + part.x + x)),
                           part.image->data + y * part.image->step + x * part.image->channels);
        };
        eachPixel([&](std::size_t at, const unsigned char* pixel) {
            const double alpha = part.image->channels == 4 ? pixel[3] / 255.0 : 1;
            const double under = part.blend == 1 ? canvas[at + 3] / 255 * (1 - alpha) : 0;
            const bool isKept = part.blend == 1 && alpha == 0;
            const auto rounded = [](double value) { return std::floor(value + 0.5 + 1e-9); };
            for (std::size_t c = 0; c < 3 && !isKept; ++c)
                canvas[at + c] =
                    alpha + under == 0
                        ? pixel[c]
                        : rounded((pixel[c] * alpha + canvas[at + c] * under) / (alpha + under));
            canvas[at + 3] = rounded(255 * (alpha + under));
        });
        result.push_back(canvas);
        if (part.dispose == 1 || (part.dispose == 2 && result.size() == 1))
            eachPixel([&](std::size_t at, const unsigned char*) {
                std::fill_n(canvas.begin() + static_cast<std::ptrdiff_t>(at), 4, 0.0);
            });
        else if (part.dispose == 2)
            canvas = before;
    }
    return result;
}

TEST_F(AnimatedPicture, FramesAreCompositedAsSpecified) {
    constexpr int kWidth = 37, kHeight = 23;
    const auto outside = noise(kWidth, kHeight, 4, 99);
    for (const int channels : {3, 4})
        for (const bool isStillOutside : {false, true}) {
            if (channels == 3 && isStillOutside) continue;
            SCOPED_TRACE(channels * 10 + isStillOutside);
            const auto moving = parts(kWidth, kHeight, channels, !isStillOutside);
            writeBytes("a.png", animation(kWidth, kHeight, moving,
                                          isStillOutside ? outside.get() : nullptr));
            const auto source = open("a.png");
            const auto expected = composited(kWidth, kHeight, moving);
            ASSERT_EQ(source->frames().size(), expected.size());
            for (const std::int64_t frame : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 4, 9, 0}) {
                const auto image = source->read(frame);
                ASSERT_EQ(image->channels, 4) << "a frame is cleared";
                const Bytes seen = pixels(*image);
                const auto& wanted = expected[static_cast<std::size_t>(frame)];
                ASSERT_TRUE(std::equal(seen.begin(), seen.end(), wanted.begin(), wanted.end()))
                    << frame;
            }
            double time = 0;
            const VideoTrack& track = *source->videoTrack();
            for (std::size_t i = 0; i < moving.size(); ++i) {
                EXPECT_NEAR(static_cast<double>(track.timeStamps[i]) / track.timeBase.denominator,
                            time, 1e-9);
                time += static_cast<double>(moving[i].delay) /
                        (moving[i].unit == 0 ? 100 : moving[i].unit);
            }
        }
}

TEST_F(AnimatedPicture, IsWrittenWithoutLossAndWithItsTimes) {
    for (const int channels : {1, 2, 3, 4})
        for (const char* name : {"out.apng", "out.webp"}) {
            SCOPED_TRACE(name + std::to_string(channels));
            const std::string suffix = fs::path(name).extension();
            std::vector<MovingPart> moving = parts(40, 30, 3, true);
            for (MovingPart& part : moving) part.unit = 1000, part.delay *= 10;
            writeBytes("in.png", animation(40, 30, moving, nullptr));
            const auto source = open("in.png");
            std::vector<std::unique_ptr<HkImage>> drawn;
            const auto sink = MediaSink::open(in(name), *source, source->frames());
            for (const std::int64_t frame : source->frames()) {
                drawn.push_back(noise(40, 30, channels, static_cast<unsigned>(frame / 2)));
                if (channels % 2 == 0)  // the colour of what cannot be seen is not kept by WebP
                    for (int i = channels - 1; i < 40 * 30 * channels; i += channels)
                        drawn.back()->data[i] |= 1;
                sink->write(frame, *drawn.back());
            }
            sink->finish();
            EXPECT_THAT(names(), testing::Not(testing::Contains(HasSubstr(".part-"))));
            const auto result = open(name);
            ASSERT_EQ(result->frames(), source->frames());
            const VideoTrack &from = *source->videoTrack(), &to = *result->videoTrack();
            EXPECT_EQ(to.timeStamps, from.timeStamps);
            EXPECT_EQ(to.lastDuration, from.lastDuration);
            for (std::size_t i = 0; i < drawn.size(); ++i) {
                const auto image = result->read(static_cast<std::int64_t>(i));
                const int colours = channels < 3 ? 1 : 3, held = image->channels < 3 ? 1 : 3;
                ASSERT_EQ(image->channels % 2, channels % 2);
                const Bytes in = pixels(*drawn[i]), out = pixels(*image);
                for (std::size_t p = 0; p < 40 * 30; ++p)
                    for (int c = 0; c < image->channels; ++c)
                        ASSERT_EQ(
                            out[p * image->channels + c],
                            in[p * channels + (c < held ? std::min(c, colours - 1) : colours)])
                            << i;
            }
            // One frame is a still picture.
            const auto single = MediaSink::open(in("one" + suffix), *source, {3});
            single->write(3, *drawn[3]);
            single->finish();
            EXPECT_EQ(open("one" + suffix)->frames().size(), 1u);
        }
}

TEST_F(AnimatedPicture, DamageIsSaidAndCostsNothing) {
    const auto moving = parts(40, 30, 4, true);
    const Bytes whole = animation(40, 30, moving, nullptr);
    writeBytes("in.png", whole);
    const auto source = open("in.png");
    pass(*source, *MediaSink::open(in("in.webp"), *source, source->frames()), source->frames());
    for (const char* name : {"in.png", "in.webp"}) {
        const Bytes file = bytesOf(name);
        for (std::size_t size = 40; size < file.size(); size += 97) {
            writeCut(name, file, size);
            expectUnreadable(name, "damaged or cut short");
        }
    }
    Bytes changed = whole;
    changed[whole.size() - 40] ^= 1;  // in the last frame's pixels
    writeBytes("bits.png", changed);
    expectUnreadable("bits.png", "frame 11: the picture is damaged");
    const auto replaceAt = [&](std::ptrdiff_t place, const Bytes& bytes) {
        std::copy(bytes.begin(), bytes.end(), changed.begin() + place);
    };
    changed = whole;
    replaceAt(33, chunk("acTL", {numbers({13, 0})}));  // one frame more than there is
    writeBytes("count.png", changed);
    expectUnreadable("count.png", "frames of its animation are missing");
    // A canvas of a gigabyte in a file of some kilobytes.
    const HkImage still(40, 30, 4, nullptr, 4);
    changed = animation(40, 30, moving, &still);
    replaceAt(8, headChunk(16384, 16384, 4));
    writeBytes("claim.png", changed);
    expectUnreadable("claim.png", "too short for the 16384 x 16384");
}

TEST_F(Video, TimesAndSoundSurviveARender) {
    constexpr int kFrames = 60;
    VideoRecipe recipe{"matroska", unevenTimes(kFrames)};
    recipe.hasSound = true;
    makeVideo(in("clip.mkv"), recipe);
    const auto source = open("clip.mkv");
    WriteOptions options;
    options.video.codec = "h264";
    const auto millisecondsOf = [](const MediaSource& video) {
        std::vector<std::int64_t> result;
        const VideoTrack& track = *video.videoTrack();
        for (const std::int64_t time : track.timeStamps)
            result.push_back(std::llround(1000.0 * static_cast<double>(time) *
                                          track.timeBase.numerator / track.timeBase.denominator));
        return result;
    };
    std::vector<std::int64_t> expected;
    for (const std::int64_t time : recipe.times) expected.push_back(time * 40);
    ASSERT_EQ(millisecondsOf(*source), expected);

    for (const char* name : {"all.mkv", "all.mov", "all.mp4"}) {
        SCOPED_TRACE(name);
        const auto sink = MediaSink::open(in(name), *source, source->frames(), options);
        const bool keepsSound = std::string(name) != "all.mp4";  // MP4 has no place for PCM
        if (keepsSound)
            EXPECT_TRUE(sink->notices().empty());
        else
            EXPECT_THAT(sink->notices(), ElementsAre(HasSubstr("1 pcm_s16le sound track")));
        pass(*source, *sink, source->frames());
        const auto result = open(name);
        EXPECT_EQ(millisecondsOf(*result), expected);
        for (const std::int64_t frame : result->frames())
            ASSERT_EQ(numberOn(*result->read(frame)), frame);
        if (std::string(name) == "all.mkv") {
            const std::vector<SoundPacket> sound = soundOf(in("clip.mkv"));
            ASSERT_EQ(sound.size(), static_cast<std::size_t>(kFrames));
            EXPECT_EQ(soundOf(in(name)), sound);
        }
        EXPECT_EQ(soundOf(in(name)).empty(), !keepsSound);
    }

    const std::vector<std::int64_t> some = {10, 11, 14};
    const auto sink = MediaSink::open(in("some.mkv"), *source, some, options);
    EXPECT_THAT(sink->notices(), ElementsAre(HasSubstr("sound is left out")));
    pass(*source, *sink, some);
    const auto part = open("some.mkv");
    EXPECT_THAT(millisecondsOf(*part),
                ElementsAre(0, expected[11] - expected[10], expected[14] - expected[10]));
    EXPECT_EQ(numberOn(*part->read(2)), 14);

    options.video.frameRate = {24, 1};
    pass(*source, *MediaSink::open(in("film.mov"), *source, some, options), some);
    EXPECT_THAT(millisecondsOf(*open("film.mov")), ElementsAre(0, 42, 83));
}

TEST_F(Video, IsSeenUpright) {
    // Four grey quarters; the matrix says where a pixel of the file is seen.
    for (const bool mirrored : {false, true})
        for (const int degrees : {0, 90, 180, 270}) {
            VideoRecipe recipe{"mp4", {0}};
            av_display_rotation_set(recipe.displayMatrix, degrees);
            if (mirrored) av_display_matrix_flip(recipe.displayMatrix, 1, 0);
            const auto level = [](bool right, bool below) { return 60 + 40 * right + 80 * below; };
            recipe.draw = [&](AVFrame& frame, int) {
                for (int y = 0; y < frame.height; ++y)
                    for (int x = 0; x < frame.width; ++x)
                        frame.data[0][y * frame.linesize[0] + x] = static_cast<std::uint8_t>(
                            level(x >= frame.width / 2, y >= frame.height / 2));
                for (const int plane : {1, 2})
                    std::fill_n(frame.data[plane], frame.linesize[plane] * frame.height / 2,
                                std::uint8_t{128});
            };
            makeVideo(in("turned.mp4"), recipe);
            const auto image = open("turned.mp4")->read(0);
            const bool swaps = degrees % 180 == 90;
            EXPECT_EQ(image->width, swaps ? 96 : 160);
            EXPECT_EQ(image->height, swaps ? 160 : 96);
            const auto sign = [](bool positive) { return positive ? 1 : -1; };
            for (const bool right : {false, true})
                for (const bool below : {false, true}) {
                    const int* m = recipe.displayMatrix;
                    const std::int64_t x = std::int64_t{m[0]} * sign(right) + m[3] * sign(below);
                    const std::int64_t y = std::int64_t{m[1]} * sign(right) + m[4] * sign(below);
                    const unsigned char seen =
                        image->data[(y > 0 ? image->height * 3 / 4 : image->height / 4) *
                                        image->step +
                                    3 * (x > 0 ? image->width * 3 / 4 : image->width / 4)];
                    EXPECT_NEAR(seen, (level(right, below) - 16) * 255.0 / 219, 4)
                        << degrees << mirrored << right << below;
                }
        }
}

struct Weights {
    double red, blue;
};
constexpr Weights k601 = {0.299, 0.114}, k709 = {0.2126, 0.0722}, k2020 = {0.2627, 0.0593};

TEST_F(Video, ColoursFollowTheTagsOrTheSize) {
    const struct {
        AVColorSpace tag;
        AVColorRange range;
        int width, height;
        Weights weights;
    } rows[] = {{AVCOL_SPC_BT709, AVCOL_RANGE_MPEG, 64, 48, k709},
                {AVCOL_SPC_SMPTE170M, AVCOL_RANGE_MPEG, 1280, 720, k601},
                {AVCOL_SPC_BT2020_NCL, AVCOL_RANGE_MPEG, 64, 48, k2020},
                {AVCOL_SPC_BT709, AVCOL_RANGE_JPEG, 64, 48, k709},
                {AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, 720, 576, k601},
                {AVCOL_SPC_UNSPECIFIED, AVCOL_RANGE_UNSPECIFIED, 1280, 720, k709}};
    for (const AVPixelFormat format : {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUV444P})
        for (const auto& [tag, range, width, height, weights] : rows) {
            const std::array<int, 3> yuv = {110, 90, 170};
            VideoRecipe recipe{"mp4", {0}};
            recipe.format = format;
            recipe.matrix = tag;
            recipe.range = range;
            recipe.width = width;
            recipe.height = height;
            recipe.draw = [&yuv](AVFrame& frame, int) {
                for (std::size_t plane = 0; plane < 3; ++plane)
                    std::fill_n(
                        frame.data[plane],
                        frame.linesize[plane] * (plane > 0 && frame.format == AV_PIX_FMT_YUV420P
                                                     ? frame.height / 2
                                                     : frame.height),
                        static_cast<std::uint8_t>(yuv[plane]));
            };
            makeVideo(in("colour.mp4"), recipe);
            const auto image = open("colour.mp4")->read(0);
            const bool full = range == AVCOL_RANGE_JPEG;
            const double y = full ? yuv[0] : (yuv[0] - 16) * 255.0 / 219;
            const double u = (yuv[1] - 128) * (full ? 1 : 255.0 / 224);
            const double v = (yuv[2] - 128) * (full ? 1 : 255.0 / 224);
            const double red = y + 2 * (1 - weights.red) * v;
            const double blue = y + 2 * (1 - weights.blue) * u;
            const double green =
                (y - weights.red * red - weights.blue * blue) / (1 - weights.red - weights.blue);
            const unsigned char* pixel = image->data + (height / 2) * image->step + width / 2 * 3;
            EXPECT_NEAR(pixel[0], red, 3) << tag << ' ' << width;
            EXPECT_NEAR(pixel[1], green, 3) << tag << ' ' << width;
            EXPECT_NEAR(pixel[2], blue, 3) << tag << ' ' << width;
        }
}

TEST_F(Video, WrittenColoursAreTaggedAndComeBack) {
    const auto source = pictures(1);
    WriteOptions h264, prores;
    h264.video.codec = "h264";
    h264.video.quality = 4;
    prores.video.codec = "prores";
    for (const auto& [name, options] :
         {std::pair("a.mp4", h264), std::pair("b.mov", prores), std::pair("c.mov", h264)})
        for (const int width : {64, 63, 1280})  // an odd number too
            for (const int channels : {1, 3}) {
                SCOPED_TRACE(std::string(name) + std::to_string(width) + std::to_string(channels));
                const int height = width == 1280 ? 720 : 47;
                HkImage image(width, height, channels, nullptr, 4);
                for (int y = 0; y < height; ++y)
                    for (int i = 0; i < width * channels; ++i)
                        image.data[y * image.step + i] =
                            static_cast<unsigned char>(i % channels == 0 ? 200 : 20 + y % 64);
                const auto sink = MediaSink::open(in(name), *source, {0}, options);
                sink->write(0, image);
                sink->finish();
                const AVCodecParameters tags = videoParametersOf(in(name));
                EXPECT_EQ(tags.color_space, width == 1280 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M);
                EXPECT_NE(tags.color_range, AVCOL_RANGE_JPEG);
                const auto again = open(name)->read(0);
                ASSERT_EQ(again->width, width);
                ASSERT_EQ(again->height, height);
                for (int y = 4; y < height - 4; ++y)
                    for (int c = 0; c < 3; ++c)
                        ASSERT_NEAR(again->data[y * again->step + width / 2 * 3 + c],
                                    image.data[y * image.step + width / 2 * channels +
                                               (channels == 3 ? c : 0)],
                                    8)
                            << y << ' ' << c;
            }
    EXPECT_THAT(
        errorOf(kCannotCreate,
                [&] {
                    MediaSink::open(in("x.mp4"), *source, {0})->check(0, PictureInfo{2, 2, 4});
                }),
        AllOf(HasSubstr("alpha"), HasSubstr(".mkv")));
}

TEST_F(Video, Ffv1IsLossless) {
    const auto source = pictures(9);
    const std::pair<int, int> sizes[] = {{1, 1}, {37, 23}, {128, 128}, {301, 199}};
    for (const int channels : {1, 3, 4})
        for (const auto& [width, height] : sizes) {
            SCOPED_TRACE(std::to_string(channels) + ": " + std::to_string(width));
            const auto sink = MediaSink::open(in("v.mkv"), *source, source->frames());
            std::vector<Bytes> written;
            for (const std::int64_t frame : source->frames()) {
                const auto image = noise(width, height, channels, static_cast<unsigned>(frame) + 1);
                written.push_back(pixels(*image));
                sink->write(frame, *image);
            }
            sink->finish();
            const auto again = open("v.mkv");
            ASSERT_EQ(again->frames().size(), written.size());
            EXPECT_EQ(again->info(0).channels, channels);
            for (std::size_t i = 0; i < written.size(); ++i)
                ASSERT_EQ(pixels(*again->read(static_cast<std::int64_t>(i))), written[i]);
        }
}

TEST_F(Video, DamagedFilesAreNamedAndNothingElseIsSaid) {
    VideoRecipe recipe{"mp4", evenTimes(100)};
    recipe.width = 320;
    recipe.height = 240;
    const std::pair<const char*, const char*> containers[] = {
        {"mp4", "mp4"}, {"mov", "mov"}, {"mkv", "matroska"}, {"ts", "mpegts"}};
    for (const auto& [suffix, container] : containers) {
        recipe.container = container;
        const std::string whole = std::string("whole.") + suffix;
        makeVideo(in(whole), recipe);
        const Bytes bytes = bytesOf(whole);
        for (const std::size_t length : {bytes.size() / 3, bytes.size() - 100}) {
            writeCut(std::string("cut.") + suffix, bytes, length);
            expectUnreadable(std::string("cut.") + suffix, "");
        }
        Bytes damaged = bytes;
        for (std::size_t i = 0; i < 300; ++i) damaged[bytes.size() / 2 + i] ^= 0x5a;
        writeBytes(std::string("hit.") + suffix, damaged);
        expectUnreadable(std::string("hit.") + suffix, "damaged");
    }
    writeBytes("empty.mp4", "");
    expectUnreadable("empty.mp4", "empty");
    writeBytes("text.mp4", Bytes(500, 'x'));
    expectUnreadable("text.mp4", "no video");
    recipe.hasVideo = false;
    recipe.hasSound = true;
    recipe.container = "matroska";
    makeVideo(in("sound.mkv"), recipe);
    expectUnreadable("sound.mkv", "no video track");

    // Two streams of different sizes, one after the other.
    recipe = {"h264", evenTimes(20)};
    makeVideo(in("first.h264"), recipe);
    recipe.width = 80;
    makeVideo(in("second.h264"), recipe);
    Bytes joined = bytesOf("first.h264");
    const Bytes second = bytesOf("second.h264");
    joined.insert(joined.end(), second.begin(), second.end());
    writeBytes("joined.h264", joined);
    EXPECT_EQ(numberOn(*open("joined.h264")->read(19)), 19);
    expectUnreadable("joined.h264", "80 x 96 pixels");
    // By content, where the suffix says nothing; never as one of several.
    fs::copy_file(in("whole.mp4"), in("clip.of:mine"));
    EXPECT_EQ(open("clip.of:mine")->frames().size(), 100u);
    EXPECT_THAT(errorOf(kInvalid,
                        [&] {
                            MediaSource::open({in("whole.mp4"), in("whole.ts")});
                        }),
                HasSubstr("alone"));
}

TEST_F(Video, LeavesAWholeFileOrNone) {
    const auto source = pictures(60);
    writeBytes("old.mkv", "old");
    const std::vector<std::string> before = names();
    const auto write = [&](MediaSink& sink, int from, int to) {
        for (int frame = from; frame < to; ++frame)
            sink.write(frame, *noise(200, 100, 3, static_cast<unsigned>(frame) + 1));
    };
    for (const char* name : {"old.mkv", "new.mp4"}) {
        SCOPED_TRACE(name);
        {  // dropped, and finished although frames are missing
            const auto dropped = MediaSink::open(in(name), *source, source->frames());
            write(*dropped, 0, 30);
        }
        EXPECT_EQ(names(), before);

#ifndef __SANITIZE_THREAD__          // which knows no threads in a forked process
        std::array<int, 2> begun{};  // killed under way
        ASSERT_EQ(pipe(begun.data()), 0);
        const pid_t child = fork();
        if (child == 0) {
            const auto sink = MediaSink::open(in(name), *source, source->frames());
            write(*sink, 0, 40);
            [[maybe_unused]] const auto told = ::write(begun[1], "x", 1);
            for (;;) pause();
        }
        close(begun[1]);
        char byte = 0;
        ASSERT_EQ(read(begun[0], &byte, 1), 1);
        close(begun[0]);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        EXPECT_EQ(names(), before);
#endif

        {
            const FullDisk disk(50000);
            const auto writeAll = [&] {
                const auto sink = MediaSink::open(in(name), *source, source->frames());
                write(*sink, 0, 60);
                sink->finish();
            };
            EXPECT_THAT(errorOf(MediaErrorKind::ReadWrite, writeAll),
                        AllOf(HasSubstr(in(name) + ": writing failed"), HasSubstr("ulimit -f")));
        }
        EXPECT_EQ(names(), before);
        EXPECT_THAT(bytesOf("old.mkv"), ElementsAre('o', 'l', 'd'));
    }

    // Frames that fail are left out; the others are all there.
    const auto sink = MediaSink::open(in("old.mkv"), *source, source->frames());
    write(*sink, 1, 20);
    EXPECT_THAT(errorOf(kCannotCreate, [&] { sink->write(20, *noise(100, 100, 3, 1)); }),
                AllOf(HasSubstr("frame 20"), HasSubstr("200 x 100")));
    write(*sink, 21, 60);
    sink->finish();
    const auto result = open("old.mkv");
    ASSERT_EQ(result->frames().size(), 58u);
    EXPECT_EQ(pixels(*result->read(0)), pixels(*noise(200, 100, 3, 2)));
    EXPECT_EQ(pixels(*result->read(57)), pixels(*noise(200, 100, 3, 60)));
}

TEST_F(Video, OptionsThatDoNotFitAreRefused) {
    const auto source = pictures(3);
    const auto refused = [&](const std::string& name, const VideoOptions& video) {
        WriteOptions options;
        options.video = video;
        return refusalOf(in(name), *source, options);
    };
    VideoOptions video;
    video.codec = "prores";
    EXPECT_THAT(refused("a.mp4", video), HasSubstr("valid: h264, h265"));
    EXPECT_THAT(refused("a_##.png", video), HasSubstr("--codec"));
    video = VideoOptions();
    video.quality = 20;
    EXPECT_THAT(refused("a.mkv", video), HasSubstr("ffv1"));
    EXPECT_THAT(refused("no/a.mkv", VideoOptions()), HasSubstr("no such folder"));
    EXPECT_THAT(refused("a_##.mp4", VideoOptions()), HasSubstr(".mp4, .mov, .mkv, .apng or .webp"));
    Ratio rate;
    for (const char* wrong : {"0", "-1", "x", "", "25/0", "2000", "ntsc"})
        EXPECT_FALSE(parseFrameRate(wrong, rate)) << wrong;
    EXPECT_TRUE(parseFrameRate("30000/1001", rate) && rate.numerator == 30000);
}

}  // namespace
