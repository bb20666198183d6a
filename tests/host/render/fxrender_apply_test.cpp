#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <nlohmann/json.hpp>
#include <opencv2/imgproc.hpp>
#include <sstream>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

std::vector<int> samples(const QImage& image, int (*sampleOf)(QRgb)) {
    std::vector<int> result;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) result.push_back(sampleOf(image.pixel(x, y)));
    return result;
}

/// BT.601 luma of full range samples, rounded to nearest.
int luma(QRgb pixel) {
    return static_cast<int>(
        std::floor(0.299 * qRed(pixel) + 0.587 * qGreen(pixel) + 0.114 * qBlue(pixel) + 0.5));
}
int red(QRgb pixel) {
    return qRed(pixel);
}
int green(QRgb pixel) {
    return qGreen(pixel);
}
int blue(QRgb pixel) {
    return qBlue(pixel);
}
int invertedRed(QRgb pixel) {
    return 255 - qRed(pixel);
}

/// A blur of width 2 * size - 1 as the imaging library describes it, on every channel.
QImage blurred(const QImage& image, int size) {
    QImage result = image.convertToFormat(QImage::Format_RGB888);
    cv::Mat pixels(result.height(), result.width(), CV_8UC3, result.bits(),
                   static_cast<std::size_t>(result.bytesPerLine()));
    const cv::Mat source = pixels.clone();
    if (size > 1)
        cv::GaussianBlur(source, pixels, cv::Size(2 * size - 1, 2 * size - 1), 0, 0,
                         cv::BORDER_REPLICATE);
    return result;
}

class FxrenderApply : public FxrenderTest {
protected:
    ProgramResult apply(std::vector<std::string> arguments, int expectedExitCode = 0) {
        arguments.insert(arguments.begin(), "apply");
        const ProgramResult result = fxrender(arguments);
        EXPECT_EQ(result.exitCode, expectedExitCode) << result.err;
        return result;
    }
    json report() const { return json::parse(contents("report.json").toStdString()); }
};

TEST_F(FxrenderApply, SeparatesTheChannelAskedFor) {
    const QImage input = picture(3);
    save(input, "in.png");
    const auto separated = [this](const std::string& settings) {
        apply({"in.png", "-o", "out.png", "-f", "Channel separation" + settings});
        const QImage output = load("out.png");
        EXPECT_TRUE(output.isGrayscale());
        return greyLevels(output);
    };
    EXPECT_EQ(separated(":Channel=1"), samples(input, red));
    EXPECT_EQ(separated(":Channel=3"), samples(input, blue));
    EXPECT_EQ(separated(":Channel=1,Invert=true"), samples(input, invertedRed));

    const std::vector<int> levels = separated("");  // the default is lightness
    const std::vector<int> expected = samples(input, luma);
    for (std::size_t i = 0; i < expected.size(); ++i)
        ASSERT_LE(std::abs(levels[i] - expected[i]), 1) << i;  // fixed point against floating point
}

TEST_F(FxrenderApply, RunsTheChainInOrder) {
    const QImage input = picture(4);
    save(input, "in.png");
    apply({"in.png", "-o", "out.png", "-f", "Blur and enhance:Blur=4", "-f",
           "Channel separation:Channel=2", "-f", "Channel separation:Invert=1"});
    std::vector<int> expected = samples(blurred(input, 4), green);
    for (int& level : expected) level = 255 - level;
    EXPECT_EQ(greyLevels(load("out.png")), expected);
}

TEST_F(FxrenderApply, AFilterSwitchedOffPassesThePictureThrough) {
    save(picture(4), "in.png");
    apply({"in.png", "-o", "out.png", "-f", "Blur and enhance:Blur=9,Enabled=false"});
    EXPECT_EQ(load("out.png").convertToFormat(QImage::Format_RGB888), picture(4));
}

TEST_F(FxrenderApply, AGreyInputStaysGrey) {
    const QImage grey = picture(5).convertToFormat(QImage::Format_Grayscale8);
    save(grey, "in.png");
    apply({"in.png", "-o", "out.png", "-f", "Channel separation:Channel=1,Invert=true"});
    std::vector<int> expected = greyLevels(grey);
    for (int& level : expected) level = 255 - level;
    EXPECT_EQ(greyLevels(load("out.png")), expected);
}

TEST_F(FxrenderApply, KeysMoveAlongASequence) {
    saveSequence(21);
    ASSERT_TRUE(QDir(folder()).mkdir("out"));
    apply({"shot_####.png", "-o", "out/o_%03d.png", "-f", "Blur and enhance:Blur=0=1;20=13",
           "--jobs", "3"});
    for (int frame = 0; frame <= 20; ++frame) {
        const int size = static_cast<int>(std::floor(1 + 12 * frame / 20.0 + 0.5));
        const QString name = QStringLiteral("out/o_%1.png").arg(frame, 3, 10, QChar('0'));
        ASSERT_EQ(load(name).convertToFormat(QImage::Format_RGB888), blurred(picture(frame), size))
            << frame;
    }
}

TEST_F(FxrenderApply, SteppedAndHeldKeysJump) {
    saveSequence(9);
    apply({"shot_%04d.png", "-o", "out/", "-f", "Channel separation:Channel=2=1;5=3"});
    const auto name = [](int frame) { return QStringLiteral("out/shot_000%1.png").arg(frame); };
    for (int frame = 0; frame < 9; ++frame)
        EXPECT_EQ(greyLevels(load(name(frame))), samples(picture(frame), frame < 5 ? red : blue))
            << frame;

    apply({"shot_%04d.png", "-o", "held/", "-f", "Blur and enhance:Blur=0|=3;4=7;8=5"});
    const int sizes[] = {3, 3, 3, 3, 7, 7, 6, 6, 5};  // halves are rounded upwards
    for (int frame = 0; frame < 9; ++frame)
        EXPECT_EQ(load(QStringLiteral("held/shot_000%1.png").arg(frame))
                      .convertToFormat(QImage::Format_RGB888),
                  blurred(picture(frame), sizes[frame]))
            << frame;
}

TEST_F(FxrenderApply, ChoosesFrames) {
    saveSequence(12);
    apply({"shot_####.png", "-o", "out/", "-f", "Channel separation", "--frames", "1,4-10:3"});
    EXPECT_EQ(QDir(path("out")).entryList(QDir::Files),
              (QStringList{"shot_0001.png", "shot_0004.png", "shot_0007.png", "shot_0010.png"}));
}

TEST_F(FxrenderApply, SeveralPicturesAndFoldersInBrackets) {
    ASSERT_TRUE(QDir(folder()).mkdir("[new]"));
    save(picture(1), "[new]/a.png");
    save(picture(2), "[new]/b.png");
    apply({"[new]/b.png", "[new]/a.png", "-o", "two/", "-f", "Channel separation:Channel=1"});
    EXPECT_EQ(greyLevels(load("two/a.png")), samples(picture(1), red));
    EXPECT_EQ(greyLevels(load("two/b.png")), samples(picture(2), red));
    apply({"[new]", "-o", "all/", "-f", "Channel separation:Channel=2"});
    EXPECT_EQ(greyLevels(load("all/b.png")), samples(picture(2), green));
}

TEST_F(FxrenderApply, ResultsDoNotDependOnTheNumberOfJobs) {
    saveSequence(16, 61, 47);
    const std::vector<std::string> filters = {"-f", "Blur and enhance:Blur=0=1;15=13,Enhance=true",
                                              "-f", "Channel separation:Channel=0=1;8=5",
                                              "-f", "Adaptive threshold:Size=0=11;15=51,Min=2"};
    for (const std::string jobs : {"1", "2", "7"}) {
        std::vector<std::string> arguments = {"shot_####.png", "-o", "jobs" + jobs + "/", "-j",
                                              jobs};
        arguments.insert(arguments.end(), filters.begin(), filters.end());
        apply(arguments);
    }
    for (const QString& name : QDir(path("jobs1")).entryList(QDir::Files)) {
        EXPECT_EQ(contents("jobs1/" + name), contents("jobs2/" + name)) << name.toStdString();
        EXPECT_EQ(contents("jobs1/" + name), contents("jobs7/" + name)) << name.toStdString();
    }
}

TEST_F(FxrenderApply, KeepGoingRendersAllButTheBadFrame) {
    saveSequence(6);
    write("shot_0003.png", "This is no picture.\n");
    const ProgramResult result = apply({"shot_####.png", "-o", "out/", "-f", "Channel separation",
                                        "--keep-going", "-j", "2", "--report", "report.json"},
                                       1);
    EXPECT_THAT(result.err, HasSubstr("shot_0003.png"));
    EXPECT_THAT(result.err, HasSubstr("5 of 6 frames done, 1 failed"));
    EXPECT_EQ(QDir(path("out")).entryList(QDir::Files | QDir::Hidden).size(), 5);
    const json written = report();
    EXPECT_EQ(written["exitCode"], 1);
    for (const json& frame : written["frames"]) {
        const bool isBad = frame["frame"] == 3;
        EXPECT_EQ(frame["status"], isBad ? "failed" : "done");
        EXPECT_EQ(frame.contains("error"), isBad);
        EXPECT_GE(frame["seconds"].get<double>(), 0);
        const std::string name = frame["input"];
        EXPECT_EQ(frame["output"], "out/" + name);
    }
}

TEST_F(FxrenderApply, ABadFrameEndsTheRunWithItsError) {
    saveSequence(6);
    write("shot_0002.png", "This is no picture.\n");
    const ProgramResult result = apply({"shot_####.png", "-o", "out/", "-f", "Channel separation",
                                        "-j", "1", "--report", "report.json"},
                                       65);
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_THAT(result.err, HasSubstr("shot_0002.png"));
    std::vector<std::string> statuses;
    const json written = report();
    for (const json& frame : written["frames"]) statuses.push_back(frame["status"]);
    EXPECT_THAT(statuses, testing::ElementsAre("done", "done", "failed", "not started",
                                               "not started", "not started"));
}

TEST_F(FxrenderApply, ADryRunSaysWhatItWouldWriteAndWritesNothing) {
    saveSequence(3);
    const QStringList before = files();
    const ProgramResult result = apply({"shot_####.png", "-o", "new/", "-f", "Channel separation",
                                        "--dry-run", "--report", "report.json"});
    EXPECT_EQ(result.out,
              "shot_0000.png -> new/shot_0000.png\nshot_0001.png -> new/shot_0001.png\n"
              "shot_0002.png -> new/shot_0002.png\n");
    EXPECT_EQ(files(), before);
    EXPECT_FALSE(QDir(path("new")).exists());
}

TEST_F(FxrenderApply, StandardOutputStaysFreeAndProgressObeys) {
    saveSequence(4);
    const auto progress = [this](const std::vector<std::string>& how) {
        std::vector<std::string> arguments = {"shot_####.png", "-o", "out/", "-f",
                                              "Channel separation"};
        arguments.insert(arguments.end(), how.begin(), how.end());
        const ProgramResult result = apply(arguments);
        EXPECT_EQ(result.out, "");
        return result.err;
    };
    EXPECT_THAT(progress({}), HasSubstr("4 frames done"));  // no terminal: plain lines
    EXPECT_THAT(progress({"--progress", "bar"}), HasSubstr("] 4/4"));
    EXPECT_EQ(progress({"--progress", "none"}), "");
    EXPECT_EQ(progress({"--quiet"}), "");

    std::istringstream lines(progress({"--progress", "json"}));
    std::vector<json> events;
    for (std::string line; std::getline(lines, line);) events.push_back(json::parse(line));
    ASSERT_EQ(events.size(), 5u);
    EXPECT_EQ(events[0]["event"], "frame");
    EXPECT_EQ(events[3]["finished"], 4);
    EXPECT_EQ(events[4]["event"], "end");
}

TEST_F(FxrenderApply, AnOutputThatCannotHoldTheResultIsReported) {
    QImage withAlpha = picture(1).convertToFormat(QImage::Format_RGBA8888);
    withAlpha.setPixelColor(0, 0, QColor(1, 2, 3, 4));
    save(withAlpha, "in.png");
    expectRefusal({"apply", "in.png", "-o", "out.jpg", "-f", "Blur and enhance"}, 73, "out.jpg");
    EXPECT_EQ(files(), (QStringList{"in.png"}));
    apply({"in.png", "-o", "out.jpg", "-f", "Channel separation"});  // one channel fits
}

}  // namespace
