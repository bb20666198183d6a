#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/media/FrameTemplate.h"
#include "host/media/file_names.h"

using namespace media;

namespace {

TEST(FrameTemplate, PutsNumbersInAndTakesThemOut) {
    const struct {
        const char* pattern;
        std::int64_t frame;
        const char* path;
    } good[] = {
        {"shot_####.png", 7, "shot_0007.png"},
        {"shot_%04d.png", 7, "shot_0007.png"},
        {"shot_####.png", 12345, "shot_12345.png"},
        {"d/#.png", 10, "d/10.png"},
        {"%d", 0, "0"},
        {"a#b##.png", 3, "a#b03.png"},
        {"a#_%02d.png", 3, "a#_03.png"},
        {"50%%_%03d.png", 3, "50%_003.png"},
        {"x%04d", -1, "x-001"},
        {"d##/%%d/a_#", 5, "d##/%%d/a_5"},
        {"##.png", 999999999999999999, "999999999999999999.png"},
    };
    for (const auto& [pattern, frame, path] : good) {
        const auto parsed = FrameTemplate::parse(pattern);
        ASSERT_TRUE(parsed) << pattern;
        EXPECT_EQ(parsed->path(frame), path);
        EXPECT_EQ(parsed->frameOf(fileNameOf(path)), frame);
    }
    for (const char* none : {"a.png", "d##/a.png", "d%d/a.png", "50%.png", "%4d.png", "%00d.png",
                             "%s.png", "%%d.png", "%019d.png", "%0999999999999d.png", "", "####/"})
        EXPECT_FALSE(FrameTemplate::parse(none)) << none;
    const auto four = FrameTemplate::parse("a####.b");
    for (const char* other : {"a7.b", "a00007.b", "a.b", "a0007.bb", "a 007.b", "a+007.b",
                              "a0x07.b", "a99999999999999999999.b", "a0007", "A0007.b"})
        EXPECT_FALSE(four->frameOf(other)) << other;
}

TEST(FileNames, SortNaturallyAndAreShownOnOneLine) {
    const std::vector<std::string> order = {
        "", "a", "a01", "a1", "a2", "a2b", "a10", "a10b", "a99999999999999999999", "b", "ä"};
    for (std::size_t i = 0; i < order.size(); ++i)
        for (std::size_t j = 0; j < order.size(); ++j)
            EXPECT_EQ(naturalLess(order[i], order[j]), i < j) << order[i] << ' ' << order[j];
    EXPECT_EQ(shown("grün 日 a\nb\xff\xc3(\xed\xa0\x80\x7f"),
              "grün 日 a\\x0ab\\xff\\xc3(\\xed\\xa0\\x80\\x7f");
    EXPECT_EQ(suffixOf("A.TAR.Png"), ".png");
    EXPECT_EQ(suffixOf(".png"), "");
}

}  // namespace
