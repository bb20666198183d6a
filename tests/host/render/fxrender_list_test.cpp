#include <gmock/gmock.h>

#include <map>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class FxrenderList : public FxrenderTest {
protected:
    json filters() { return json::parse(fxrender({"list", "--json"}).out)["filters"]; }
};

TEST_F(FxrenderList, TellsTypesKindsDefaultsAndRanges) {
    // What a slider or a row of buttons can store, and what becomes of it on the way.
    std::map<std::string, json> expected = {
        {"Channel separation/Enabled",
         {{"type", "int"}, {"kind", "constant"}, {"default", 1}, {"min", 0}, {"max", 1}}},
        {"Channel separation/Channel",
         {{"type", "int"}, {"kind", "stepped"}, {"default", 5}, {"min", 1}, {"max", 6}}},
        {"Channel separation/Invert", {{"type", "bool"}, {"kind", "stepped"}, {"default", false}}},
        {"Blur and enhance/Blur", {{"kind", "interpolated"}, {"min", 1}, {"max", 13}}},
        {"Adaptive threshold/Size", {{"min", 11}, {"max", 101}}},  // stored as 2 x slider + 1
        {"Adaptive threshold/Min",                                 // stored as slider / 10
         {{"type", "double"}, {"default", 12.8}, {"min", 0.0}, {"max", 25.5}}},
        {"Dilate_Erode/Dilate", {{"min", -13}, {"max", 13}}},
        {"Open_Close/Dilate", {{"min", -13}, {"max", 13}}},
        {"Degauss/Threshold", {{"min", 1}, {"max", 15}}},
        {"Degauss/Method", {{"min", 0}, {"max", 1}}},         // two buttons
        {"Object separator/Type", {{"min", 0}, {"max", 1}}},  // of which one bit is stored
        {"Object separator/Det", {{"min", 1}, {"max", 100}}},
    };
    for (const json& filter : filters())
        for (const json& parameter : filter["parameters"]) {
            const std::string name =
                filter["key"].get<std::string>() + "/" + parameter["name"].get<std::string>();
            for (const auto& [fact, value] : expected[name].items())
                EXPECT_EQ(parameter.value(fact, json()), value) << name << ' ' << fact;
            EXPECT_EQ(parameter.contains("min"), parameter["type"] != "bool") << name;
            expected.erase(name);
        }
    EXPECT_THAT(expected, testing::IsEmpty());
}

TEST_F(FxrenderList, TableNamesEveryFilterAndParameter) {
    const ProgramResult table = fxrender({"list"});
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_EQ(table.err, "");
    const json listed = filters();
    ASSERT_EQ(listed.size(), 7u);
    for (const json& filter : listed) {
        EXPECT_THAT(table.out, HasSubstr(filter["key"].get<std::string>()));
        for (const json& parameter : filter["parameters"])
            EXPECT_THAT(table.out, HasSubstr("  " + parameter["name"].get<std::string>()));
    }
    EXPECT_THAT(table.out, HasSubstr("11 to 101"));
}

}  // namespace
