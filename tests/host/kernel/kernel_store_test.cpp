// The data store: declared parameters, values over time, instances and their order, leases.
#include <gmock/gmock.h>

#include <QSignalSpy>
#include <QToolBox>
#include <limits>
#include <random>

#include "host/kernel/InstanceState.h"
#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

using ::testing::ElementsAre;

const int kType = TestManipulator::kTypeId;
const qint64 kFirstFrame = std::numeric_limits<qint64>::min();
const qint64 kLastFrame = std::numeric_limits<qint64>::max();
const int kMinInt = std::numeric_limits<int>::min();
const int kMaxInt = std::numeric_limits<int>::max();

class KernelStoreTest : public ::testing::Test {
protected:
    KernelStoreTest() { filter.initManipulator(nullptr); }

    int animatedObject() {
        const int object = store.add(kType);
        store.setAnimated(object, true);
        return object;
    }

    KernelStore& store = KernelStore::instance();
    HkFXKernelData& kernel = *HkFXKernelData::getInstance();
    TestManipulator filter;
};

// --- Declaring parameters ---

TEST(Descriptor, RefusesWhatItCannotDeclare) {
    HkKernelObjectDataDescr descr(5, 2);
    EXPECT_FALSE(descr.addParamDescr(2, "Outside", QMetaType::Int, ParamDescr::Stepped));
    EXPECT_FALSE(descr.addParamDescr(~0u, "Outside", QMetaType::Int, ParamDescr::Stepped));
    EXPECT_FALSE(descr.addParamDescr(0, "", QMetaType::Int, ParamDescr::Stepped));
    EXPECT_FALSE(descr.addParamDescr(0, "A", QMetaType::Void, ParamDescr::Stepped));
    EXPECT_FALSE(descr.addParamDescr(0, "A", QMetaType::QObjectStar, ParamDescr::Stepped));
    EXPECT_FALSE(
        descr.addParamDescr(0, "A", QMetaType::Int, static_cast<ParamDescr::KeyframeType>(3)));
    EXPECT_TRUE(descr.addParamDescr(1, "A", QMetaType::Int, ParamDescr::Stepped));
    EXPECT_FALSE(descr.addParamDescr(1, "B", QMetaType::Int, ParamDescr::Stepped));
    EXPECT_FALSE(descr.addParamDescr(0, "A", QMetaType::Int, ParamDescr::Stepped));
    EXPECT_EQ(descr.indexOf("A"), 1);
    EXPECT_EQ(descr.indexOf("B"), -1);
    EXPECT_EQ(descr.indexOf(""), -1);
    EXPECT_EQ(HkKernelObjectDataDescr(5, -3).paramCount(), 0);
}

TEST(Descriptor, SetValueConvertsOrRefuses) {
    HkKernelObjectDataDescr descr(5, 4);
    descr.addParamDescr(0, "Int", QMetaType::Int, ParamDescr::Interpolated);
    descr.addParamDescr(1, "Bool", QMetaType::Bool, ParamDescr::Stepped);
    descr.addParamDescr(2, "Double", QMetaType::Double, ParamDescr::Interpolated);
    descr.addParamDescr(3, "Text", QMetaType::QString, ParamDescr::Stepped);
    const struct {
        const char* name;
        QVariant given;
        QVariant stored;  // invalid: refused
    } rows[] = {
        {"Int", 12.8, 13},
        {"Int", -0.4, 0},
        {"Int", "17", 17},
        {"Int", true, 1},
        {"Int", "seventeen", {}},
        {"Int", "", {}},
        {"Int", 3e9, {}},
        {"Int", qlonglong(kMaxInt) + 1, {}},
        {"Int", qlonglong(kMinInt), kMinInt},
        {"Int", std::numeric_limits<double>::quiet_NaN(), {}},
        {"Int", QVariant(), {}},
        {"Bool", 1, true},
        {"Bool", 0, false},
        {"Bool", "true", true},
        {"Bool", "no", {}},
        {"Double", 3, 3.0},
        {"Double", "1e-3", 1e-3},
        {"Double", "1e999", {}},
        {"Double", std::numeric_limits<double>::infinity(), {}},
        {"Text", 4, "4"},
        {"Nothing", 1, {}},
    };
    for (const auto& row : rows) {
        HkParamKeyframeVector v = descr.createKeyframeVector();
        EXPECT_EQ(v.frameNumber(), HkParamKeyframeVector::NoFrame);
        SCOPED_TRACE(row.name + (" " + row.given.toString().toStdString()));
        EXPECT_EQ(descr.setValue(v, row.name, row.given), row.stored.isValid());
        const int index = descr.indexOf(row.name);
        if (index < 0) continue;
        EXPECT_EQ(v.at(index).isAssigned(), row.stored.isValid());
        const QVariant fallback = descr.param(index).defaultValue;
        EXPECT_EQ(v.at(index).getValue(), row.stored.isValid() ? row.stored : fallback);
        EXPECT_EQ(v.at(index).getValue().userType(), descr.param(index).type);
    }
    HkParamKeyframeVector tooShort;
    EXPECT_FALSE(descr.setValue(tooShort, "Int", 1));
}

// --- Registering types ---

TEST_F(KernelStoreTest, TypesAreRegisteredOnce) {
    EXPECT_TRUE(filter.isRegistered());
    EXPECT_THAT(store.types(), ElementsAre(kType));
    TestManipulator twin;
    EXPECT_FALSE(kernel.registerFilterType(&twin, kType));
    EXPECT_FALSE(kernel.registerFilterType(nullptr, 77));
    EXPECT_FALSE(kernel.registerFilterType(&twin, 0));
    const auto descr = [](int typeId, bool declared) {
        auto* made = new HkKernelObjectDataDescr(typeId, TestManipulator::ParameterCount);
        const char* const names[] = {"Enabled", "Smooth", "Size", "Gain", "Label"};
        for (unsigned i = 0; i < 5; ++i)
            if (declared || i != 3)
                made->addParamDescr(i, names[i], QMetaType::QString, ParamDescr::Stepped);
        return made;
    };
    EXPECT_FALSE(kernel.registerDataDescriptor(nullptr, kType));
    EXPECT_FALSE(kernel.registerDataDescriptor(descr(kType, true), kType)) << "has one already";
    EXPECT_FALSE(kernel.registerDataDescriptor(descr(78, true), 78)) << "has no manipulator";
    ASSERT_TRUE(kernel.registerFilterType(&twin, 79));
    EXPECT_FALSE(kernel.registerDataDescriptor(descr(78, true), 79)) << "made for another type";
    EXPECT_FALSE(kernel.registerDataDescriptor(descr(79, false), 79)) << "lacks a parameter";
    EXPECT_TRUE(kernel.registerDataDescriptor(descr(79, true), 79));
    EXPECT_EQ(kernel.getDataDescriptor(79)->param(TestManipulator::Gain).defaultValue,
              QVariant("0.5"));
}

TEST_F(KernelStoreTest, ADestroyedManipulatorTakesItsTypeAlong) {
    int object = 0;
    QToolBox toolBox;
    {
        TestManipulator other(9002);
        other.initManipulator(&toolBox);
        EXPECT_EQ(toolBox.count(), 1);
        EXPECT_TRUE(kernel.registerFilterType(&other, 9003)) << "one may serve two types";
        object = store.add(9002);
        EXPECT_NE(kernel.getObject(9002, object), nullptr);
    }
    EXPECT_EQ(toolBox.count(), 0);
    EXPECT_EQ(kernel.getObject(9002, object), nullptr);
    EXPECT_EQ(kernel.getDataDescriptor(9002), nullptr);
    EXPECT_EQ(store.add(9002), -1);
    EXPECT_EQ(store.manipulator(9003), nullptr);
}

// --- Values over time ---

TEST_F(KernelStoreTest, KindsRunBetweenKeysAsDeclared) {
    const int object = store.add(kType);
    store.setKey(object, TestManipulator::Size, 0, 0);
    store.setKey(object, TestManipulator::Size, 10, 5);
    store.setKey(object, TestManipulator::Size, 20, -5, true);
    store.setKey(object, TestManipulator::Size, 30, 100);
    store.setKey(object, TestManipulator::Gain, -4, 1.0);
    store.setKey(object, TestManipulator::Gain, 4, 2.0);
    store.setKey(object, TestManipulator::Smooth, 5, true);
    store.setKey(object, TestManipulator::Smooth, 8, false);
    const struct {
        qint64 frame;
        int size;
        double gain;
        bool smooth;
    } rows[] = {
        {kFirstFrame, 0, 1.0, true}, {-1, 0, 1.375, true},  {0, 0, 1.5, true},
        {1, 1, 1.625, true},         {2, 1, 1.75, true},    {5, 3, 2.0, true},
        {7, 4, 2.0, true},           {8, 4, 2.0, false},    {10, 5, 2.0, false},
        {15, 0, 2.0, false},         {19, -4, 2.0, false},  {20, -5, 2.0, false},
        {29, -5, 2.0, false},        {30, 100, 2.0, false}, {kLastFrame, 100, 2.0, false},
    };
    EXPECT_EQ(valueAt(object, TestManipulator::Size, 10), QVariant(1)) << "not animated";
    store.setAnimated(object, true);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.frame);
        EXPECT_EQ(valueAt(object, TestManipulator::Size, row.frame), QVariant(row.size));
        EXPECT_EQ(valueAt(object, TestManipulator::Gain, row.frame), QVariant(row.gain));
        EXPECT_EQ(valueAt(object, TestManipulator::Smooth, row.frame), QVariant(row.smooth));
        EXPECT_EQ(kernel.getObject(kType, object)->getKeyframesAt(row.frame).frameNumber(),
                  row.frame);
    }
    EXPECT_FALSE(store.setKey(object, TestManipulator::Enabled, 3, 0)) << "Constant";
    EXPECT_TRUE(store.state(object)->params[TestManipulator::Smooth].keys.at(5).held);
}

// The rounded value is checked by its definition, in whole numbers: no farther from the line than
// half, and upwards when exactly half.
TEST_F(KernelStoreTest, InterpolatedIntIsTheNearestToTheLine) {
    __extension__ typedef __int128 Wide;
    std::mt19937_64 random(20240501);
    const auto anyInt = [&] {
        const int corners[] = {kMinInt, kMaxInt, 0, -1, 1};
        const auto r = random();
        if (r % 4 == 0) return corners[(r >> 8) % 5];
        return r % 4 == 1 ? static_cast<int>((r >> 8) % 20) - 10 : static_cast<int>(r >> 20);
    };
    const auto anyFrame = [&] {
        const auto r = random();
        return r % 2 ? static_cast<qint64>(random()) : static_cast<qint64>((r >> 8) % 40) - 20;
    };
    const int object = animatedObject();
    for (int round = 0; round < 3000; ++round) {
        qint64 frames[] = {anyFrame(), anyFrame(), anyFrame()};
        std::sort(std::begin(frames), std::end(frames));
        const auto [first, frame, last] = frames;
        if (first == frame || frame == last) continue;
        InstanceState state = *store.state(object);
        const int from = anyInt();
        const int to = anyInt();
        state.params[TestManipulator::Size].keys = {{first, {from, false}}, {last, {to, false}}};
        ASSERT_TRUE(store.setState(object, state));
        const int value = valueAt(object, TestManipulator::Size, frame).toInt();
        SCOPED_TRACE(::testing::Message() << from << " at " << first << ", " << to << " at " << last
                                          << ", at " << frame << ": " << value);
        EXPECT_GE(value, std::min(from, to));
        EXPECT_LE(value, std::max(from, to));
        // Twice the distance to the line, times the length, must not exceed the length.
        const Wide length = Wide(last) - first;
        const Wide line = Wide(to - Wide(from)) * (Wide(frame) - first);
        const Wide twice = 2 * ((Wide(value) - from) * length - line);
        EXPECT_TRUE(-length < twice && twice <= length);
    }
}

TEST_F(KernelStoreTest, InterpolatedDoubleStaysBetweenItsKeys) {
    const double big = std::numeric_limits<double>::max();
    const double pairs[][2] = {{-big, big}, {big, big}, {0.1, 0.1}, {1e-308, 3e-308}, {-0.3, 0.7}};
    const int object = animatedObject();
    for (const auto& [from, to] : pairs) {
        store.setKey(object, TestManipulator::Gain, kFirstFrame, from);
        store.setKey(object, TestManipulator::Gain, kLastFrame, to);
        double last = std::min(from, to);
        for (const qint64 frame : {kFirstFrame, kFirstFrame + 1, qint64(-1000), qint64(0),
                                   qint64(12345), kLastFrame - 1, kLastFrame}) {
            const double value = valueAt(object, TestManipulator::Gain, frame).toDouble();
            EXPECT_GE(value, last) << from << " to " << to << " at " << frame;
            EXPECT_LE(value, std::max(from, to)) << from << " to " << to << " at " << frame;
            last = value;
        }
        EXPECT_EQ(last, to);
        EXPECT_NEAR(valueAt(object, TestManipulator::Gain, 0).toDouble() / 2, from / 4 + to / 4,
                    std::abs(to) * 1e-15);
    }
}

TEST_F(KernelStoreTest, EditsThatDoNotFitChangeNothing) {
    const int object = animatedObject();
    const InstanceState before = *store.state(object);
    QSignalSpy changed(KernelNotifier::instance(), SIGNAL(objectChanged(int, int)));
    EXPECT_FALSE(store.setBaseValue(object, TestManipulator::Size, "many"));
    EXPECT_FALSE(store.setBaseValue(object, -1, 1));
    EXPECT_FALSE(store.setBaseValue(object, TestManipulator::ParameterCount, 1));
    EXPECT_FALSE(store.setBaseValue(object + 1, TestManipulator::Size, 1));
    const std::vector<ParamEdit> edits = {{TestManipulator::Size, std::nullopt, ParamKey{8, false}},
                                          {TestManipulator::Gain, 5, ParamKey{"much", false}}};
    EXPECT_FALSE(store.apply(object, edits)) << "one bad edit spoils all";
    InstanceState wrong = before;
    wrong.params[TestManipulator::Size].base = "text";
    EXPECT_FALSE(store.setState(object, wrong));
    wrong = before;
    wrong.params[TestManipulator::Enabled].keys[3] = {1, false};
    EXPECT_FALSE(store.setState(object, wrong));
    wrong = before;
    wrong.params.pop_back();
    EXPECT_EQ(store.add(kType, wrong), -1);
    EXPECT_TRUE(*store.state(object) == before);
    EXPECT_TRUE(changed.isEmpty());
}

// --- Instances and their order ---

TEST_F(KernelStoreTest, OrderAndIds) {
    TestManipulator other(9002);
    other.initManipulator(nullptr);
    const int a = store.add(kType);
    const int b = store.add(9002);
    const int c = store.add(kType, 0);
    EXPECT_THAT(renderingOrder(), ElementsAre(c, a, b));
    EXPECT_EQ(kernel.getObject(9002, a), nullptr) << "of another type";
    EXPECT_TRUE(store.move(c, 2));
    EXPECT_THAT(renderingOrder(), ElementsAre(a, b, c));
    EXPECT_TRUE(store.move(c, 1));
    EXPECT_THAT(renderingOrder(), ElementsAre(a, c, b));
    EXPECT_TRUE(store.move(a, 99));
    EXPECT_THAT(renderingOrder(), ElementsAre(c, b, a));
    EXPECT_FALSE(store.move(c + 100, 0));

    const InstanceState state = *store.state(b);
    EXPECT_FALSE(store.restore({9002, b}, state, 0)) << "in use";
    EXPECT_TRUE(store.remove(b));
    EXPECT_FALSE(store.remove(b));
    const int d = store.add(kType);
    EXPECT_GT(d, c) << "ids are never given again";
    EXPECT_FALSE(store.restore({9002, d + 1}, state, 0)) << "never given";
    EXPECT_TRUE(store.restore({9002, b}, state, 1));
    EXPECT_THAT(renderingOrder(), ElementsAre(c, b, a, d));
    store.clear();
    EXPECT_THAT(renderingOrder(), ElementsAre());
    EXPECT_GT(store.add(kType), d);
}

TEST_F(KernelStoreTest, ALeaseKeepsWhatWasThereWhenItBegan) {
    const int a = store.add(kType);
    const int b = store.add(kType);
    auto early = std::make_unique<RenderLease>();
    const HkKernelObjectData* const data = kernel.getObject(kType, a);
    store.remove(a);
    EXPECT_EQ(kernel.getObject(kType, a), nullptr);
    EXPECT_EQ(data->getKeyframesAt(3).at(TestManipulator::Gain).getValue(), QVariant(0.5));
    auto late = std::make_unique<RenderLease>();
    store.remove(b);
    EXPECT_EQ(store.liveObjectCount(), 2);
    early.reset();
    EXPECT_EQ(store.liveObjectCount(), 1) << "only the later lease can know b";
    late.reset();
    EXPECT_EQ(store.liveObjectCount(), 0);
    store.remove(store.add(kType));
    EXPECT_EQ(store.liveObjectCount(), 0) << "without a lease nothing is kept";
}

}  // namespace
