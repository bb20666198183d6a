#include "host/render/FrameRunner.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cerrno>
#include <new>
#include <numeric>
#include <set>
#include <system_error>
#include <thread>

#include "host/media/MediaError.h"

namespace {

using render::FrameOutcome;
using render::FrameWork;
using render::RunRules;

const int kFrames = 100;

std::vector<std::int64_t> frames() {
    std::vector<std::int64_t> numbers(kFrames);
    std::iota(numbers.begin(), numbers.end(), 1000);
    return numbers;
}

std::vector<FrameOutcome> run(int workers, const FrameWork& work, const RunRules& rules = {}) {
    return render::runFrames(frames(), std::vector<FrameWork>(workers, work), rules, nullptr,
                             nullptr);
}

class FrameRunner : public testing::TestWithParam<int> {};  // the number of workers

TEST_P(FrameRunner, RunsEveryFrameOnceAndAnnouncesItOnTheCallingThread) {
    std::vector<std::atomic<int>> runs(kFrames), busy(GetParam());
    std::multiset<std::int64_t> announced;
    const auto caller = std::this_thread::get_id();
    std::vector<FrameWork> workers;
    for (std::atomic<int>& working : busy)
        workers.push_back([&](std::int64_t frame) {
            EXPECT_EQ(++working, 1) << "a worker has one frame at a time";
            ++runs[frame - 1000];
            std::this_thread::yield();
            --working;
        });
    const auto outcomes = render::runFrames(
        frames(), workers, RunRules(),
        [&](const FrameOutcome& outcome) {
            EXPECT_EQ(std::this_thread::get_id(), caller);
            announced.insert(outcome.frame);
        },
        nullptr);
    ASSERT_EQ(outcomes.size(), std::size_t(kFrames));
    for (int i = 0; i < kFrames; ++i) {
        EXPECT_EQ(runs[i], 1);
        EXPECT_EQ(outcomes[i].frame, 1000 + i);
        EXPECT_EQ(outcomes[i].status, FrameOutcome::Finished);
        EXPECT_EQ(announced.count(1000 + i), 1u);
    }
}

TEST_P(FrameRunner, TheFirstFailureDoesNotDependOnTheWorkers) {
    const auto outcomes = run(GetParam(), [](std::int64_t frame) {
        if (frame == 1030 || frame == 1033)
            throw media::MediaError(media::MediaErrorKind::InvalidData,
                                    "bad " + std::to_string(frame));
        std::this_thread::yield();
    });
    for (int i = 0; i < 30; ++i) EXPECT_EQ(outcomes[i].status, FrameOutcome::Finished) << i;
    EXPECT_EQ(outcomes[30].status, FrameOutcome::Failed);
    EXPECT_EQ(outcomes[30].error, "bad 1030");
    EXPECT_EQ(outcomes[30].code, render::InvalidData);
    if (GetParam() == 1) {
        for (int i = 31; i < kFrames; ++i) EXPECT_EQ(outcomes[i].status, FrameOutcome::NotStarted);
    }
}

TEST_P(FrameRunner, KeepGoingRunsAllOthers) {
    RunRules rules;
    rules.keepGoing = true;
    const auto outcomes = run(
        GetParam(),
        [](std::int64_t frame) {
            if (frame % 30 == 0) throw std::bad_alloc();
            if (frame % 30 == 10)
                throw std::system_error(EAGAIN, std::generic_category(), "no thread");
            if (frame % 30 == 20) throw 5;  // a filter is somebody else's code
        },
        rules);
    for (const FrameOutcome& outcome : outcomes) {
        const bool fails = outcome.frame % 10 == 0;
        EXPECT_EQ(outcome.status, fails ? FrameOutcome::Failed : FrameOutcome::Finished);
        EXPECT_EQ(outcome.code, !fails                     ? render::Done
                                : outcome.frame % 30 == 20 ? render::InvalidData
                                                           : render::TryAgainLater);
        EXPECT_EQ(outcome.error.empty(), !fails);
    }
}

INSTANTIATE_TEST_SUITE_P(Workers, FrameRunner, testing::Values(1, 2, 8));

}  // namespace
