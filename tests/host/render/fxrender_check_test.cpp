#include <gmock/gmock.h>

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
    /// White discs on black; the second pair touches.
    QImage discs() const {
        QImage image = grey(160, 60, 0);
        for (auto [cx, cy] : {std::pair{25, 30}, {80, 30}, {115, 30}})
            for (int y = 0; y < 60; ++y)
                for (int x = 0; x < 160; ++x)
                    if ((x - cx) * (x - cx) + (y - cy) * (y - cy) <= 20 * 20)
                        image.bits()[y * image.bytesPerLine() + x] = 255;
        return image;
    }
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

TEST_F(FxrenderCheck, KnowsTheSizesThatTheTransformRefuses) {
    const std::pair<int, int> sizes[] = {
        {1022, 40}, {1023, 40}, {2046, 20}, {2047, 20}, {40, 1023}};
    for (const auto& [width, height] : sizes) {
        save(grey(width, height, 120), "in.png");
        const std::string filter = "Degauss:Method=0,Threshold=4";
        const bool black = mean(applied(filter)) == 0;
        EXPECT_EQ(objects(filter, "cannot take"), black) << width << " x " << height;
    }
    EXPECT_FALSE(objects("Degauss:Method=1", "cannot take"));
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

TEST_F(FxrenderCheck, ReportsHowManyObjectsAreSeparated) {
    save(discs(), "in.png");
    const auto reported = [&](const Arguments& filters) {
        Arguments arguments = {"in.png", "-o", "out.png", "--report", "r.json", "-q"};
        for (const std::string& filter : filters) arguments.insert(arguments.end(), {"-f", filter});
        apply(arguments);
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
