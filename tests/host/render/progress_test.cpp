#include "host/render/Progress.h"

#include <gtest/gtest.h>

namespace {

render::Tally tally(int total, int finished, int failed, double seconds) {
    render::Tally tally;
    tally.total = total;
    tally.finished = finished;
    tally.failed = failed;
    tally.seconds = seconds;
    return tally;
}

TEST(ProgressBar, ShowsRateAndTimeLeft) {
    EXPECT_EQ(render::barText(tally(48, 12, 0, 3), 60),
              "[######.....................] 12/48  4.0 frames/s  9 s left");
    EXPECT_EQ(render::barText(tally(4, 0, 0, 0.2), 20), "[.............] 0/4");
    EXPECT_EQ(render::barText(tally(10, 4, 1, 5), 200),
              "[" + std::string(20, '#') + std::string(20, '.') +
                  "] 5/10  1 failed  1.0 frames/s  5 s left");
}

TEST(ProgressBar, NeverReachesTheLastColumn) {
    for (int columns = 0; columns <= 200; ++columns) {
        const std::string bar = render::barText(tally(1000000, 999999, 1, 1e6), columns);
        EXPECT_LT(static_cast<int>(bar.size()), std::max(columns, 1)) << columns;
    }
}

TEST(ProgressLine, NamesLongTimesInLargeUnitsAndWhatWasNotBegun) {
    EXPECT_EQ(render::plainText(tally(3600, 10, 0, 20)),
              "10 of 3600 frames, 2.0 s/frame, 1 h 59 min left");
    EXPECT_EQ(render::summaryText(tally(1, 1, 0, 0.25)), "1 frame done in 0.2 s");
    EXPECT_EQ(render::summaryText(tally(10, 5, 2, 7)),
              "5 of 10 frames done, 2 failed, 3 not begun in 7.0 s (1.0 frames/s)");
}

}  // namespace
