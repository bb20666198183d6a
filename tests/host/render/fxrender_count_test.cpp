#include <gmock/gmock.h>

#include "tests/host/render/Program.h"

// How areas are found is held against a search of its own in tests/host/imaging.

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* kObjectHead = "frame,object,area,centroid_x,centroid_y,left,top,width,height";
constexpr const char* kFrameHead =
    "frame,objects,mean_area,smallest_area,largest_area,left_out,input";

/// White rectangles on black; frame n has n + 2 of them, the first at the border.
class FxrenderCount : public FxrenderTest {
protected:
    void SetUp() override {
        for (int frame = 0; frame < 3; ++frame) {
            QImage image(64, 30, QImage::Format_Grayscale8);
            image.fill(0);
            for (int i = 0; i < frame + 2; ++i)
                for (int y = 0; y < 5 + i; ++y)
                    for (int x = 0; x < 4; ++x) image.scanLine(i + y)[12 * i + x] = 255;
            save(image, shot(frame));
        }
    }
    /// The filter leaves the rectangles as they are.
    ProgramResult count(const Arguments& others, int expectedExitCode = 0) {
        return run(
            Arguments{"count", "shot_####.png", "-f", "Channel separation:Channel=1"} + others,
            expectedExitCode);
    }
};

TEST_F(FxrenderCount, TabulatesFramesOnStandardOutputAndObjectsInAFile) {
    const ProgramResult result = count({"--table", "objects.csv", "-q"});
    EXPECT_THAT(linesOf(result.out),
                ElementsAre(kFrameHead, "0,2,22.00,20,24,0,shot_0000.png",
                            "1,3,24.00,20,28,0,shot_0001.png", "2,4,26.00,20,32,0,shot_0002.png"));
    const auto objects = linesOf(contents("objects.csv"));
    ASSERT_EQ(objects.size(), 1u + 2 + 3 + 4);
    EXPECT_EQ(objects[0], kObjectHead);
    EXPECT_EQ(objects[1], "0,1,20,1.50,2.00,0,0,4,5");
    EXPECT_EQ(objects[9], "2,4,32,37.50,6.50,36,3,4,8");

    EXPECT_EQ(count({"--table", "-", "-j", "3"}).out, contents("objects.csv"));
    EXPECT_THAT(linesOf(count({"--min-area", "21", "--frames", "1"}).out),
                ElementsAre(kFrameHead, "1,2,26.00,24,28,1,shot_0001.png"));
    EXPECT_THAT(linesOf(count({"--exclude-border", "--min-area", "29", "--frames", "0"}).out),
                ElementsAre(kFrameHead, "0,0,,,,2,shot_0000.png"));
    EXPECT_THAT(linesOf(count({"--shard", "1/2"}).out),
                ElementsAre(kFrameHead, "0,2,22.00,20,24,0,shot_0000.png",
                            "2,4,26.00,20,32,0,shot_0002.png"));
    EXPECT_THAT(count({"--shard", "1/2", "--outlines", "o.tif"}, 2).err, HasSubstr("--shard"));
}

TEST_F(FxrenderCount, LabelsAndOutlinesShowWhatTheTableTells) {
    count({"--labels", "l/", "--outlines", "o_##.png", "--table", "l/t.csv", "--min-area", "24"});
    for (int frame = 0; frame < 3; ++frame) {
        const QImage labels = load("l/" + shot(frame)), input = load(shot(frame));
        ASSERT_EQ(labels.format(), QImage::Format_Grayscale16);
        const QImage outlines = load(QStringLiteral("o_0%1.png").arg(frame));
        std::map<int, int> areas;
        for (int y = 0; y < 30; ++y)
            for (int x = 0; x < 64; ++x) {
                const int label = reinterpret_cast<const quint16*>(labels.scanLine(y))[x];
                if (label != 0) ++areas[label];
                const bool orange = outlines.pixel(x, y) == qRgb(255, 140, 0);
                EXPECT_TRUE(orange || outlines.pixel(x, y) == input.pixel(x, y));
                EXPECT_TRUE(!orange || label != 0);
                const bool inside = x % 12 == 1 || x % 12 == 2;  // of the rectangles of 4 columns
                EXPECT_TRUE(orange || label == 0 || inside);
            }
        for (const auto& [label, area] : areas)
            EXPECT_THAT(contents("l/t.csv"),
                        HasSubstr('\n' + std::to_string(frame) + ',' + std::to_string(label) + ',' +
                                  std::to_string(area) + ','));
        EXPECT_EQ(areas.size(), std::size_t(frame + 1));
    }
}

TEST_F(FxrenderCount, MoreObjectsThanNumbersAreSaid) {
    QImage dots(600, 600, QImage::Format_Grayscale8);
    dots.fill(0);
    for (int y = 0; y < 600; y += 2)
        for (int x = 0; x < 600; x += 2) dots.scanLine(y)[x] = 255;
    save(dots, shot(1));
    EXPECT_THAT(count({}).out, HasSubstr("\n1,90000,1.00,1,1,0,"));
    const ProgramResult result = count({"--labels", "l/", "--keep-going"}, 1);
    EXPECT_THAT(result.err, HasSubstr("shot_0001.png: 90000 objects are more"));
    EXPECT_THAT(linesOf(result.out), testing::SizeIs(3))
        << "the head and the frames that went well";
    EXPECT_EQ(files().filter("l/"), (QStringList{"l/" + shot(0), "l/" + shot(2)}));
}

}  // namespace
