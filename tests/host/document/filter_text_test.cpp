#include "host/document/FilterText.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/document/FilterError.h"

namespace {

/// The parsed text written out in a form without ambiguities: KEY{Name:VALUE}{Name@FRAME:VALUE@...}
std::string parsed(const QString& text) {
    const document::FilterText filter = document::parseFilterText(text);
    QString out = filter.key;
    for (const document::ParameterText& parameter : filter.parameters) {
        out += '{' + parameter.name;
        for (const document::ValueText& value : parameter.values) {
            if (parameter.animated) out += QStringLiteral("@%1").arg(value.frame);
            out += (value.held ? '|' : ':') + value.text;
        }
        out += '}';
    }
    return out.toStdString();
}

TEST(FilterText, IsTakenApart) {
    EXPECT_EQ(parsed("Blur and enhance"), "Blur and enhance");
    EXPECT_EQ(parsed("Degauss:Threshold=4,Method=0"), "Degauss{Threshold:4}{Method:0}");
    EXPECT_EQ(parsed(" Degauss : Threshold = 4 , Method = 0 "), "Degauss{Threshold:4}{Method:0}");
    EXPECT_EQ(parsed("F:Min=-12.5e0,On=true"), "F{Min:-12.5e0}{On:true}");
}

TEST(FilterText, KeysBelongToFramesInAscendingOrder) {
    EXPECT_EQ(parsed("Blur and enhance:Blur=0=1;20=13"), "Blur and enhance{Blur@0:1@20:13}");
    EXPECT_EQ(parsed("F:A=0=1;20|=5;40=9,B=2"), "F{A@0:1@20|5@40:9}{B:2}");
    EXPECT_EQ(parsed("F:A= 40 = 9 ; -3 |= true "), "F{A@-3|true@40:9}");
    EXPECT_EQ(parsed("F:A=7=1"), "F{A@7:1}");
}

struct Row {
    const char* text;
    const char* complaint;
};

class WrongFilterText : public testing::TestWithParam<Row> {};

TEST_P(WrongFilterText, IsRefusedOnOneLineThatNamesThePiece) {
    try {
        const std::string result = parsed(GetParam().text);
        FAIL() << "accepted as " << result;
    } catch (const document::FilterError& error) {
        EXPECT_THAT(error.what(), testing::HasSubstr(GetParam().complaint));
        EXPECT_THAT(error.what(), testing::Not(testing::HasSubstr("\n")));
    }
}

INSTANTIATE_TEST_SUITE_P(
    Rows, WrongFilterText,
    testing::Values(Row{"", "names no filter"}, Row{":Blur=1", "names no filter"},
                    Row{"F:", "name is missing"}, Row{"F:A=1,", "name is missing"},
                    Row{"F:=3", "name is missing"}, Row{"F:A", "F: A: no value"},
                    Row{"F:A=", "F: A: no value"}, Row{"F:A=1,A=2", "A is given twice"},
                    Row{"F:A=1;2", "\"1\" is no key"}, Row{"F:A=0=1;", "\"\" is no key"},
                    Row{"F:A=x=1", "\"x\" is no frame number"},
                    Row{"F:A=1.5=1", "\"1.5\" is no frame number"},
                    Row{"F:A=99999999999999999999=1", "is no frame number"},
                    Row{"F:A=0=1;5=", "no value after \"5=\""},
                    Row{"F:A=0=1;0=2", "frame 0 has two values"}));

}  // namespace
