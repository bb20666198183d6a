#include <gmock/gmock.h>

#include <QXmlStreamReader>
#include <map>

#include "tests/host/render/Program.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// What an SVG drawing shows.
struct Drawing {
    std::vector<QPointF> dots;
    std::map<double, double> counts;  ///< heights of the numbers beside the axis, by number
    QStringList texts;
    int lines = 0;  ///< pieces of the curve
};

class FxrenderPlot : public FxrenderTest {
protected:
    /// A frame with so many objects.
    void saveDots(int frame, int objects) {
        QImage image(400, 9, QImage::Format_Grayscale8);
        image.fill(0);
        for (int i = 0; i < objects; ++i) image.scanLine(4)[2 * i] = 255;
        save(image, shot(frame));
    }
    ProgramResult count(const Arguments& others, int code = 0) {
        return run(Arguments{"count", "shot_####.png", "-f", "Channel separation:Channel=1", "-q",
                             "--plot", "p.svg"} +
                       others,
                   code);
    }
    Drawing drawing(const QString& name) {
        Drawing found;
        QXmlStreamReader xml(QByteArray::fromStdString(contents(name)));
        while (!xml.atEnd()) {
            if (xml.readNext() != QXmlStreamReader::StartElement) continue;
            const QXmlStreamAttributes attributes = xml.attributes();
            const auto number = [&](const char* attribute) {
                return attributes.value(QLatin1String(attribute)).toDouble();
            };
            if (xml.name() == QLatin1String("circle")) {
                found.dots.push_back({number("cx"), number("cy")});
            } else if (xml.name() == QLatin1String("path")) {
                found.lines = attributes.value(QLatin1String("d")).toString().count('M');
            } else if (xml.name() == QLatin1String("text")) {
                const bool isCount = attributes.value("text-anchor") == QLatin1String("end");
                const double y = number("y");
                found.texts.append(xml.readElementText());
                if (isCount) found.counts[found.texts.last().toDouble()] = y;
            }
        }
        EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
        return found;
    }
};

TEST_F(FxrenderPlot, DotsStandAtTheirNumbersBetweenRoundTicks) {
    const std::vector<int> objects = {3, 0, 17, 120, 60};
    for (int frame = 0; frame < 5; ++frame) saveDots(frame, objects[frame]);
    count({});
    const Drawing plot = drawing("p.svg");
    std::vector<double> ticks;
    for (const auto& [tick, y] : plot.counts) ticks.push_back(tick);
    EXPECT_THAT(ticks, ElementsAre(0, 20, 40, 60, 80, 100, 120));
    ASSERT_EQ(plot.dots.size(), 5u);
    const double unit = (plot.counts.at(0) - plot.counts.at(120)) / 120;
    for (int frame = 0; frame < 5; ++frame) {
        EXPECT_NEAR((plot.dots[0].y() - plot.dots[frame].y()) / unit, objects[frame] - 3, 0.1);
        EXPECT_NEAR(plot.dots[frame].x() - plot.dots[0].x(),
                    frame * (plot.dots[1].x() - plot.dots[0].x()), 0.5);
    }
    EXPECT_EQ(plot.lines, 1);
    for (const char* text : {"Objects in shot_####.png", "5 frames, 0 to 120 objects, mean 40.0",
                             "number of objects", "frame number"})
        EXPECT_TRUE(plot.texts.contains(text)) << text;

    // A frame that failed is a gap.
    write(shot(1), "no picture");
    count({"--keep-going"}, 1);
    const Drawing gap = drawing("p.svg");
    EXPECT_EQ(gap.dots.size(), 4u);
    EXPECT_EQ(gap.lines, 2);
    EXPECT_TRUE(gap.texts.filter("1 without a number").size() == 1)
        << gap.texts.join("; ").toStdString();
}

TEST_F(FxrenderPlot, OneFrameNoObjectsAndApply) {
    saveDots(0, 0);
    count({});
    const Drawing empty = drawing("p.svg");
    EXPECT_TRUE(empty.texts.contains("frame 0: 0 objects"));
    EXPECT_THAT(empty.counts, testing::SizeIs(2)) << "0 and 1";
    ASSERT_EQ(empty.dots.size(), 1u);
    EXPECT_EQ(empty.dots[0].y() + 4.5, empty.counts.at(0));

    saveDots(1, 6);
    const Arguments chain = {"-q", "-f", "Channel separation:Channel=1", "-f", "Object separator"};
    apply(Arguments{"shot_####.png", "-o", "out/", "--plot", "out/q.svg"} + chain);
    count({"-f", "Object separator"});
    EXPECT_EQ(contents("out/q.svg"), contents("p.svg"));

    QFile::remove(path("p.svg"));  // a shard without frames
    count({"--shard", "3/3"});
    EXPECT_TRUE(files().filter("p.svg").isEmpty());
}

TEST_F(FxrenderPlot, ReplacesNothingButAPlot) {
    saveDots(0, 2);
    const auto refuse = [this](const char* plot, int code, const char* message) {
        expectRefusal({"count", shot(0).toStdString(), "-f", "Channel separation", "--plot", plot},
                      code, message);
    };
    write("mine.svg", "<svg/>");
    refuse("mine.svg", 73, "was not made by --plot");
    refuse("plot.png", 2, ".svg");
    refuse("-", 2, ".svg");
    refuse("none/plot.svg", 73, "none/plot.svg");
    expectRefusal(
        {"apply", shot(0).toStdString(), "-o", "n.png", "--plot", "n.svg", "-f", "Degauss"}, 2,
        "shows no objects");
    EXPECT_EQ(files(), (QStringList{"mine.svg", shot(0)}));
}

}  // namespace
