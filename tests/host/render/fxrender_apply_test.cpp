#include <gmock/gmock.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <opencv2/imgproc.hpp>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::ElementsAre;
using testing::HasSubstr;

int invertedRed(QRgb pixel) {
    return 255 - qRed(pixel);
}
int invertedGreen(QRgb pixel) {
    return 255 - qGreen(pixel);
}
/// BT.601 luma of full range samples, rounded to nearest.
int luma(QRgb pixel) {
    return static_cast<int>(
        std::floor(0.299 * qRed(pixel) + 0.587 * qGreen(pixel) + 0.114 * qBlue(pixel) + 0.5));
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
    /// What the filters make of the picture.
    QImage applied(const QImage& image, const Arguments& filters) {
        save(image, "in.png");
        apply(Arguments{"in.png", "-o", "out.png"} + each("-f", filters));
        return load("out.png");
    }
    QImage colours(const QString& name) const {
        return load(name).convertToFormat(QImage::Format_RGB888);
    }
};

TEST_F(FxrenderApply, SeparatesTheChannelAskedFor) {
    const QImage input = picture(3);
    const QImage grey = input.convertToFormat(QImage::Format_Grayscale8);
    const struct {
        const QImage& input;
        const char* settings;
        SampleOf expected;
        int tolerance;
    } rows[] = {
        {input, ":Channel=1", qRed, 0},
        {input, ":Channel=3", qBlue, 0},
        {input, ":Channel=1,Invert=true", invertedRed, 0},
        {input, "", luma, 1},  // the default; fixed point against floating point
        {grey, ":Channel=1,Invert=true", invertedRed, 0},
    };
    for (const auto& row : rows) {
        const QImage output =
            applied(row.input, {std::string("Channel separation") + row.settings});
        EXPECT_TRUE(output.isGrayscale());
        const std::vector<int> levels = samples(output);
        const std::vector<int> expected = samples(row.input, row.expected);
        ASSERT_EQ(levels.size(), expected.size());
        for (std::size_t i = 0; i < expected.size(); ++i)
            ASSERT_LE(std::abs(levels[i] - expected[i]), row.tolerance) << row.settings << i;
    }
}

TEST_F(FxrenderApply, RunsTheChainInOrderWithoutWhatIsSwitchedOff) {
    const QImage output = applied(
        picture(4), {"Blur and enhance:Blur=4", "Channel separation:Channel=2",
                     "Blur and enhance:Blur=9,Enabled=false", "Channel separation:Invert=1"});
    EXPECT_EQ(samples(output), samples(blurred(picture(4), 4), invertedGreen));
}

TEST_F(FxrenderApply, KeysRunOrJumpAlongASequence) {
    saveSequence(9);
    const struct {
        const char* keys;
        std::vector<int> sizes;  // halves are rounded upwards
    } rows[] = {{"0=1;8=13", {1, 3, 4, 6, 7, 9, 10, 12, 13}},
                {"0|=3;4=7;8=5", {3, 3, 3, 3, 7, 7, 6, 6, 5}}};
    for (const auto& row : rows) {
        apply({"shot_####.png", "-o", "o_%03d.png", "-f",
               std::string("Blur and enhance:Blur=") + row.keys, "--jobs", "3"});
        for (int frame = 0; frame < 9; ++frame)
            EXPECT_EQ(colours(QStringLiteral("o_00%1.png").arg(frame)),
                      blurred(picture(frame), row.sizes[static_cast<std::size_t>(frame)]))
                << row.keys << " at " << frame;
    }
}

TEST_F(FxrenderApply, ADryRunSaysWhatItWouldWriteAndWritesNothing) {
    saveSequence(3);
    const QStringList before = files();
    const ProgramResult result = apply({"shot_####.png", "-o", "new/", "-f", "Channel separation",
                                        "--dry-run", "--report", "report.json"});
    EXPECT_THAT(result.out,
                testing::StartsWith(
                    "shot_0000.png -> new/shot_0000.png\nshot_0001.png -> new/shot_0001.png\n"
                    "shot_0002.png -> new/shot_0002.png\n3 frames to render\nmemory: about "));
    EXPECT_THAT(result.out, testing::ContainsRegex("disk: at most about 2.5 KiB, .* are free\n"));
    EXPECT_EQ(files(), before);
    EXPECT_FALSE(QDir(path("new")).exists());
}

TEST_F(FxrenderApply, StandardOutputStaysFreeAndProgressObeys) {
    saveSequence(4);
    const auto progress = [this](const Arguments& how) {
        const ProgramResult result =
            apply(Arguments{"shot_####.png", "-o", "out/", "-f", "Channel separation"} + how);
        EXPECT_EQ(result.out, "");
        return result.err;
    };
    EXPECT_THAT(progress({}), HasSubstr("4 frames done"));  // no terminal: plain lines
    EXPECT_THAT(progress({"--progress", "bar"}), HasSubstr("] 4/4"));
    EXPECT_EQ(progress({"--progress", "none"}), "");
    EXPECT_EQ(progress({"--quiet"}), "");

    EXPECT_EQ(progress({"--frames", "2"}).find("1 frame done"), std::strlen("fxrender: "));
}

TEST_F(FxrenderApply, ABadFrameEndsTheRunUnlessItKeepsGoingAndEventsTellItAsJson) {
    saveSequence(6);
    write(shot(3), "no\tpicture");
    const ProgramResult ended =
        apply({"shot_####.png", "-o", "out/", "-j", "1", "-f", "Object separator", "--progress",
               "json", "--report", "report.json"},
              65);
    std::vector<json> events;
    for (const std::string& line : linesOf(ended.err)) events.push_back(json::parse(line));
    ASSERT_EQ(events.size(), 6u);
    EXPECT_EQ(events[0]["event"], "warning");
    EXPECT_THAT(events[0]["message"], HasSubstr("black and white"));
    // Files are still being written while a later frame fails: frames end in any order.
    json failed;
    for (int i = 1; i < 5; ++i) {
        EXPECT_EQ(events[i]["event"], "frame");
        EXPECT_EQ(events[i]["finished"].get<int>() + events[i]["failed"].get<int>(), i);
        if (events[i]["status"] == "failed") failed = events[i];
    }
    EXPECT_EQ(events[5]["event"], "error");
    EXPECT_EQ(events[5]["exitCode"], 65);
    EXPECT_THAT(events[5]["message"], HasSubstr("shot_0003.png"));
    EXPECT_EQ(events[5]["message"], failed["error"]);
    std::vector<std::string> statuses;
    json report = jsonIn("report.json");
    for (const json& frame : report["frames"]) statuses.push_back(frame["status"]);
    EXPECT_THAT(statuses,
                ElementsAre("done", "done", "done", "failed", "not started", "not started"));

    const ProgramResult went = apply({"shot_####.png", "-o", "all/", "-f", "Channel separation",
                                      "--keep-going", "-j", "2", "--report", "report.json"},
                                     1);
    EXPECT_THAT(went.err, HasSubstr("shot_0003.png"));
    EXPECT_THAT(went.err, HasSubstr("5 of 6 frames done, 1 failed"));
    EXPECT_EQ(files().filter("all/").size(), 5);
    report = jsonIn("report.json");
    EXPECT_EQ(report["exitCode"], 1);
    for (const json& frame : report["frames"]) {
        const bool isBad = frame["frame"] == 3;
        EXPECT_EQ(frame["status"], isBad ? "failed" : "done");
        EXPECT_EQ(frame.contains("error"), isBad);
        EXPECT_GE(frame["milliseconds"].get<int>(), 0);
        EXPECT_EQ(frame.contains("pixels"), !isBad);
        EXPECT_EQ(frame["output"], "all/" + frame["input"].get<std::string>());
    }
}

TEST_F(FxrenderApply, ReportsGoWhereTheyAreWantedAndNowhereElse) {
    saveSequence(2);
    const auto report = [this](const std::string& name) {
        return apply({"shot_####.png", "-o", "new/", "-q", "-f", "Channel separation", "--report",
                      name})
            .out;
    };
    EXPECT_EQ(report("new/report.json"), "") << "into the folder that the run makes";
    EXPECT_EQ(jsonIn("new/report.json")["frames"].size(), 2u);
    report("new/report.json");  // over an older one
    EXPECT_EQ(json::parse(report("-"))["frames"][1]["output"], "new/shot_0001.png");
    write("empty.json", "");
    report("empty.json");
    EXPECT_EQ(jsonIn("empty.json")["exitCode"], 0);
    report("r\xff.json");
    EXPECT_TRUE(std::filesystem::remove(folder().toStdString() + "/r\xff.json"));
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
