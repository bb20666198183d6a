// Render threads read while the GUI thread edits, removes and brings back.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "host/kernel/KernelStore.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

const int kType = TestManipulator::kTypeId;

/// One reader: takes the instances of a frame as a renderer does and asks each for its values.
/// Every edit keeps Gain equal to Size, so a half-applied one shows.
struct Reader {
    std::atomic<bool>& stop;
    std::atomic<int>& framesDone;
    int torn = 0;
    int misplaced = 0;

    void run() {
        const KernelStore& store = KernelStore::instance();
        for (qint64 frame = 0; !stop; ++frame) {
            const RenderLease lease;
            std::vector<const HkKernelObjectData*> objects;
            for (const InstanceId& id : store.instances())
                if (auto* object = HkFXKernelData::getInstance()->getObject(id.typeId, id.objectId))
                    objects.push_back(object);
            std::this_thread::yield();  // time for the editor to remove some of them
            for (std::size_t round = 0; round < 20 * objects.size(); ++round) {
                const HkKernelObjectData* object = objects[round % objects.size()];
                const HkParamKeyframeVector values = object->getKeyframesAt(frame % 50);
                const QVariant size = values.at(TestManipulator::Size).getValue();
                torn += size.toDouble() != values.at(TestManipulator::Gain).getValue().toDouble();
                misplaced += values.frameNumber() != frame % 50;
            }
            ++framesDone;
        }
    }
};

/// Sets both parameters in one edit, as keys or for all frames.
void editBoth(int object, int value, std::optional<qint64> frame) {
    std::vector<ParamEdit> edits = {{TestManipulator::Size, frame, ParamKey{value, true}},
                                    {TestManipulator::Gain, frame, ParamKey{value, true}}};
    EXPECT_TRUE(KernelStore::instance().apply(object, edits));
}

TEST(KernelThreads, ReadersSeeWholeEditsOfLivingObjects) {
    TestManipulator filter;
    filter.initManipulator(nullptr);
    KernelStore& store = KernelStore::instance();
    const auto addOne = [&store] {
        InstanceState state =
            defaultState(*HkFXKernelData::getInstance()->getDataDescriptor(kType));
        state.params[TestManipulator::Gain].base = 1.0;  // equals Size
        return store.add(kType, state);
    };
    for (int i = 0; i < 4; ++i) addOne();

    std::atomic<bool> stop{false};
    std::atomic<int> framesDone{0};
    Reader readers[] = {{stop, framesDone}, {stop, framesDone}, {stop, framesDone}};
    std::vector<std::thread> threads;
    for (Reader& reader : readers) threads.emplace_back(&Reader::run, &reader);

    for (int round = 0; round < 5000 || framesDone < 1000; ++round) {
        const std::vector<InstanceId> ids = store.instances();
        const InstanceId id = ids[static_cast<std::size_t>(round) % ids.size()];
        for (int edit = round; edit < round + 6; ++edit) {
            editBoth(id.objectId, edit, std::nullopt);
            editBoth(id.objectId, edit + 1, round % 50);
            for (const bool animated : {true, false, edit % 2 == 0})
                store.setAnimated(id.objectId, animated);
        }
        store.move(id.objectId, round % 3);
        const InstanceState state = *store.state(id.objectId);
        store.remove(id.objectId);
        if (round % 3 == 0)
            addOne();
        else
            store.restore(id, state, 1);
    }
    stop = true;
    for (std::thread& thread : threads) thread.join();
    for (const Reader& reader : readers) {
        EXPECT_EQ(reader.torn, 0);
        EXPECT_EQ(reader.misplaced, 0);
    }
    EXPECT_EQ(store.liveObjectCount(), 4) << "what was removed is freed";
}

}  // namespace
