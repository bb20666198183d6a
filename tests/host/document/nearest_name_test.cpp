#include "host/document/NearestName.h"

#include <gtest/gtest.h>

namespace {

const QStringList kFilters = {"Channel separation", "Blur and enhance", "Dilate_Erode",
                              "Open_Close"};

struct Row {
    const char* typed;
    const char* nearest;  ///< empty: none is near enough
};

class NearestName : public testing::TestWithParam<Row> {};

TEST_P(NearestName, IsWhatWasMeant) {
    EXPECT_EQ(document::nearestName(GetParam().typed, kFilters), QString(GetParam().nearest));
}

INSTANTIATE_TEST_SUITE_P(
    Slips, NearestName,
    testing::Values(Row{"Blur and enhance", "Blur and enhance"},  // nothing wrong
                    Row{"blur AND enhance", "Blur and enhance"},  // case alone costs nothing
                    Row{"Blur and enhence", "Blur and enhance"},  // replaced
                    Row{"Blur and enhnace", "Blur and enhance"},  // swapped
                    Row{"Blr and enhace", "Blur and enhance"},    // left out
                    Row{"Dilate-Erode", "Dilate_Erode"},          //
                    Row{"Open__Closed", "Open_Close"},            // too much
                    Row{"Sharpen", ""}, Row{"", ""}));

TEST(NearestNameTies, GoToTheFirst) {
    EXPECT_EQ(document::nearestName("Mon", {"Man", "Men"}), QString("Man"));
    EXPECT_TRUE(document::nearestName("Man", {}).isNull());
}

TEST(NearestNameSize, AMegabyteOfTypingIsAnsweredAtOnce) {
    EXPECT_TRUE(document::nearestName(QString(1000000, 'x'), kFilters).isNull());
}

TEST(QuotedList, SeparatesNames) {
    EXPECT_EQ(document::quotedList({"a b", "c"}), QString("\"a b\", \"c\""));
    EXPECT_EQ(document::quotedList({}), QString());
}

}  // namespace
