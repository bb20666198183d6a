#include "host/render/FrameList.h"

#include <gmock/gmock.h>

#include <limits>
#include <numeric>

#include "host/render/ExitCode.h"

namespace {

using Frames = std::vector<std::int64_t>;
using testing::ElementsAre;

Frames from(std::int64_t first, std::int64_t last) {
    Frames frames(static_cast<std::size_t>(last - first + 1));
    std::iota(frames.begin(), frames.end(), first);
    return frames;
}

Frames chosen(const std::string& list, const Frames& available) {
    return render::FrameList(list).chosenFrom(available);
}

TEST(FrameList, ChoosesSingleFramesRangesAndSteps) {
    const Frames available = from(-12, 30);
    EXPECT_THAT(chosen("5", available), ElementsAre(5));
    EXPECT_THAT(chosen("1,5,10-20:2, -5, -10--8", available),
                ElementsAre(-10, -9, -8, -5, 1, 5, 10, 12, 14, 16, 18, 20));
    EXPECT_THAT(chosen("28-", available), ElementsAre(28, 29, 30));
    EXPECT_THAT(chosen("20-:4", available), ElementsAre(20, 24, 28));
    EXPECT_THAT(chosen("-12-", available), testing::ContainerEq(available))
        << "open from a negative frame";
    EXPECT_THAT(chosen("-1-1", available), ElementsAre(-1, 0, 1));
    EXPECT_THAT(chosen("9,3-5,4,9", available), ElementsAre(3, 4, 5, 9)) << "each once, in order";
}

TEST(FrameList, ARangeTakesWhatThereIsOfIt) {
    EXPECT_THAT(chosen("1-100:3", {1, 2, 4, 8, 10, 200}), ElementsAre(1, 4, 10));
    const std::int64_t largest = std::numeric_limits<std::int64_t>::max();
    EXPECT_THAT(chosen("-9223372036854775808-9223372036854775807", {0, largest}),
                ElementsAre(0, largest));
}

TEST(FrameList, SaysWhenAnEntryChoosesNothing) {
    for (const char* list : {"11", "1,11", "50-60", "1-3,11-"}) {
        try {
            chosen(list, from(0, 10));
            ADD_FAILURE() << list << " was accepted";
        } catch (const render::UsageError& error) {
            EXPECT_THAT(error.what(), testing::HasSubstr("frames are 0 to 10")) << list;
        }
    }
}

TEST(FrameList, RefusesWhatIsNoList) {
    for (const char* list : {"", ",", "1,", "a", "1-2-3", "1:2", "10-5", "-5--10", "1-5:0",
                             "1-5:", "1-5:-1", "1.5", "--5", "1;2", "99999999999999999999"})
        EXPECT_THROW(render::FrameList{list}, render::UsageError) << list;
    EXPECT_THROW(render::FrameList{std::string(1000000, '1')}, render::UsageError);
}

}  // namespace
