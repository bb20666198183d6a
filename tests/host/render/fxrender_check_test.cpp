#include <gmock/gmock.h>

#include <cmath>
#include <numeric>

#include "tests/host/render/Program.h"

// What check says is held against what apply does: the host knows these filters from experience
// only.

namespace {

using testing::HasSubstr;

class FxrenderCheck : public FxrenderTest {
protected:
    QImage grey(int width, int height, int level) const {
        QImage image(width, height, QImage::Format_Grayscale8);
        image.fill(level);
        return image;
    }
    /// Discs around these points of the middle row.
    QImage discs(QImage image, std::initializer_list<int> centres, int radius, int level) const {
        for (const int centre : centres)
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    if (std::hypot(x - centre, y - image.height() / 2) <= radius)
                        image.scanLine(y)[x] = static_cast<uchar>(level);
        return image;
    }
    /// White discs on black; the second pair touches.
    QImage discs() const { return discs(grey(160, 60, 0), {25, 80, 115}, 20, 255); }
    /// The grey levels of what the filter makes of in.png.
    std::vector<int> applied(const std::string& filter) {
        apply({"in.png", "-o", "out.png", "-q", "-f", filter});
        return samples(load("out.png"));
    }
    static double mean(const std::vector<int>& levels) {
        return std::accumulate(levels.begin(), levels.end(), 0.0) / levels.size();
    }
    /// Whether check objects with these words; its exit code must agree.
    bool objects(const std::string& filter, const std::string& words) {
        const ProgramResult result = fxrender({"check", "in.png", "-f", filter});
        const bool found = result.out.find(words) != std::string::npos;
        EXPECT_TRUE(!found || result.exitCode == 1);
        return found;
    }
};

TEST_F(FxrenderCheck, ARefusedFrameIsAnErrorAndNoPicture) {
    for (int frame = 0; frame < 6; ++frame) save(grey(40, 1100, 40 * frame), shot(frame));
    const std::string filter = "Degauss:Method=0=1;3|=0,Threshold=4";
    const std::string words = "Degauss: the FFT method cannot take 40 x 1100 pixels";
    for (const char* jobs : {"1", "3"}) {
        const ProgramResult result =
            apply({"shot_####.png", "-o", "out/", "-f", filter, "-j", jobs}, 65);
        EXPECT_THAT(result.err, HasSubstr(words + " "));
        EXPECT_THAT(result.err, HasSubstr("(3 frames, 3 to 5)")) << "said before it begins, too";
        EXPECT_THAT(result.err, HasSubstr("\nfxrender: frame 3: " + words));
        apply({"shot_####.png", "-o", "out/", "-f", filter, "-j", jobs, "--keep-going", "-q"}, 1);
        EXPECT_EQ(QDir(path("out")).entryList(QDir::Files),
                  (QStringList{shot(0), shot(1), shot(2)}));
    }
    const ProgramResult check = fxrender({"check", "shot_####.png", "-f", filter});
    EXPECT_EQ(check.exitCode, 1);
    EXPECT_THAT(check.out, HasSubstr(words));
    expectRefusal({"apply", "shot_0004.png", "-o", "o.png", "-f", "Degauss:Method=FFT,Threshold=4"},
                  65, words);
}

TEST_F(FxrenderCheck, NamesKeysOutsideAllFrames) {
    saveSequence(3);
    const auto said = [&](const std::string& filter) {
        return fxrender({"check", "shot_####.png", "-f", filter}).out;
    };
    EXPECT_THAT(said("Blur and enhance:Blur=0=1;2=3"), HasSubstr("nothing to object to"));
    EXPECT_THAT(
        said("Blur and enhance:Blur=-1=4;0=1;20=3"),
        HasSubstr("Blur and enhance: Blur has keys at frames -1, 20, and the input has frames "
                  "0 to 2"));
    EXPECT_THAT(said("Blur and enhance:Blur=20=3"),
                HasSubstr("Blur has no key inside, but a key at frame 20"));
    const ProgramResult applied =
        apply({"shot_0000.png", "-o", "o.png", "-f", "Blur and enhance:Blur=9=2"});
    EXPECT_THAT(applied.err, HasSubstr("warning: Blur and enhance: Blur has no key inside"));
}

TEST_F(FxrenderCheck, KnowsAThresholdThatLeavesOneColour) {
    save(discs(grey(120, 60, 2), {30, 85}, 15, 10), "in.png");
    for (const char* settings : {"Size=51", "Size=51,Min=0", "Size=51,Min=5"}) {
        const std::string filter = std::string("Adaptive threshold:") + settings;
        const bool white = mean(applied(filter)) > 0.99 * 255;
        EXPECT_EQ(objects(filter, "% white; use a Min value"), white) << settings;
    }
    save(grey(50, 50, 0), "in.png");
    EXPECT_TRUE(objects("Object separator", "its input is all black"));
}

TEST_F(FxrenderCheck, KnowsTheAmountsThatBrighten) {
    save(grey(200, 200, 40), "in.png");
    for (int amount : {1, 2, 3, 4}) {
        const std::string filter = "Degauss:Method=0,Threshold=" + std::to_string(amount);
        const std::string said = apply({"in.png", "-o", "out.png", "-f", filter}).err;
        const bool brighter = mean(samples(load("out.png"))) > 1.1 * 40;
        EXPECT_EQ(objects(filter, "bright"), brighter) << "amount " << amount;
        EXPECT_EQ(said.find("fxrender: warning: ") != std::string::npos, brighter) << said;
    }
}

TEST_F(FxrenderCheck, KnowsWhatTheSeparatorNeeds) {
    save(discs(), "in.png");
    for (int details : {1, 2, 3, 10}) {
        const std::string filter = "Object separator:Det=" + std::to_string(details);
        const bool untouched = applied(filter) == samples(discs());
        EXPECT_EQ(objects(filter, "nothing is separated"), untouched) << filter;
    }
    EXPECT_FALSE(objects("Object separator", "black and white"));
    QImage grey = discs();
    grey.bits()[0] = 7;
    save(grey, "in.png");
    EXPECT_TRUE(objects("Object separator", "less than 0.1 % of the pixels"));
    const ProgramResult chain =
        fxrender({"check", "in.png", "-f", "Adaptive threshold", "-f", "Object separator"});
    EXPECT_EQ(chain.exitCode, 0) << chain.out << "the threshold before it makes two levels";
}

TEST_F(FxrenderCheck, SaysWhichFiltersLeaveGreyWithAlphaAsItIs) {
    ASSERT_TRUE(
        QFile::copy(FX_SOURCE_FOLDER "/fuzz/seeds/picture/png_greyalpha8.png", path("in.png")));
    for (const char* filter : {"Adaptive threshold:Size=11", "Degauss", "Blur and enhance:Blur=9",
                               "Dilate_Erode:Dilate=3", "Open_Close:Dilate=3"})
        EXPECT_EQ(objects(filter, "leaves grey pictures with alpha as they are"),
                  applied(filter) == samples(load("in.png")))
            << filter;
    EXPECT_FALSE(objects("Degauss:Enabled=0", "as they are"));
}

TEST_F(FxrenderCheck, ReportsHowManyObjectsAreSeparated) {
    save(discs(), "in.png");
    const auto reported = [&](const Arguments& filters) {
        apply(Arguments{"in.png", "-o", "out.png", "--report", "r.json", "-q"} +
              each("-f", filters));
        return jsonIn("r.json")["frames"][0];
    };
    EXPECT_EQ(reported({"Object separator:Det=20"})["objects"], 3) << "the two that touch are two";
    EXPECT_FALSE(reported({"Object separator:Type=1"}).contains("objects"))
        << "lines are no objects";
    EXPECT_FALSE(reported({"Object separator", "Blur and enhance"}).contains("objects"));
    EXPECT_TRUE(reported({"Object separator", "Blur and enhance:Enabled=0"}).contains("objects"));
}

TEST_F(FxrenderCheck, NamesFramesAndDamagedFilesAndWritesNothing) {
    saveSequence(3, 1023, 8);
    write(shot(1), "no picture");
    const QStringList before = files();
    const ProgramResult result =
        fxrender({"check", "shot_####.png", "-f", "Degauss:Method=0=1;2|=0,Threshold=4"});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.out, HasSubstr("(frame 2)"));
    EXPECT_THAT(result.out, HasSubstr("shot_0001.png"));
    EXPECT_EQ(files(), before);
}

}  // namespace
