// One filter object, several render threads, and a user who edits meanwhile.

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <algorithm>
#include <atomic>
#include <thread>

#include "host/kernel/KernelStore.h"
#include "tests/kit/ExpectedFilters.h"
#include "tests/kit/FilterHost.h"

namespace {

using Pixels = std::vector<unsigned char>;

struct Frame {
    int width, height, channels;
};
const Frame kFrames[] = {{33, 20, 3}, {33, 20, 1}, {18, 27, 3}};
const int kRounds = 100;

Pixels rendered(HkImageFilter& filter, const Frame& frame) {
    auto image = testImage(frame.width, frame.height, frame.channels);
    process(filter, image);
    return pixels(*image);
}

class FilterConcurrency : public testing::TestWithParam<ExpectedFilter> {};

}  // namespace

TEST_P(FilterConcurrency, EachFrameComesOutAsItWouldAlone) {
    const ExpectedEdit& edit = GetParam().edits.front();
    FilterHost host(GetParam().key);
    KernelStore& store = KernelStore::instance();

    // The states between which the user goes: as applied, one edit, and everything changed at once.
    const InstanceState fresh = *store.state(host.objectId);
    InstanceState edited = fresh, changed = fresh;
    edited.params[static_cast<std::size_t>(edit.parameter)].base = edit.stored;
    for (const ExpectedEdit& other : GetParam().edits)
        changed.params[static_cast<std::size_t>(other.parameter)].base = other.stored;
    std::vector<std::vector<Pixels>> valid;
    for (const Frame& frame : kFrames) {
        valid.emplace_back();
        for (const InstanceState& state : {edited, changed, fresh}) {
            store.setState(host.objectId, state);
            const std::unique_ptr<HkImageFilter> alone(
                host.manipulator->createImageFilter(host.objectId));
            valid.back().push_back(rendered(*alone, frame));
        }
    }

    const std::unique_ptr<HkImageFilter> filter(host.manipulator->createImageFilter(host.objectId));
    std::atomic<int> running{0}, strange{0};
    std::vector<std::thread> renderers;
    for (std::size_t i = 0; i < valid.size(); ++i) {
        ++running;
        renderers.emplace_back([&, i] {
            for (int round = 0; round < kRounds; ++round) {
                const std::size_t which = (i + static_cast<std::size_t>(round)) % valid.size();
                const Pixels result = rendered(*filter, kFrames[which]);
                const auto& allowed = valid[which];
                if (std::find(allowed.begin(), allowed.end(), result) == allowed.end()) ++strange;
            }
            --running;
        });
    }
    while (running > 0) {
        host.edit(edit.control, edit.position);
        host.undo.undo();
        store.setState(host.objectId, changed);
        store.setState(host.objectId, fresh);
        QCoreApplication::processEvents();
    }
    for (std::thread& renderer : renderers) renderer.join();
    EXPECT_EQ(strange, 0) << "frames that belong to no state";
}

INSTANTIATE_TEST_SUITE_P(Filters, FilterConcurrency, testing::ValuesIn(expectedFilters()),
                         [](const auto& row) { return std::string(row.param.className); });
