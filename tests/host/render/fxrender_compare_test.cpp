#include <gmock/gmock.h>

#include <opencv2/core.hpp>
#include <regex>

#include "tests/host/render/Program.h"

// How differences are counted is held against a count of its own in tests/host/imaging.

namespace {

using nlohmann::json;
using testing::HasSubstr;

class FxrenderCompare : public FxrenderTest {
protected:
    ProgramResult compare(const Arguments& arguments, int expectedExitCode) {
        return run(Arguments{"compare"} + arguments, expectedExitCode);
    }
    static cv::Mat matOf(QImage& image) {
        return cv::Mat(image.height(), image.width(), CV_8UC3, image.bits(),
                       static_cast<std::size_t>(image.bytesPerLine()));
    }
};

TEST_F(FxrenderCompare, NumbersAreThoseOfAnotherLibraryAndTheSheetShowsThePictures) {
    QImage a = picture(1, 260, 200), b = a;
    for (int x = 0; x < 50; ++x) b.setPixelColor(x, x, Qt::white);
    save(a, "a.png");
    save(b, "b.png");
    const ProgramResult result = compare({"a.png", "b.png", "-o", "d.png", "--gain", "3"}, 1);
    char psnr[32];
    std::snprintf(psnr, sizeof psnr, " %.2f dB ", cv::PSNR(matOf(a), matOf(b)));
    EXPECT_THAT(result.out, HasSubstr(psnr));
    EXPECT_THAT(result.out, HasSubstr(" 0.10 %         50 "));

    const json entry = json::parse(compare({"a.png", "b.png", "--json"}, 1).out)["frames"][0];
    EXPECT_NEAR(entry["psnr"].get<double>(), cv::PSNR(matOf(a), matOf(b)), 1e-6);
    cv::Mat difference, planes[3];
    cv::absdiff(matOf(a), matOf(b), difference);
    cv::split(difference, planes);
    for (int c = 0; c < 3; ++c) {
        double largest = 0;
        cv::minMaxLoc(planes[c], nullptr, &largest);
        EXPECT_EQ(entry["largestDifference"][std::string(1, "RGB"[c])], largest);
    }

    difference *= 3;
    const QImage amplified(difference.data, 260, 200, static_cast<int>(difference.step),
                           QImage::Format_RGB888);
    const QImage sheet = load("d.png");
    const std::vector<QPoint> places = placesOf({a, b, amplified}, sheet);
    for (int i = 1; i < 3; ++i) {
        EXPECT_GE(places[i].x(), places[i - 1].x() + 260);
        EXPECT_EQ(places[i].y(), places[0].y());
    }
}

TEST_F(FxrenderCompare, SequencesAreComparedFrameByFrame) {
    saveSequence(3);
    for (const char* name : {"x", "y"}) QDir(folder()).mkdir(name);
    for (int frame = 0; frame < 3; ++frame) {
        QFile::copy(path(shot(frame)), path("x/" + shot(frame)));
        save(picture(frame == 1 ? 7 : frame), "y/" + shot(frame));
    }
    compare({"x", "shot_####.png"}, 0);
    const ProgramResult result = compare({"shot_####.png", "y", "-o", "d/"}, 1);
    EXPECT_TRUE(std::regex_search(result.out, std::regex("\n +0 +inf dB +0.00 % .*: y/shot_0000")))
        << result.out;
    EXPECT_TRUE(std::regex_search(result.out, std::regex("\n +1 +[0-9.]+ dB .*: y/shot_0001")));
    EXPECT_EQ(files().filter("d/").size(), 3);
    EXPECT_THAT(compare({"x", "y", "--frames", "2"}, 0).out, testing::Not(HasSubstr("shot_0001")));

    expectRefusal({"compare", "x", shot(0).toStdString()}, 65, "x has 3 frames and shot_0000.png");
    save(picture(1, 36, 23), "small.png");
    expectRefusal({"compare", shot(0).toStdString(), "small.png", "-o", "n.png"}, 65,
                  "is 37 x 23 (R, G, B) and small.png is 36 x 23 (R, G, B)");
    apply({shot(0).toStdString(), "-o", "grey.png", "-q", "-f", "Channel separation"});
    expectRefusal({"compare", shot(0).toStdString(), "grey.png"}, 65, "(grey)");
    expectRefusal({"compare", "small.png", "grey.png", "-o", "grey.png"}, 2, "an input");
    expectRefusal({"compare", "small.png", "none.png"}, 66, "none.png");
    EXPECT_FALSE(files().contains("n.png"));
}

}  // namespace
