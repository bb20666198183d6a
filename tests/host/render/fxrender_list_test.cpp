#include <gmock/gmock.h>

#include <nlohmann/json.hpp>

#include "tests/host/render/Program.h"

namespace {

using nlohmann::json;
using testing::HasSubstr;

class FxrenderList : public FxrenderTest {
protected:
    /// The declaration of a parameter, as `list --json` gives it.
    json parameter(const std::string& filter, const std::string& name) {
        if (m_list.is_null()) m_list = json::parse(fxrender({"list", "--json"}).out);
        for (const json& entry : m_list["filters"])
            if (entry["key"] == filter)
                for (const json& declared : entry["parameters"])
                    if (declared["name"] == name) return declared;
        ADD_FAILURE() << filter << " has no " << name;
        return json();
    }

private:
    json m_list;
};

TEST_F(FxrenderList, TellsTypesKindsAndDefaults) {
    EXPECT_EQ(parameter("Channel separation", "Channel"), (json{{"name", "Channel"},
                                                                {"type", "int"},
                                                                {"kind", "stepped"},
                                                                {"default", 5},
                                                                {"min", 1},
                                                                {"max", 6}}));
    EXPECT_EQ(
        parameter("Channel separation", "Invert"),
        (json{{"name", "Invert"}, {"type", "bool"}, {"kind", "stepped"}, {"default", false}}));
    EXPECT_EQ(parameter("Channel separation", "Enabled"), (json{{"name", "Enabled"},
                                                                {"type", "int"},
                                                                {"kind", "constant"},
                                                                {"default", 1},
                                                                {"min", 0},
                                                                {"max", 1}}));
}

TEST_F(FxrenderList, FindsTheRangesOfSlidersAndButtons) {
    const auto expectRange = [this](const char* filter, const char* name, double min, double max) {
        const json declared = parameter(filter, name);
        EXPECT_EQ(declared.value("min", -999.0), min) << filter << ' ' << name;
        EXPECT_EQ(declared.value("max", -999.0), max) << filter << ' ' << name;
    };
    expectRange("Blur and enhance", "Blur", 1, 13);
    expectRange("Adaptive threshold", "Size", 11, 101);  // stored as 2 x slider + 1
    expectRange("Adaptive threshold", "Min", 0, 25.5);   // stored as slider / 10
    expectRange("Dilate_Erode", "Dilate", -13, 13);
    expectRange("Open_Close", "Dilate", -13, 13);
    expectRange("Degauss", "Threshold", 1, 15);
    expectRange("Degauss", "Method", 0, 1);         // two buttons
    expectRange("Object separator", "Type", 0, 1);  // two buttons, of which one bit is stored
    expectRange("Object separator", "Det", 1, 100);
}

TEST_F(FxrenderList, TableNamesEveryFilterAndParameter) {
    const ProgramResult table = fxrender({"list"});
    EXPECT_EQ(table.exitCode, 0);
    EXPECT_EQ(table.err, "");
    const json list = json::parse(fxrender({"list", "--json"}).out);
    ASSERT_EQ(list["filters"].size(), 7u);
    for (const json& filter : list["filters"]) {
        EXPECT_THAT(table.out, HasSubstr(filter["key"].get<std::string>()));
        for (const json& declared : filter["parameters"])
            EXPECT_THAT(table.out, HasSubstr("  " + declared["name"].get<std::string>()));
    }
    EXPECT_THAT(table.out, HasSubstr("11 to 101"));
}

}  // namespace
