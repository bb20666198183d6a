#include "tests/host/media/MediaFolder.h"

#include <OpenImageIO/imageio.h>
#include <png.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <webp/mux.h>
#include <zlib.h>

#include <cmath>
#include <cstdio>
#include <limits>

#include "host/media/file_names.h"
#include "host/media/formats/camera_data.h"

using namespace media;
using namespace media::test;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

class Media : public MediaFolder {
protected:
    /// A picture file made by the imaging library's own writer, not by ours.
    void writePicture(const std::string& name, OIIO::ImageSpec head, const void* samples) const {
        const std::unique_ptr<OIIO::ImageOutput> out = OIIO::ImageOutput::create(in(name));
        ASSERT_TRUE(out && out->open(in(name), head) && out->write_image(head.format, samples) &&
                    out->close());
    }
    void writeGrey(const std::string& name, unsigned char level = 7) const {
        writePicture(name, OIIO::ImageSpec(1, 1, 1, OIIO::TypeUInt8), &level);
    }
    /// The samples of a picture that is the only one of its file.
    Bytes samplesOf(const std::string& name) const { return pixels(*readOnly(name)); }
};

/// A chunk of a PNG file from its name and contents, with its true length and checksum.
std::string pngChunk(const std::string& named) {
    const auto number = [](uLong value) {
        std::string bytes;
        for (const int shift : {24, 16, 8, 0}) bytes += static_cast<char>(value >> shift);
        return bytes;
    };
    const auto* bytes = reinterpret_cast<const Bytef*>(named.data());
    return number(named.size() - 4) + named + number(crc32(0, bytes, uInt(named.size())));
}

std::string pngPixels(const std::string& rows) {
    std::string stream(compressBound(rows.size()), 0);
    uLongf size = stream.size();
    EXPECT_EQ(Z_OK, compress(reinterpret_cast<Bytef*>(stream.data()), &size,
                             reinterpret_cast<const Bytef*>(rows.data()), rows.size()));
    return "IDAT" + stream.substr(0, size);
}

std::string pngOf(const std::vector<std::string>& named) {
    std::string file = "\x89PNG\r\n\x1a\n";
    for (const std::string& chunk : named) file += pngChunk(chunk);
    return file + pngChunk("IEND");
}

std::string withByte(std::string text, std::size_t at, int byte) {
    text[at] = static_cast<char>(byte);
    return text;
}

std::string pathsOf(const MediaSource& source) {
    std::string list;
    for (const std::int64_t frame : source.frames())
        list += std::to_string(frame) + ":" + fileNameOf(source.path(frame)) + " ";
    return list;
}

TEST_F(Media, RoundTripsEveryFormatOrRefusesItUpFront) {
    const struct {
        const char* suffix;
        std::vector<int> channels;
        int tolerance;
    } formats[] = {{".png", {1, 2, 3, 4}, 0}, {".tif", {1, 2, 3, 4}, 0}, {".TIFF", {1, 2, 3, 4}, 0},
                   {".jpg", {1, 3}, 12},      {".bmp", {1, 3, 4}, 0},    {".tga", {1, 3, 4}, 0},
                   {".ppm", {3}, 0},          {".pgm", {1}, 0},          {".pnm", {1, 3}, 0}};
    const auto source = pictures(1);
    for (const auto& [suffix, channels, tolerance] : formats)
        for (int c = 1; c <= 4; ++c) {
            SCOPED_TRACE(suffix + std::to_string(c));
            // Smooth, so that JPEG can hold it; rows longer than the region; alpha 0 over colours.
            HkImage image(40, 30, c, nullptr, 32);
            image.roiWidth = 37;
            image.roiHeight = 23;
            for (int y = 0; y < 30; ++y)
                for (int i = 0; i < 40 * c; ++i)
                    image.data[y * image.step + i] =
                        static_cast<unsigned char>(i / c * 5 + y * 2 + i % c * (y < 9 ? 0 : 6));
            const std::string path = in("out" + std::to_string(c) + suffix);
            const auto sink = MediaSink::open(path, *source, {0});
            const PictureInfo info{37, 23, c};
            if (std::find(channels.begin(), channels.end(), c) == channels.end()) {
                const std::string error = errorOf(kCannotCreate, [&] { sink->check(0, info); });
                EXPECT_THAT(error, AllOf(HasSubstr(path), HasSubstr(".png or .tif")));
                EXPECT_EQ(error, errorOf(kCannotCreate, [&] { sink->write(0, image); }));
                EXPECT_FALSE(fs::exists(path));
                continue;
            }
            sink->check(0, info);
            sink->write(0, image);
            const auto again = MediaSource::open({path});
            EXPECT_EQ(again->info(0).channels, c);
            EXPECT_EQ(again->info(0).width, 37);
            const Bytes actual = pixels(*again->read(0));
            const Bytes expected = pixels(image);
            ASSERT_EQ(actual.size(), expected.size());
            for (std::size_t i = 0; i < actual.size(); ++i)
                ASSERT_NEAR(actual[i], expected[i], tolerance) << i;
            // No date in it: the same picture gives the same bytes.
            OIIO::ImageSpec head;
            ASSERT_TRUE(OIIO::ImageInput::create(path)->open(path, head));
            EXPECT_EQ(head.get_string_attribute("DateTime"), "");
        }
}

TEST_F(Media, MasksAreKeptAndTakeLittleRoom) {
    const auto source = pictures(1);
    for (int c = 1; c <= 4; ++c) {
        HkImage mask(300, 200, c, nullptr, 1);
        std::fill_n(mask.data, 200 * mask.step, static_cast<unsigned char>(0));
        std::mt19937 random(1);
        for (int disc = 0; disc < 60; ++disc) {
            const int left = random() % 300, top = random() % 200, radius = 3 + random() % 12;
            for (int y = std::max(0, top - radius); y < std::min(200, top + radius); ++y)
                for (int x = std::max(0, left - radius); x < std::min(300, left + radius); ++x)
                    if (std::hypot(x - left, y - top) < radius)
                        std::fill_n(mask.data + y * mask.step + x * c, c,
                                    static_cast<unsigned char>(255));
        }
        std::map<int, std::size_t> sizes;
        for (const int level : {0, 1, 5, 6, 12}) {
            const std::string name = std::to_string(level) + "mask" + std::to_string(c) + ".png";
            WriteOptions options;
            options.compression = level;
            MediaSink::open(in(name), *source, {0}, options)->write(0, mask);
            const auto other = OIIO::ImageInput::open(in(name));
            Bytes read(static_cast<std::size_t>(300 * 200 * c));
            ASSERT_TRUE(other && other->spec().nchannels == c &&
                        other->read_image(0, 0, 0, c, OIIO::TypeUInt8, read.data()));
            EXPECT_EQ(read, pixels(mask)) << name;
            sizes[level] = bytesOf(name).size();
        }
        EXPECT_LT(sizes[1], sizes[0] / 20);
        EXPECT_LT(sizes[1], sizes[5] * 11 / 10);  // runs take no more than a better search
        EXPECT_LT(sizes[12], sizes[6]);
    }
}

TEST_F(Media, SamplesAreScaledRoundedAndKeptApartFromAlpha) {
    std::vector<unsigned short> deep(65536);
    for (int i = 0; i < 65536; ++i) deep[i] = static_cast<unsigned short>(i);
    writePicture("deep.png", OIIO::ImageSpec(256, 256, 1, OIIO::TypeUInt16), deep.data());
    const Bytes levels = samplesOf("deep.png");
    for (int i = 0; i < 65536; ++i) ASSERT_EQ(levels[i], (i + 128) / 257) << i;

    constexpr float inf = std::numeric_limits<float>::infinity();
    const float floats[] = {-1, 0, 0.5f / 255 * 0.99f, 0.6f, 1, 7, std::nanf(""), inf, -inf};
    writePicture("float.tif", OIIO::ImageSpec(9, 1, 1, OIIO::TypeFloat), floats);
    EXPECT_THAT(samplesOf("float.tif"), ElementsAre(0, 0, 0, 153, 255, 255, 0, 255, 0));

    writeBytes("bits.pbm", "P1\n4 1\n1 0 0 1\n");  // 1 is black
    EXPECT_THAT(samplesOf("bits.pbm"), ElementsAre(0, 255, 255, 0));

    // Half transparent, multiplied in these two files, and fully transparent.
    const float multiplied[] = {0.4f, 0.2f, 0.1f, 0.5f, 0, 0, 0, 0};
    for (const char* name : {"alpha.exr", "alpha.tif"}) {
        writePicture(name, OIIO::ImageSpec(2, 1, 4, OIIO::TypeFloat), multiplied);
        EXPECT_THAT(samplesOf(name), ElementsAre(204, 102, 51, 128, 0, 0, 0, 0)) << name;
    }
    const unsigned char apart[] = {200, 100, 50, 0, 9, 8, 7, 1};  // colours under alpha 0 survive
    OIIO::ImageSpec head(2, 1, 4, OIIO::TypeUInt8);
    head.attribute("oiio:UnassociatedAlpha", 1);
    for (const char* name : {"apart.png", "apart.tif", "apart.tga"}) {
        writePicture(name, head, apart);
        EXPECT_THAT(samplesOf(name), testing::ElementsAreArray(apart)) << name;
    }
    const unsigned char six[] = {1, 2, 3, 4, 5, 6};
    OIIO::ImageSpec many(1, 1, 6, OIIO::TypeUInt8);
    many.channelnames = {"R", "G", "B", "U", "V", "W"};
    many.alpha_channel = -1;
    writePicture("six.tif", many, six);
    EXPECT_THAT(samplesOf("six.tif"), ElementsAre(1, 2, 3));
}

TEST_F(Media, OrientationIsAppliedAndPropertiesAreCarried) {
    const unsigned char lying[] = {1, 2, 3, 4, 5, 6};  // 1 2 3 over 4 5 6
    const Bytes standing[] = {{1, 2, 3, 4, 5, 6}, {3, 2, 1, 6, 5, 4}, {6, 5, 4, 3, 2, 1},
                              {4, 5, 6, 1, 2, 3}, {1, 4, 2, 5, 3, 6}, {4, 1, 5, 2, 6, 3},
                              {6, 3, 5, 2, 4, 1}, {3, 6, 2, 5, 1, 4}};
    OIIO::ImageSpec head(3, 2, 1, OIIO::TypeUInt8);
    head.attribute("XResolution", 300.f);  // the library's TIFF writer knows one for both axes
    head.attribute("YResolution", 300.f);
    head.attribute("ResolutionUnit", "in");
    std::string profile(500, '\0');
    for (std::size_t i = 132; i < profile.size(); ++i)
        profile[i] = static_cast<char>(i * i * 7 >> 3);
    profile.replace(12, 12, "mntrGRAYXYZ ").replace(36, 4, "acsp");
    profile.replace(68, 12, std::string("\0\0\xf6\xd6\0\1\0\0\0\0\xd3\x2d", 12));  // D50
    profile[2] = 1, profile[3] = static_cast<char>(500 - 256);
    head.attribute("ICCProfile", OIIO::TypeDesc(OIIO::TypeDesc::UINT8, 500), profile.data());
    for (int orientation = 1; orientation <= 8; ++orientation) {
        SCOPED_TRACE(orientation);
        head.attribute("Orientation", orientation);
        writePicture("turned.tif", head, lying);
        const auto source = open("turned.tif");
        PictureProperties properties;
        const std::unique_ptr<HkImage> image = source->read(0, &properties);
        EXPECT_EQ(pixels(*image), standing[orientation - 1]);
        EXPECT_EQ(image->width, orientation < 5 ? 3 : 2);
        EXPECT_EQ(source->info(0).width, image->width);
        EXPECT_EQ(properties.xResolution, 300);
        EXPECT_EQ(properties.iccProfile.size(), 500u);

        for (const char* name : {"copy.png", "copy.tif", "copy.jpg"}) {
            write(name, *image, properties);
            PictureProperties copied;
            EXPECT_EQ(readOnly(name, &copied)->width, image->width) << name;  // turned once
            EXPECT_NEAR(copied.yResolution, properties.yResolution, 0.1) << name;
            EXPECT_EQ(copied.resolutionUnit, "in") << name;
            EXPECT_EQ(copied.iccProfile, properties.iccProfile) << name;
        }
    }
    // Resolutions turn with the picture.
    head.attribute("YResolution", 150.f);
    writePicture("turned.jpg", head, lying);  // orientation 8
    PictureProperties turned;
    readOnly("turned.jpg", &turned);
    EXPECT_TRUE(turned.xResolution == 150 && turned.yResolution == 300);
    // A profile for grey says nothing about a colour picture; one that is damaged stops nothing.
    PictureProperties grey;
    readOnly("turned.tif", &grey);
    write("colour.tif", HkImage(2, 2, 3, nullptr, 4), grey);
    readOnly("colour.tif", &grey);
    EXPECT_TRUE(grey.iccProfile.empty());
    for (const int wrong : {3, 36, 68, 131}) {
        PictureProperties damaged;
        damaged.iccProfile.assign(profile.begin(), profile.end());
        damaged.iccProfile[wrong] ^= 0x55;
        for (const char* name : {"d.png", "d.tif", "d.jpg"})
            write(name, HkImage(2, 2, 1, nullptr, 4), damaged);
    }
}

TEST_F(Media, SourcesNumberTheirFrames) {
    const std::string odd = "[50%] #d %04d ü\n\xff";
    fs::create_directory(in(odd));
    const std::string at = odd + '/';
    for (const char* name : {"s_0002.png", "s_0010.png", "s_00011.png", "s_7.png", "s_-003.png",
                             "t2.pgm", "t10.pgm", "t1.pgm"})
        writeGrey(at + name);
    writeBytes(at + ".hidden.png", "x");
    writeBytes(at + "notes.txt", "x");
    fs::create_directory(in(at + "s_0005.png"));  // not a file

    const auto sequence = open(at + "s_%04d.png");
    EXPECT_EQ(pathsOf(*sequence), "-3:s_-003.png 2:s_0002.png 10:s_0010.png ");
    EXPECT_EQ(pathsOf(*open(at + "s_####.png")), pathsOf(*sequence));
    EXPECT_EQ(pathsOf(*open(at + "t#.pgm")), "1:t1.pgm 2:t2.pgm 10:t10.pgm ");
    EXPECT_THAT(open(at + "t#.pgm")->notices(),
                ElementsAre(HasSubstr("7 of the numbers 1 to 10 have no file, the first is 3")));
    EXPECT_THAT(open(at + "s_%04d.png")->notices(),
                ElementsAre(HasSubstr("11 of the numbers -3 to 10")));
    fs::remove(in(at + "t10.pgm"));
    EXPECT_THAT(open(at + "t#.pgm")->notices(), IsEmpty());
    writeGrey(at + "t10.pgm");
    EXPECT_EQ(sequence->frameName(2), "s_0002");
    EXPECT_EQ(pixels(*sequence->read(10)), Bytes{7});
    EXPECT_THAT(errorOf(kMissing, [&] { sequence->read(3); }),
                AllOf(HasSubstr("frame 3"), HasSubstr("-3 to 10 with gaps")));

    EXPECT_EQ(pathsOf(*open(odd)),
              "0:s_-003.png 1:s_0002.png 2:s_7.png 3:s_0010.png 4:s_00011.png 5:t1.pgm 6:t2.pgm "
              "7:t10.pgm ");
    EXPECT_EQ(pathsOf(*MediaSource::open({in(at + "t2.pgm"), in(at + "t1.pgm")})),
              "0:t2.pgm 1:t1.pgm ");
    writeGrey(at + "s_##.png");  // a file of that very name is no template
    EXPECT_EQ(pathsOf(*open(at + "s_##.png")), "0:s_##.png ");
}

TEST_F(Media, InputsThatCannotBeReadAreNamedWithTheReason) {
    writeGrey("good.png");
    fs::create_directory(in("bare"));
    ASSERT_EQ(0, mkfifo(in("pipe.png").c_str(), 0600));
    const struct {
        std::vector<std::string> inputs;
        MediaErrorKind kind;
        std::string reason;
    } rows[] = {
        {{}, kMissing, "no input"},
        {{""}, kMissing, "no such file"},
        {{in("nowhere/a.png")}, kMissing, in("nowhere/a.png")},
        {{in("bare")}, kMissing, "no pictures"},
        {{in("a_###.png")}, kMissing, "a_001.png"},
        {{in("no/a_###.png")}, kMissing, "no/"},
        {{in("good.png/a.png")}, kMissing, "not a directory"},
        {{in("good.png"), folder}, kInvalid, "alone"},
        {{in("good.png"), in("a##.png")}, kInvalid, "alone"},
        {{in("pipe.png")}, kInvalid, "pipe.png"},
    };
    for (const auto& row : rows)
        EXPECT_THAT(errorOf(row.kind, [&] { MediaSource::open(row.inputs); }),
                    HasSubstr(row.reason));
}

TEST_F(Media, PicturesThatCannotBeReadAreNamedWithTheReason) {
    writeBytes("empty.png", "");
    expectUnreadable("empty.png", "empty");
    for (const char* name :
         {"text.png", "text.tif", "text.jpg", "text.txt", "text", "text.null", "text.exr"}) {
        writeBytes(name, "this is just some text, not a picture of any kind\n");
        expectUnreadable(name, "");
    }
    for (const char* suffix : {"png", "tif", "jpg", "bmp", "ppm", "tga", "exr", "webp"}) {
        const std::string name = std::string("whole.") + suffix;
        writePicture(name, OIIO::ImageSpec(64, 64, 3, OIIO::TypeUInt8), noise(64, 64, 3, 1)->data);
        const Bytes whole = bytesOf(name);
        // The end of a TGA file holds no pixels.
        const std::size_t end = name == "whole.tga" ? whole.size() / 2 : whole.size() - 40;
        for (const std::size_t length : {std::size_t{10}, whole.size() / 2, end}) {
            SCOPED_TRACE(length);
            writeCut(std::string("cut.") + suffix, whole, length);
            expectUnreadable(std::string("cut.") + suffix, "");
        }
    }
    writeBytes("wide.pgm", "P5 32769 1 255\n" + std::string(32769, 'x'));
    expectUnreadable("wide.pgm", "32,768");
    writeBytes("many.pgm", "P5 32768 8193 255\n");
    expectUnreadable("many.pgm", "268,435,456");
    EXPECT_THAT(errorOf(kInvalid, [&] { open("many.pgm")->info(0); }), HasSubstr("268,435,456"));
}

TEST_F(Media, SinksNameTheirFilesAndNeverAnInput) {
    for (const char* name : {"s_1.png", "s_2.png", "s_3.JPG", "s_4.exr"}) writeGrey(name);
    const auto source = MediaSource::open({folder});
    const Frames all = source->frames();
    const auto pathsFor = [&](const std::string& output) {
        const auto sink = MediaSink::open(output, *source, all);
        std::string list;
        for (const std::int64_t frame : all) list += sink->path(frame).substr(folder.size()) + ' ';
        return list;
    };
    EXPECT_EQ(pathsFor(in("new/er")),
              "/new/er/s_1.png /new/er/s_2.png /new/er/s_3.jpg /new/er/s_4.png ");
    EXPECT_EQ(pathsFor(in("v1.png/")),
              "/v1.png/s_1.png /v1.png/s_2.png /v1.png/s_3.jpg /v1.png/s_4.png ");
    EXPECT_EQ(pathsFor(in("o_###.tif")), "/o_000.tif /o_001.tif /o_002.tif /o_003.tif ");
    EXPECT_FALSE(fs::exists(in("new")));  // not before the first frame

    fs::create_symlink(in("s_2.png"), in("link.png"));
    fs::create_hard_link(in("s_2.png"), in("hard.png"));
    fs::create_directory_symlink(folder, in("again"));
    fs::create_symlink("/dev/null", in("null.png"));
    fs::create_directory(in("taken_0000.png"));
    const std::pair<std::string, const char*> refused[] = {
        {folder, "never overwritten"},
        {in("again"), "never overwritten"},
        {in("./s_%d.png"), "never overwritten"},  // frame 1 would be the second file
        {in("a.png"), "_####.png"},
        {in("a.xyz"), ".png, .tif"},
        {in("a_##.mp4"), ".png, .tif"},
        {in("a_##"), ".png, .tif"},
        {in("no/a_##.png"), "no such folder"},
        {in("s_1.png/new/"), "not a directory"},
        {in("s_1.png/a_##.png"), "no such folder"},
        {in("taken_####.png"), "a folder has this name"},
        {"", "no name"},
    };
    for (const auto& [output, reason] : refused)
        EXPECT_THAT(refusalOf(output, *source), HasSubstr(reason)) << output;
    const auto second = open("s_2.png");
    for (const char* name : {"s_2.png", "link.png", "hard.png", "./s_2.png", "again/s_2.png"})
        EXPECT_THAT(refusalOf(in(name), *second), HasSubstr("never overwritten"));
    EXPECT_THAT(refusalOf(in("null.png"), *second), HasSubstr("no regular file"));

    fs::create_directory(in("twin"));
    writeGrey("twin/s_1.png");
    const auto twins = MediaSource::open({in("s_1.png"), in("twin/s_1.png")});
    EXPECT_THAT(refusalOf(in("new"), *twins), HasSubstr("frames 0 and 1"));
    writeGrey("twin/end.png");
    fs::create_symlink(in("twin/end.png"), in("to_1.png"));
    fs::create_hard_link(in("twin/end.png"), in("to_3.png"));
    EXPECT_THAT(refusalOf(in("to_#.png"), *source), HasSubstr("frames 1 and 3"));
    const auto one = MediaSink::open(in("x.png"), *source, {2});
    EXPECT_THAT(errorOf(kCannotCreate, [&] { one->path(1); }), HasSubstr("frame 1"));
}

TEST_F(Media, WritingLeavesAWholeFileOrNone) {
    const auto image = noise(200, 200, 3, 1);
    writeBytes("out.bmp", "old");
    fs::create_symlink("out.bmp", in("link.bmp"));
    {
        const FullDisk disk(20000);  // part of a file fits
        for (const char* name : {"out.bmp", "link.bmp", "fresh.bmp"})
            EXPECT_THAT(errorOf(MediaErrorKind::ReadWrite, [&] { write(name, *image); }),
                        AllOf(HasSubstr(".bmp: writing failed"), HasSubstr("ulimit -f")));
    }
    EXPECT_THAT(names(), ElementsAre("link.bmp", "out.bmp"));
    EXPECT_THAT(bytesOf("out.bmp"), ElementsAre('o', 'l', 'd'));

    write("link.bmp", *image);
    EXPECT_TRUE(fs::is_symlink(in("link.bmp")));
    EXPECT_EQ(samplesOf("out.bmp"), pixels(*image));
    EXPECT_THAT(names(), ElementsAre("link.bmp", "out.bmp"));

    const auto late = MediaSink::open(in("sub/"), *pictures(1), {0});
    writeBytes("sub", "a file came in the way");
    EXPECT_THAT(errorOf(kCannotCreate, [&] { late->write(0, *image); }), HasSubstr("/sub"));
    EXPECT_THAT(errorOf(kCannotCreate, [&] { write("e.png", HkImage()); }), HasSubstr("e.png"));
}

TEST_F(Media, DeepPicturesKeepEverySample) {
    const auto source = pictures(1);
    WriteOptions deep;
    deep.depth = SampleDepth::Deep;
    DeepPicture picture{257, 256, {}};
    for (int i = 0; i < 257 * 256; ++i) picture.samples.push_back(static_cast<uint16_t>(i));
    for (const char* name : {"deep.png", "deep.tif"}) {
        MediaSink::open(in(name), *source, {0}, deep)->write(0, picture);
        const auto file = OIIO::ImageInput::open(in(name));
        ASSERT_TRUE(file) << name;
        EXPECT_EQ(file->spec().format, OIIO::TypeUInt16);
        std::vector<std::uint16_t> samples(picture.samples.size());
        file->read_image(0, 0, 0, 1, OIIO::TypeUInt16, samples.data());
        EXPECT_EQ(samples, picture.samples) << name;
    }
    EXPECT_THAT(refusalOf(in("deep.jpg"), *source, deep), HasSubstr(".png or .tif"));
}

TEST_F(Media, PngOfEveryKindIsReadAsAnotherReaderReadsIt) {
    const std::pair<int, std::vector<int>> kinds[] = {{PNG_COLOR_TYPE_GRAY, {1, 2, 4, 8, 16}},
                                                      {PNG_COLOR_TYPE_PALETTE, {1, 2, 4, 8}},
                                                      {PNG_COLOR_TYPE_RGB, {8, 16}},
                                                      {PNG_COLOR_TYPE_GRAY_ALPHA, {8, 16}},
                                                      {PNG_COLOR_TYPE_RGB_ALPHA, {8, 16}}};
    unsigned random = 1;
    for (const auto& [kind, depths] : kinds)
        for (const int bits : depths)
            for (const bool transparent : {false, true})
                for (const int size : {1, 3, 29}) {
                    SCOPED_TRACE(testing::Message() << kind << ' ' << bits << ' ' << size);
                    const std::string path = in("kind.png");
                    std::FILE* file = std::fopen(path.c_str(), "wb");
                    png_structp png =
                        png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
                    png_infop info = png_create_info_struct(png);
                    png_init_io(png, file);
                    png_set_IHDR(png, info, size, size, bits, kind,
                                 size == 3 ? PNG_INTERLACE_NONE : PNG_INTERLACE_ADAM7, 0, 0);
                    Bytes noise(4096);
                    for (unsigned char& byte : noise)
                        byte = static_cast<unsigned char>((random = random * 1664525 + 1) >> 24);
                    if (kind == PNG_COLOR_TYPE_PALETTE)
                        png_set_PLTE(png, info, reinterpret_cast<png_color*>(noise.data()),
                                     1 << bits);
                    png_color_16 clear{0, 1, 1, 1, 1};
                    if (transparent && !(kind & PNG_COLOR_MASK_ALPHA))
                        png_set_tRNS(png, info, noise.data() + 800, 1, &clear);
                    png_set_filter(png, 0, PNG_ALL_FILTERS);
                    png_write_info(png, info);
                    std::vector<png_bytep> rows;
                    for (int y = 0; y < size; ++y) rows.push_back(noise.data() + 101 * y);
                    png_write_image(png, rows.data());
                    png_write_end(png, info);
                    png_destroy_write_struct(&png, &info);
                    std::fclose(file);

                    OIIO::ImageSpec apart;
                    apart.attribute("oiio:UnassociatedAlpha", 1);
                    const auto other = OIIO::ImageInput::open(path, &apart);
                    Bytes expected(static_cast<std::size_t>(size * size) * other->spec().nchannels);
                    ASSERT_TRUE(other->read_image(0, 0, 0, -1, OIIO::TypeUInt8, expected.data()));
                    EXPECT_EQ(samplesOf("kind.png"), expected);
                }
}

TEST_F(Media, PngOfWrongPartsIsRefused) {
    using namespace std::string_literals;
    const std::string head = "IHDR\0\0\0\2\0\0\0\2\x08\3\0\0\0"s, palette = "PLTEabcdef";
    const std::string pixels = pngPixels("\0\0\1\0\1\0"s);
    const std::vector<std::string> good = {head,
                                           palette,
                                           "tRNS\x80",
                                           "pHYs\0\0\0\1\0\0\0\2\0"s,
                                           "tEXt",
                                           "iCCPname\0\0x"s,
                                           "eXIfII*\0\x08\0\0\0"s,
                                           pixels};
    writeBytes("good.png", pngOf(good));
    const std::string expected =
        "abc\x80"
        "def\xff"
        "def\xff"
        "abc\x80";
    EXPECT_EQ(samplesOf("good.png"), Bytes(expected.begin(), expected.end()));
    // In a checksum alone, of any part, wherever a bit is wrong.
    const std::string file = pngOf(good);
    std::size_t end = 8;
    for (std::size_t i = 0; i <= good.size(); ++i) {
        end += 12 + (i < good.size() ? good[i].size() - 4 : 0);
        for (const std::size_t at : {end - 4, end - 1}) {
            writeBytes("bit.png", withByte(file, at, file[at] ^ 1));
            expectUnreadable("bit.png", "checksum");
        }
    }

    writeBytes("bit.png", withByte(file, 16, 0x40));  // before its size is believed
    expectUnreadable("bit.png", "checksum");

    const auto grey = [&head](int bits, int kind) {
        return withByte(withByte(head, 12, bits), 13, kind);
    };
    const std::string other = pngPixels(std::string(34, 0));
    const char *impossible = "says what cannot be", *place = "not where it belongs";
    const std::pair<const char*, std::vector<std::string>> rows[] = {
        {"no pixels", {head, palette}},
        {"palette is missing", {head, pixels}},
        {"not of its palette", {head, "PLTEabcde", pixels}},
        {"filter is unknown", {head, palette, pngPixels("\5\0\1\0\1\0"s)}},
        {"compressed pixels", {head, palette, pngPixels("\0\0\1\0\1"s)}},
        {"compressed pixels", {head, palette, pngPixels("\0\0\1\0\1\0\0"s)}},
        {"wrong length", {head + '\0', palette, pixels}},
        {"wrong length", {head.substr(0, 16), palette, pixels}},
        {place, {palette, head, pixels}},
        {place, {head, head, palette, pixels}},
        {impossible, {withByte(head, 7, 0), palette, pixels}},
        {impossible, {withByte(head, 11, 0), palette, pixels}},
        {impossible, {withByte(head, 4, 0x80), palette, pixels}},
        {impossible, {withByte(head, 8, 0x80), palette, pixels}},
        {impossible, {withByte(head, 14, 1), palette, pixels}},
        {impossible, {withByte(head, 15, 1), palette, pixels}},
        {impossible, {withByte(head, 16, 2), palette, pixels}},
        {impossible, {grey(3, 0), other}},
        {impossible, {grey(16, 3), palette, other}},
        {impossible, {grey(4, 2), other}},
        {impossible, {grey(8, 1), other}},
        {impossible, {grey(8, 5), other}},
        {"too short for the 16384 x 16384",
         {withByte(withByte(withByte(withByte(head, 6, 64), 7, 0), 10, 64), 11, 0), palette,
          pixels}}};
    for (const auto& [reason, chunks] : rows) {
        writeBytes("wrong.png", pngOf(chunks));
        expectUnreadable("wrong.png", reason);
    }
    // What is said about the pixels and has a wrong length counts for nothing, nor does the
    // transparent colour of a picture with alpha.
    PictureProperties properties;
    writeBytes("idle.png", pngOf({grey(8, 4), "tRNS\0\0\0\0"s, "pHYs\0\0\1\1"s, "iCCPx\0"s,
                                  pngPixels("\0abcd\0efgh"s)}));
    EXPECT_EQ(::pixels(*readOnly("idle.png", &properties)),
              Bytes({'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}));
    EXPECT_EQ(properties.xResolution, 0);
    EXPECT_THAT(properties.iccProfile, IsEmpty());
}

TEST_F(Media, OneWrongBitIsNoticedWhereThereAreChecksums) {
    const auto image = noise(40, 30, 3, 1);
    const std::pair<const char*, bool> files[] = {
        {"bit.png", true},  {"bit.tif", true},  {"bit.jpg", false}, {"bit.bmp", false},
        {"bit.tga", false}, {"bit.ppm", false}, {"bit.webp", false}};
    for (const auto& [file, hasChecksums] : files) {
        const std::string name = file;
        if (name == "bit.webp")  // is not written here
            writePicture(name, OIIO::ImageSpec(40, 30, 3, OIIO::TypeUInt8), image->data);
        else
            write(name, *image);
        const Bytes whole = bytesOf(name);
        const Bytes right = samplesOf(name);
        // What follows a TIFF file's strips is not part of them.
        const bool isTiff = name == "bit.tif";
        const std::size_t end = isTiff ? whole[4] + 256u * whole[5] : whole.size();
        testing::internal::CaptureStderr();
        for (std::size_t at = isTiff ? 8 : 0; at < end; at += 7) {
            Bytes damaged = whole;
            damaged[at] ^= static_cast<unsigned char>(1 << at % 8);
            writeBytes(name, damaged);
            try {
                const Bytes read = samplesOf(name);
                // The last bits of a stream may mean nothing.
                EXPECT_TRUE(!hasChecksums || read == right) << name << ' ' << at;
            } catch (const MediaError& error) {
                EXPECT_EQ(error.kind(), kInvalid) << error.what();
                EXPECT_THAT(error.what(), testing::StartsWith(in(name)));
            }
        }
        EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
    }
}

TEST_F(Media, FilesThatClaimWhatCannotBeAreRefusedBeforeMemoryIsTaken) {
    using namespace std::string_literals;
    const std::string side("\0\x40", 2);  // 16384, little-endian
    const std::string tiff = "II*\0\x08\0\0\0\x08\0"s + "\0\1\3\0\1\0\0\0"s + side +
                             "\0\0\1\1\3\0\1\0\0\0"s + side + "\0\0"s +
                             "\2\1\3\0\1\0\0\0\x08\0\0\0\3\1\3\0\1\0\0\0\x08\0\0\0"s +
                             "\6\1\3\0\1\0\0\0\2\0\0\0\x11\1\4\0\1\0\0\0\x08\0\0\0"s +
                             "\x15\1\3\0\1\0\0\0\4\0\0\0\x17\1\4\0\1\0\0\0\x20\0\0\0\0\0\0\0"s;
    writeBytes("claim.tif", tiff);
    writeBytes("claim.bmp", "BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0"s + side + "\0\0"s + side +
                                "\0\0\1\0\x18\0\0\0\0\0"s + std::string(40, '\0'));
    // What crashes the library's readers does not reach them.
    writeBytes("map.tga", "\0\1\1\0\0\2\0\x10\0\0\0\0\4\0\4\0\x08\0"s + std::string(40, '\xff'));
    writeBytes("16.bmp",
               "BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\4\0\0\0\4\0\0\0\1\0\x10\0\0\0\0\0"s +
                   std::string(60, '\0'));
    writeBytes("rle4.bmp",
               "BM\0\0\0\0\0\0\0\0\x36\0\0\0\x28\0\0\0\4\0\0\0\4\0\0\0\1\0\4\0\2\0\0\0"s +
                   std::string(60, '\0'));
    writeBytes("text.png", std::string(40, '-'));
    writeBytes("anim.gif", "GIF89a" + std::string(40, '\0'));
    const std::pair<const char*, const char*> rows[] = {
        {"claim.tif", "too short for the 16384 x 16384"},
        {"claim.bmp", "too short for the 16384 x 16384"},
        {"map.tga", "colour map"},
        {"16.bmp", "16 bits"},
        {"rle4.bmp", "compression 2"},
        {"anim.gif", "convert it to an animated PNG"},
        {"text.png", "no picture that can be read (PNG, TIFF, JPEG"}};
    for (const auto& [name, reason] : rows) expectUnreadable(name, reason);
}

TEST_F(Media, WhatTheCameraSaidIsKept) {
    OIIO::ImageSpec head(2, 1, 3, OIIO::TypeUInt8);
    head.attribute("Make", "Maker of cameras");
    head.attribute("ExposureTime", 0.25f);
    head.attribute("GPS:Altitude", 321.f);
    head.attribute("Orientation", 6);
    const unsigned char samples[6] = {};
    writePicture("from.jpg", head, samples);
    PictureProperties properties;
    const auto image = readOnly("from.jpg", &properties);
    ASSERT_FALSE(properties.cameraData.exif.empty());
    for (const char* to : {"to.jpg", "to.tif", "to.png"}) {
        SCOPED_TRACE(to);
        write(to, *image, properties);
        // Read again by ourselves, then by the library: its PNG reader knows no camera data.
        PictureProperties again;
        readOnly(to, &again);
        ASSERT_EQ(again.cameraData.exif.size(), properties.cameraData.exif.size());
        for (std::size_t i = 0; i < again.cameraData.exif.size(); ++i)
            EXPECT_EQ(again.cameraData.exif[i].bytes, properties.cameraData.exif[i].bytes);
        write("again.jpg", *image, again);
        const auto other = OIIO::ImageInput::open(in("again.jpg"));
        EXPECT_EQ(other->spec().get_string_attribute("Make"), "Maker of cameras");
        EXPECT_EQ(other->spec().get_float_attribute("GPS:Altitude"), 321.f);
        EXPECT_EQ(other->spec().get_int_attribute("Orientation", 1), 1);
    }
    // WebP is read only: its still picture with chunks that another library puts around it.
    const auto noisy = noise(9, 5, 4, 1);
    writePicture("plain.webp", OIIO::ImageSpec(9, 5, 4, OIIO::TypeUInt8), noisy->data);
    const Bytes plain = bytesOf("plain.webp");
    const Bytes profile = {'a', 'b', 'c'};
    const Bytes turned = formats::asExif(properties.cameraData);
    const WebPData parts[] = {
        {plain.data(), plain.size()}, {turned.data(), turned.size()}, {profile.data(), 3}};
    WebPMux* const mux = WebPMuxCreate(&parts[0], 1);
    WebPMuxSetChunk(mux, "EXIF", &parts[1], 1);
    WebPMuxSetChunk(mux, "ICCP", &parts[2], 1);
    WebPData file = {};
    ASSERT_EQ(WebPMuxAssemble(mux, &file), WEBP_MUX_OK);
    writeBytes("from.webp", Bytes(file.bytes, file.bytes + file.size));
    WebPDataClear(&file);
    WebPMuxDelete(mux);
    PictureProperties again;
    EXPECT_EQ(::pixels(*readOnly("from.webp", &again)), samplesOf("plain.webp"));
    EXPECT_EQ(again.iccProfile, profile);
    EXPECT_EQ(again.cameraData.exif.size(), properties.cameraData.exif.size());
    EXPECT_EQ(formats::asExif(again.cameraData), turned);
}

TEST_F(Media, PagesAreFrames) {
    for (int i = 0; i < 3; ++i)
        writeGrey("p_" + std::to_string(i) + ".png", static_cast<unsigned char>(50 + i));
    const auto stills = open("p_#.png");
    const auto sink = MediaSink::open(in("pages.tif"), *stills, stills->frames());
    EXPECT_TRUE(sink->writesInOrder());
    for (const std::int64_t frame : stills->frames()) sink->write(frame, *stills->read(frame));
    EXPECT_FALSE(fs::exists(in("pages.tif")));
    sink->finish();
    const auto pages = open("pages.tif");
    ASSERT_EQ(pages->frames(), (Frames{0, 1, 2}));
    EXPECT_EQ(pages->frameName(2), "pages_0002");
    const auto other = OIIO::ImageInput::open(in("pages.tif"));
    for (int i = 0; i < 3; ++i) {
        unsigned char level = 0;
        ASSERT_TRUE(other->read_image(i, 0, 0, 1, OIIO::TypeUInt8, &level));
        EXPECT_EQ(level, 50 + i);
        EXPECT_EQ(pixels(*pages->read(i)), Bytes{level});
    }
    const auto notesOf = [](const MediaSource& source) {
        PictureProperties properties;
        source.read(0, &properties);
        return properties.notes;
    };
    EXPECT_THAT(notesOf(*pages), ElementsAre());
    EXPECT_THAT(notesOf(*MediaSource::open({in("pages.tif"), in("p_0.png")})),
                ElementsAre(HasSubstr("only the first of several pages")));
    EXPECT_THAT(notesOf(*MediaSource::open({in("p_0.png"), in("pages.tif")})), ElementsAre());
}

TEST_F(Media, ARangeChoosesWhatBecomesBlackAndWhite) {
    const auto writeDeep = [&](const char* name, std::vector<unsigned short> levels) {
        writePicture(name, OIIO::ImageSpec(static_cast<int>(levels.size()), 1, 1, OIIO::TypeUInt16),
                     levels.data());
    };
    writeDeep("d_0.tif", {100, 300, 200});
    writeDeep("d_1.tif", {200, 400, 50});
    const auto read = [&](const SampleRange& range, std::vector<std::string>* notes = nullptr) {
        ReadOptions options;
        options.range = range;
        PictureProperties properties;
        const auto image = open("d_#.tif", options)->read(1, &properties);
        if (notes) *notes = properties.notes;
        return pixels(*image);
    };
    std::vector<std::string> notes;
    EXPECT_EQ(read({SampleRange::Type, 0, 0}, &notes), (Bytes{1, 2, 0}));
    EXPECT_THAT(notes, ElementsAre(HasSubstr("16 bits cut to 8")));
    EXPECT_EQ(read({SampleRange::Given, 0, 510}, &notes), (Bytes{100, 200, 25}));
    EXPECT_TRUE(notes.empty());
    EXPECT_EQ(read({SampleRange::Auto, 0, 0}), (Bytes{128, 255, 0}));
    EXPECT_EQ(read({SampleRange::Each, 0, 0}), (Bytes{109, 255, 0}));
}

TEST_F(Media, AFileReplacedKeepsItsRights) {
    writeBytes("secret.png", "old");
    fs::permissions(in("secret.png"), fs::perms::owner_read | fs::perms::owner_write);
    // Of a process that is no more, and of one that is.
    char host[256] = {};
    gethostname(host, sizeof host - 1);
    const pid_t child = fork();
    if (child == 0) _exit(0);
    waitpid(child, nullptr, 0);
    const std::string dead = ".part-" + std::string(host) + '-' + std::to_string(child) + "-1.png";
    const std::string alive =
        ".part-" + std::string(host) + '-' + std::to_string(getpid()) + "-1.png";
    writeBytes(dead, "x");
    writeBytes(alive, "x");
    write("secret.png", *noise(2, 2, 1, 1));
    EXPECT_EQ(fs::status(in("secret.png")).permissions(),
              fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_THAT(names(), testing::UnorderedElementsAre("secret.png", alive));
}

}  // namespace
