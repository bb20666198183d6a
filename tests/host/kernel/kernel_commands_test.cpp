// Undoable changes of values: what they write, how they merge, what they say.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <QApplication>
#include <QTest>
#include <QUndoStack>
#include <QWheelEvent>
#include <utility>

#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/UndoGesture.h"
#include "tests/host/kernel/plugins/TestFilter.h"
#include "tests/kit/gestures.h"

namespace {

const int kType = TestManipulator::kTypeId;
const qint64 kNoFrame = HkParamKeyframeVector::NoFrame;

using Values = std::vector<std::pair<QString, QVariant>>;

class ChangeObject : public ::testing::Test {
protected:
    ChangeObject() {
        filter.initManipulator(nullptr);
        object = store.add(kType);
        start = *store.state(object);
    }

    void push(const Values& values, qint64 frame = kNoFrame, bool merge = true) {
        const HkKernelObjectDataDescr* descr =
            HkFXKernelData::getInstance()->getDataDescriptor(kType);
        HkParamKeyframeVector vector = descr->createKeyframeVector();
        for (const auto& [name, value] : values) ASSERT_TRUE(descr->setValue(vector, name, value));
        vector.setFrameNumber(frame);
        stack.push(new CmdChangeObject(kType, object, vector, merge));
    }
    InstanceState state() { return *store.state(object); }
    InstanceParam size() { return state().params[TestManipulator::Size]; }
    QString text() { return stack.undoText(); }

    KernelStore& store = KernelStore::instance();
    TestManipulator filter;
    QUndoStack stack;
    int object = 0;
    InstanceState start;
};

TEST_F(ChangeObject, WritesOnlyWhatWasAssignedAndDiffers) {
    push({{"Size", 5}, {"Smooth", false}});
    InstanceState expected = start;
    expected.params[TestManipulator::Size].base = 5;
    EXPECT_TRUE(state() == expected);
    EXPECT_EQ(text(), QString::fromUtf8("Test & try: Size 1 → 5"));
    push({{"Smooth", true}, {"Gain", 0.25}, {"Size", 5}}, kNoFrame, false);
    EXPECT_EQ(text(), QString::fromUtf8("Test & try: Smooth false → true, Gain 0.5 → 0.25"));
    stack.undo();
    EXPECT_TRUE(state() == expected);
    stack.undo();
    EXPECT_TRUE(state() == start);
    stack.redo();
    EXPECT_TRUE(state() == expected);
}

TEST_F(ChangeObject, WritesKeysOfAnimatedInstances) {
    store.setAnimated(object, true);
    store.setKey(object, TestManipulator::Size, 0, 2);
    store.setKey(object, TestManipulator::Size, 20, 12);
    const InstanceState before = state();
    push({{"Size", 9}, {"Smooth", true}, {"Enabled", 0}, {"Gain", 0.5}}, 10);
    EXPECT_EQ(text(), QString::fromUtf8("Test & try: Enabled 1 → 0, Smooth false → true, Size 7 → 9"
                                        " (frame 10)"));
    InstanceState expected = before;
    expected.params[TestManipulator::Enabled].base = 0;
    expected.params[TestManipulator::Smooth].keys[10] = {true, true};
    expected.params[TestManipulator::Size].keys[10] = {9, false};
    EXPECT_TRUE(state() == expected);
    stack.undo();
    EXPECT_TRUE(state() == before) << "the keys that were not there are gone";

    push({{"Size", 7}}, 10);
    EXPECT_EQ(stack.count(), 0) << "7 is in force between the keys";
    push({{"Size", 3}}, 0, false);
    stack.undo();
    EXPECT_TRUE(state() == before) << "the key that was there is back";
}

TEST_F(ChangeObject, AKeyRunsOnAsTheStretchItIsIn) {
    store.setAnimated(object, true);
    store.setKey(object, TestManipulator::Size, 0, 2, true);
    store.setKey(object, TestManipulator::Size, 20, 12);
    push({{"Size", 9}}, 10);
    EXPECT_TRUE(size().keys.at(10).held);
    push({{"Size", 8}}, 0);
    EXPECT_TRUE(size().keys.at(0).held) << "an edit of a held key leaves it held";
    push({{"Size", 8}}, 30);
    EXPECT_FALSE(size().keys.at(30).held);
}

TEST_F(ChangeObject, FrameNumbersWithoutUseFallBackToTheInstance) {
    push({{"Size", 6}}, 10);
    EXPECT_EQ(size().base, QVariant(6)) << "not animated: one value for all frames";
    EXPECT_TRUE(size().keys.empty());
    store.setAnimated(object, true);
    store.setKey(object, TestManipulator::Size, 0, 2);
    push({{"Size", 8}}, kNoFrame);
    EXPECT_EQ(size().base, QVariant(8)) << "no frame to make a key of";
    EXPECT_EQ(size().keys.size(), 1u);
}

TEST_F(ChangeObject, AMergedStepTellsWhatItChangedInTheEnd) {
    push({{"Size", 5}, {"Gain", 0.25}});
    push({{"Size", 6}, {"Smooth", true}});
    push({{"Gain", 0.5}});
    EXPECT_EQ(stack.count(), 1);
    EXPECT_EQ(text(), QString::fromUtf8("Test & try: Smooth false → true, Size 1 → 6"));
}

/// The rules of merging, told once more: which edits share a step, and what undo brings back.
class StepModel {
public:
    void endGesture() { ++m_gesture, m_ofKeys = false; }
    void key() {
        if (!m_ofKeys) endGesture();
        m_ofKeys = true;
    }
    void save() { m_clean = m_index; }
    void edit(int object, qint64 frame, bool merge, const InstanceState& before,
              const InstanceState& after) {
        m_steps.resize(m_index);
        if (m_clean > static_cast<int>(m_index)) m_clean = -1;
        if (before == after) return;
        Step* last = m_steps.empty() ? nullptr : &m_steps.back();
        const bool joins = last && m_clean != static_cast<int>(m_index) && merge && last->merge &&
                           last->object == object && last->frame == frame &&
                           last->gesture == m_gesture;
        if (joins)
            last->after = after;
        else
            m_steps.push_back({object, frame, merge, m_gesture, before, after});
        if (m_steps.back().before == m_steps.back().after) m_steps.pop_back();
        m_index = m_steps.size();
    }
    /// The object that a step back changes and the state it then has.
    std::pair<int, InstanceState> undo() {
        endGesture();
        const Step& step = m_steps[--m_index];
        return {step.object, step.before};
    }
    std::pair<int, InstanceState> redo() {
        const Step& step = m_steps[m_index++];
        return {step.object, step.after};
    }
    int count() const { return static_cast<int>(m_steps.size()); }
    int index() const { return static_cast<int>(m_index); }

private:
    struct Step {
        int object;
        qint64 frame;
        bool merge;
        int gesture;
        InstanceState before, after;
    };
    std::vector<Step> m_steps;
    std::size_t m_index = 0;
    int m_clean = 0;
    int m_gesture = 0;
    bool m_ofKeys = false;
};

qint64 g_now = 0;

/// A window with real events and the model that follows them.
struct GestureScene {
    GestureScene() {
        for (QWidget* widget : {&target, &neighbour}) widget->setFocusPolicy(Qt::StrongFocus);
        window.resize(90, 30);
        neighbour.move(50, 0);
        window.show();
        QApplication::setActiveWindow(&window);
        target.setFocus();
        QApplication::processEvents();
    }
    void press() {
        QTest::mousePress(&target, Qt::LeftButton);
        model.endGesture();
    }
    void release() {
        QTest::mouseRelease(&target, Qt::LeftButton);
        QApplication::processEvents();
        model.endGesture();
    }
    void key() {
        QTest::keyClick(&target, Qt::Key_Right);
        model.key();
    }
    void turnWheel() {
        QWheelEvent turn(QPointF(1, 1), QPointF(1, 1), QPoint(), QPoint(0, 120), Qt::NoButton,
                         Qt::NoModifier, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&target, &turn);
    }
    void changeFocus() {
        (target.hasFocus() ? neighbour : target).setFocus();
        model.endGesture();
    }

    StepModel model;
    QWidget window;
    QWidget target{&window}, neighbour{&window};
};

TEST_F(ChangeObject, MergesWhatIsOneGesture) {
    setGestureClock([] { return g_now; });
    const int plain = object, keyed = store.add(kType);
    store.setAnimated(keyed, true);
    store.setKey(keyed, TestManipulator::Size, 0, 2);
    const InstanceState plainStart = *store.state(plain), keyedStart = *store.state(keyed);
    push({});  // from here on gestures are listened to

    EXPECT_TRUE(rc::check([&] {
        stack.clear();
        store.setState(plain, plainStart);
        store.setState(keyed, keyedStart);
        GestureScene scene;
        StepModel& model = scene.model;
        QStringList told;
        const int length = *rc::gen::inRange(0, 40);
        for (int i = 0; i < length; ++i) {
            const int action = *rc::gen::inRange(0, 24);
            told.append(QString::number(action));
            void (GestureScene::*const inputs[])() = {&GestureScene::press, &GestureScene::release,
                                                      &GestureScene::key,
                                                      &GestureScene::changeFocus};
            switch (action) {
                case 0:
                case 1:
                case 2:
                case 3:
                    (scene.*inputs[action])();
                    break;
                case 4:
                    g_now += 1001, model.endGesture();
                    break;
                case 5:
                    g_now += 900, dragTo(scene.target, QPoint(3, 3));
                    g_now += 900, scene.turnWheel();
                    g_now += 900, dragTo(scene.target, QPoint(3, 3));
                    break;
                case 6:
                    stack.setClean(), model.save();
                    break;
                case 7:
                case 8: {
                    if (!(action == 7 ? stack.canUndo() : stack.canRedo())) break;
                    action == 7 ? stack.undo() : stack.redo();
                    const auto [changed, expected] = action == 7 ? model.undo() : model.redo();
                    RC_ASSERT(*store.state(changed) == expected);
                    break;
                }
                default: {
                    object = *rc::gen::element(plain, plain, keyed);
                    const qint64 frame = object == keyed ? *rc::gen::inRange(10, 12) : kNoFrame;
                    const bool merge = *rc::gen::weightedElement<bool>({{9, true}, {1, false}});
                    Values values;
                    if (*rc::gen::arbitrary<bool>())
                        values.push_back({"Size", *rc::gen::inRange(1, 4)});
                    if (*rc::gen::arbitrary<bool>())
                        values.push_back({"Smooth", *rc::gen::arbitrary<bool>()});
                    if (*rc::gen::inRange(0, 5) == 0) values.push_back({"Enabled", 0});
                    const InstanceState before = state();
                    push(values, frame, merge);
                    model.edit(object, frame, merge, before, state());
                }
            }
            RC_LOG() << told.join(' ').toStdString() << '\n';
            RC_ASSERT(stack.count() == model.count());
            RC_ASSERT(stack.index() == model.index());
        }
    }));
    setGestureClock(nullptr);
}

TEST_F(ChangeObject, InstancesThatAreGoneAreLeftAlone) {
    push({{"Size", 2}});
    const InstanceState changed = state();
    store.remove(object);
    stack.undo();
    stack.redo();
    push({{"Size", 3}});
    EXPECT_EQ(stack.count(), 1) << "an edit of a missing instance is no step";
    stack.undo();
    EXPECT_TRUE(store.restore({kType, object}, changed, 0));
    stack.redo();
    EXPECT_TRUE(state() == changed);
    stack.undo();
    EXPECT_TRUE(state() == start);

    stack.push(new CmdChangeObject(kType + 1, object, HkParamKeyframeVector(), true));
    stack.push(new CmdChangeObject(kType, object, HkParamKeyframeVector(), true));
    EXPECT_EQ(stack.count(), 0) << "an unknown type, a vector of the wrong length";
    EXPECT_TRUE(state() == start);
}

}  // namespace
