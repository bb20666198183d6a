// Undoable changes of values: what they write, how they merge, what they say.
#include <gtest/gtest.h>

#include <QApplication>
#include <QMouseEvent>
#include <QUndoStack>
#include <utility>

#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "host/kernel/KernelStore.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

const int kType = TestManipulator::kTypeId;
const qint64 kNoFrame = HkParamKeyframeVector::NoFrame;

using Values = std::vector<std::pair<QString, QVariant>>;

void releaseMouse() {
    QObject anything;
    QMouseEvent release(QEvent::MouseButtonRelease, QPointF(1, 1), QPointF(1, 1), Qt::LeftButton,
                        Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(&anything, &release);
}

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
    push({{"Smooth", true}, {"Gain", 0.25}, {"Size", 5}});
    EXPECT_EQ(text(), QString::fromUtf8("Test & try: Smooth false → true, Gain 0.5 → 0.25"));
    stack.undo();
    EXPECT_TRUE(state() == expected);
    stack.undo();
    EXPECT_TRUE(state() == start);
    stack.redo();
    EXPECT_TRUE(state() == expected);
}

TEST_F(ChangeObject, WithoutChangeLeavesNoStep) {
    push({{"Size", 1}, {"Smooth", false}});
    push({});
    EXPECT_EQ(stack.count(), 0);
    push({{"Size", 4}});
    push({{"Size", 4}});
    EXPECT_EQ(stack.count(), 1);
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

TEST_F(ChangeObject, StepsOfOneGestureMerge) {
    for (const int value : {2, 3, 4, 5}) push({{"Size", value}});
    EXPECT_EQ(stack.count(), 1);
    EXPECT_EQ(text(), QString::fromUtf8("Test & try: Size 1 → 5"));
    stack.undo();
    EXPECT_TRUE(state() == start);
    stack.redo();
    EXPECT_EQ(size().base, QVariant(5));
}

TEST_F(ChangeObject, WhatDiffersDoesNotMerge) {
    push({{"Size", 2}});
    push({{"Gain", 0.25}});
    EXPECT_EQ(stack.count(), 2) << "another parameter";
    push({{"Gain", 0.75}, {"Size", 3}});
    EXPECT_EQ(stack.count(), 3) << "another set of parameters";
    push({{"Gain", 0.125}, {"Size", 4}}, kNoFrame, false);
    EXPECT_EQ(stack.count(), 4) << "merge = false";
    push({{"Gain", 1}, {"Size", 5}});
    EXPECT_EQ(stack.count(), 5) << "never merges into one with merge = false";
    const int first = std::exchange(object, store.add(kType));
    push({{"Gain", 2}, {"Size", 6}});
    object = first;
    EXPECT_EQ(stack.count(), 6) << "another instance";
    store.setAnimated(object, true);
    push({{"Size", 7}}, 1);
    push({{"Size", 8}}, 2);
    EXPECT_EQ(stack.count(), 8) << "another frame";
    while (stack.canUndo()) stack.undo();
    store.setAnimated(object, false);
    EXPECT_TRUE(state() == start);
}

TEST_F(ChangeObject, ASavePointOrAMouseReleaseEndsTheStep) {
    push({{"Size", 2}});
    stack.setClean();
    push({{"Size", 3}});
    EXPECT_EQ(stack.count(), 2);
    stack.undo();
    EXPECT_TRUE(stack.isClean());
    EXPECT_EQ(size().base, QVariant(2));
    stack.redo();
    push({{"Size", 4}});
    EXPECT_EQ(stack.count(), 2) << "the step after the save point still grows";
    releaseMouse();
    push({{"Size", 5}});
    EXPECT_EQ(stack.count(), 3);
    push({{"Size", 6}});
    EXPECT_EQ(stack.count(), 3);
}

TEST_F(ChangeObject, ADragThereAndBackLeavesNothing) {
    push({{"Size", 2}});
    push({{"Size", 3}});
    push({{"Size", 1}});
    EXPECT_EQ(stack.count(), 0);
    EXPECT_TRUE(state() == start);

    store.setAnimated(object, true);
    store.setKey(object, TestManipulator::Size, 0, 2);
    const InstanceState animated = state();
    push({{"Size", 3}}, 10);
    push({{"Size", 2}}, 10);
    EXPECT_EQ(stack.count(), 0);
    EXPECT_TRUE(state() == animated) << "no key stays behind";
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
