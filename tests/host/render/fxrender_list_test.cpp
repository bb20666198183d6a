#include <gmock/gmock.h>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class FxrenderList : public FxrenderTest {
protected:
    json filters() { return json::parse(fxrender({"list", "--json"}).out)["filters"]; }
};

TEST_F(FxrenderList, TellsTypesKindsDefaultsAndRanges) {
    // What a slider or a row of buttons can store, and what becomes of it on the way: as JSON.
    json expected = json::parse(R"({
        "Channel separation/Enabled":
            {"type": "int", "kind": "constant", "default": 1, "min": 0, "max": 1},
        "Channel separation/Channel":
            {"type": "int", "kind": "stepped", "default": 5, "min": 1, "max": 6, "choices":
                [{"value": 1, "text": "R"}, {"value": 2, "text": "G"}, {"value": 3, "text": "B"},
                 {"value": 4, "text": "H"}, {"value": 5, "text": "L"}, {"value": 6, "text": "S"}]},
        "Channel separation/Invert": {"type": "bool", "kind": "stepped", "default": false},
        "Blur and enhance/Blur": {"kind": "interpolated", "min": 1, "max": 13, "label": "Blur"},
        "Blur and enhance/Enhance": {"label": "Enhance", "toolTip": "Enhances an image"},
        "Adaptive threshold/Size": {"min": 11, "max": 101, "label": "Area size"},
        "Adaptive threshold/Min": {"type": "double", "default": 12.8, "min": 0.0, "max": 25.5},
        "Dilate_Erode/Dilate":
            {"min": -13, "max": 13, "lowEnd": "Dilate", "highEnd": "Erode", "label": null},
        "Open_Close/Dilate": {"min": -13, "max": 13, "lowEnd": "Open"},
        "Degauss/Threshold": {"min": 1, "max": 15, "label": "Amount",
                              "whatsThis": "Sharpens an image by deconvolution."},
        "Degauss/Method": {"min": 0, "max": 1, "label": "Method", "choices":
            [{"value": 0, "text": "FFT", "toolTip": "FFT deconvolution",
              "whatsThis": "Uses FFT deconvolution algorithm."},
             {"value": 1, "text": "LR", "toolTip": "Lucy-Richardson deconvolution",
              "whatsThis": "Uses Lucy-Richardson deconvolution algorithm."}]},
        "Object separator/Type": {"min": 0, "max": 1},
        "Object separator/Det": {"min": 1, "max": 100, "label": "Details"}
    })");
    for (const json& filter : filters())
        for (const json& parameter : filter["parameters"]) {
            const std::string name =
                filter["key"].get<std::string>() + "/" + parameter["name"].get<std::string>();
            for (const auto& [fact, value] : expected[name].items())
                EXPECT_EQ(parameter.value(fact, json()), value) << name << ' ' << fact;
            EXPECT_EQ(parameter.contains("min"), parameter["type"] != "bool") << name;
            expected.erase(name);
        }
    EXPECT_TRUE(expected.empty()) << expected;
}

TEST_F(FxrenderList, SaysAllOfItInWords) {
    const std::string table = fxrender({"list"}).out;
    for (const json& filter : filters()) {
        const std::string key = filter["key"];
        EXPECT_THAT(table, HasSubstr(key + "  ("));
        const ProgramResult explained = fxrender({"list", filter["title"]});
        EXPECT_EQ(explained.exitCode, 0) << explained.err;
        EXPECT_THAT(explained.out, testing::StartsWith(key + "  ("));
        for (const json& parameter : filter["parameters"]) {
            EXPECT_THAT(table, HasSubstr("  " + parameter["name"].get<std::string>()));
            for (const char* words : {"name", "label", "highEnd", "whatsThis", "remark"})
                EXPECT_THAT(explained.out, HasSubstr(parameter.value(words, "")));
            for (const json& choice : parameter.value("choices", json::array()))
                EXPECT_THAT(explained.out,
                            testing::ContainsRegex(std::to_string(choice["value"].get<int>()) +
                                                   " +" + choice["text"].get<std::string>()));
        }
        const json alone = json::parse(fxrender({"list", key, "--json"}).out)["filters"];
        EXPECT_EQ(alone, json::array({filter}));
    }
    EXPECT_THAT(table, HasSubstr("11 to 101"));
    EXPECT_THAT(table, HasSubstr("1 R, 2 G, 3 B, 4 H, 5 L, 6 S"));
}

TEST_F(FxrenderList, PagesOfTheDocumentationAreUpToDate) {
    const QDir folder(FX_SOURCE_FOLDER "/docs/filters");
    const QStringList pages = folder.entryList({"*.md"}, QDir::Files);
    EXPECT_EQ(pages.size(), static_cast<int>(filters().size()));
    for (const json& filter : filters()) {
        const std::string key = filter["key"];
        const QString marker =
            QStringLiteral("fxrender list \"%1\" --markdown -->\n").arg(key.c_str());
        int found = 0;
        for (const QString& page : pages) {
            QFile file(folder.filePath(page));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QString text = QString::fromUtf8(file.readAll());
            const auto place = text.indexOf(marker);
            if (place < 0) continue;
            ++found;
            EXPECT_EQ(text.mid(place + marker.size()).toStdString(),
                      fxrender({"list", key, "--markdown"}).out)
                << "docs/filters/update renews it";
        }
        EXPECT_EQ(found, 1) << key;
    }
}

}  // namespace
