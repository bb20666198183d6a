#include <gmock/gmock.h>

#include "tests/host/render/Program.h"

namespace {

using testing::HasSubstr;

class FxrenderSheet : public FxrenderTest {
protected:
    QImage sheet(const Arguments& arguments) {
        run(Arguments{"sheet"} + arguments + Arguments{"-o", "sheet.png"});
        return load("sheet.png");
    }
    /// What apply makes of a file.
    QImage applied(const QString& input, const Arguments& filters) {
        apply(Arguments{input.toStdString(), "-o", "applied.png", "-q"} + each("-f", filters));
        return load("applied.png");
    }
};

TEST_F(FxrenderSheet, ShowsWhatApplyMakesWithEachValueTheOriginalFirst) {
    save(picture(4, 250, 190), "in.png");
    const QImage shown =
        sheet({"in.png", "-f", "Channel separation:Channel=G", "-f",
               "Blur and enhance:Blur=0=9;5=2", "--over", "blur and enhance:blur=2,5-11:3"});
    std::vector<QImage> expected = {load("in.png")};
    for (const char* value : {"2", "5", "8", "11"})
        expected.push_back(applied("in.png", {"Channel separation:Channel=G",
                                              std::string("Blur and enhance:Blur=") + value}));
    const std::vector<QPoint> places = placesOf(expected, shown);
    for (std::size_t i = 1; i < places.size(); ++i)  // as one reads
        EXPECT_TRUE(places[i].y() > places[i - 1].y() ||
                    (places[i].y() == places[i - 1].y() && places[i].x() > places[i - 1].x()));

    // The names of buttons are values, and -f is not needed.
    std::vector<QImage> channels;
    for (const char* value : {"R", "L"})
        channels.push_back(applied("in.png", {std::string("Channel separation:Channel=") + value}));
    placesOf(channels, sheet({"in.png", "--over", "Channel separation:Channel=R,L"}));
}

TEST_F(FxrenderSheet, TwoSweepsMakeAGrid) {
    saveSequence(3, 250, 190);
    const QImage shown =
        sheet({"shot_####.png", "--frame", "2", "-f", "Channel separation", "-f",
               "Open_Close:Dilate=3", "-f", "Open_Close", "--over",
               "Channel separation:Channel=R,B", "--over", "Open_Close#2:Dilate=-2,2"});
    std::vector<QImage> expected;
    for (const char* dilate : {"-2", "2"})
        for (const char* channel : {"R", "B"})
            expected.push_back(applied(
                shot(2), {std::string("Channel separation:Channel=") + channel,
                          "Open_Close:Dilate=3", std::string("Open_Close:Dilate=") + dilate}));
    const std::vector<QPoint> places = placesOf(expected, shown);
    EXPECT_EQ(places[0].y(), places[1].y());
    EXPECT_EQ(places[2].y(), places[3].y());
    EXPECT_EQ(places[0].x(), places[2].x());
    EXPECT_EQ(places[1].x(), places[3].x());
    EXPECT_LT(places[0].x(), places[1].x());
    EXPECT_LT(places[0].y(), places[2].y());
    placesOf({load(shot(2))}, shown);
}

TEST_F(FxrenderSheet, LargePicturesFitAScreenAndSmallOnesShowTheirPixels) {
    save(picture(1, 3000, 500), "large.png");
    EXPECT_LE(sheet({"large.png", "--over", "Blur and enhance:Blur=1-3"}).width(), 1920);
    save(picture(1, 20, 10), "small.png");
    const QImage shown = sheet({"small.png", "--over", "Blur and enhance:Blur=4"});
    const QImage result = applied("small.png", {"Blur and enhance:Blur=4"});
    placesOf({load("small.png").scaled(240, 120), result.scaled(240, 120)}, shown);
}

TEST_F(FxrenderSheet, AFilterThatRefusesOneValueLeavesTheOthers) {
    save(picture(1, 30, 1100), "line.png");  // too high for the Fourier transform
    const ProgramResult result =
        fxrender({"sheet", "line.png", "-o", "sheet.png", "--over", "Degauss:Method=FFT,LR"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.err, HasSubstr("warning: Method = FFT: Degauss: "));
    expectRefusal({"sheet", "line.png", "-o", "n.png", "-q", "--over", "Degauss:Method=FFT"}, 65,
                  "no value gives a picture");
}

TEST_F(FxrenderSheet, SaysWhatCannotBeShown) {
    save(picture(1), "in.png");
    const auto refuse = [this](const Arguments& sweeps, int code, const std::string& message) {
        expectRefusal(
            Arguments{"sheet", "in.png", "-o", "n.png", "-f", "Degauss"} + each("--over", sweeps),
            code, message);
    };
    refuse({"Degauss"}, 2, "KEY:Name=VALUE");
    refuse({"Degauss:Amount=3,99"}, 2, "Threshold=99 is out of range");
    refuse({"Degauss:Amount=9-2"}, 2, "FIRST-LAST:STEP");
    refuse({"Degauss:Amount=1-9:0.001"}, 2, "more than 100 values");
    refuse({"Degauss:Amount=1-15", "Degauss:Enabled=1,0,1,0,1,0,1"}, 2, "105 pictures");
    refuse({"Degauss:Amount=1", "Degauss:Threshold=2"}, 2, "the same parameter");
    refuse({"Degauss:Amount=1", "Degauss:Method=1", "Degauss:Enabled=1"}, 2, "rows and columns");
    refuse({"Degauss:Amount=0=1;5=2"}, 2, "without keys");
    refuse({"Degauss#2:Amount=1"}, 2, "the chain has 1");
    refuse({"Open_Close:Dilate=1"}, 2, "add it with -f");
    expectRefusal({"sheet", "in.png", "-o", "in.png", "--over", "Degauss:Amount=1"}, 73, "input");
    expectRefusal({"sheet", "in.png", "-o", "n.png", "--frame", "1", "--over", "Degauss:Amount=1"},
                  2, "its only frame is 0");
    EXPECT_EQ(files(), QStringList{"in.png"});
}

}  // namespace
