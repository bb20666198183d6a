// The manipulator base and its entries in a real window.
#include <gmock/gmock.h>

#include <QApplication>
#include <QCheckBox>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QToolBox>
#include <QToolButton>
#include <QUndoStack>
#include <QVBoxLayout>

#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"
#include "tests/host/kernel/plugins/TestFilter.h"

namespace {

using ::testing::ElementsAre;

const int kType = TestManipulator::kTypeId;

/// A window as an editor has one: the tool box, and the entries in rendering order.
class Manipulator : public ::testing::Test {
protected:
    Manipulator() {
        for (TestManipulator* manipulator : {&filter, &other}) {
            manipulator->setUndoStack(&stack);
            manipulator->initManipulator(&toolBox);
        }
        auto* layout = new QVBoxLayout(&window);
        QObject::connect(KernelNotifier::instance(), &KernelNotifier::objectAdded, &window,
                         [=](int typeId, int objectId) {
                             if (auto* made = store.manipulator(typeId)->getFilterGui(objectId))
                                 layout->addWidget(made);
                         });
        window.show();
    }

    FxGuiImageFilter* entry(int objectId) { return filter.getFilterGui(objectId); }
    void click(int objectId, const char* button) {
        QWidget* entryWidget = filter.getFilterGui(objectId);
        if (!entryWidget) entryWidget = other.getFilterGui(objectId);
        QTest::mouseClick(entryWidget->findChild<QToolButton*>(button), Qt::LeftButton);
    }
    InstanceParam stored(int objectId, TestManipulator::Parameter parameter) {
        return store.state(objectId)->params[parameter];
    }

    KernelStore& store = KernelStore::instance();
    QUndoStack stack;
    QToolBox toolBox;
    QWidget window;
    TestManipulator filter;
    TestManipulator other{9002, "Other"};
};

TEST_F(Manipulator, ToolBoxPageAppliesTheFilter) {
    ASSERT_EQ(toolBox.count(), 2);
    EXPECT_EQ(toolBox.itemText(0), "Test & try");
    EXPECT_FALSE(toolBox.itemIcon(0).isNull());
    EXPECT_EQ(toolBox.widget(0)->findChild<QLabel*>()->text(), filter.filterDescription());
    toolBox.widget(0)->findChild<QPushButton*>("thePbAdd")->click();
    ASSERT_EQ(store.instances().size(), 1u);
    EXPECT_EQ(store.instances().front().typeId, kType);
    EXPECT_EQ(stack.undoText(), "Add Test & try");
}

TEST_F(Manipulator, WithoutToolBoxThereAreNoWindows) {
    TestManipulator plain(9003, "Plain");
    plain.initManipulator(nullptr);
    const int object = plain.addFilter();
    EXPECT_GT(object, 0) << "a host without undo stack applies filters, too";
    EXPECT_EQ(plain.getFilterGui(object), nullptr);
    plain.enableFilter(object, false);
    EXPECT_EQ(stored(object, TestManipulator::Enabled).base, QVariant(0));
    plain.slotMediaLoadedInKernel();
    EXPECT_EQ(plain.refreshes, 0);
    TestManipulator unregistered(9004, "Unregistered");
    EXPECT_EQ(unregistered.addFilter(), -1);
}

TEST_F(Manipulator, EntriesFollowTheInstances) {
    const int object = filter.addFilter();
    const QPointer<FxGuiImageFilter> made = entry(object);
    ASSERT_TRUE(made);
    EXPECT_EQ(made->objectId(), object);
    EXPECT_EQ(made->manipulator(), &filter);
    EXPECT_EQ(made->window(), &window);
    EXPECT_EQ(entry(object), made) << "one entry per instance";
    EXPECT_EQ(other.getFilterGui(object), nullptr);
    EXPECT_EQ(entry(object + 1), nullptr);

    store.setBaseValue(object, TestManipulator::Size, 6);
    filter.removeFilter(made);
    EXPECT_EQ(stack.undoText(), "Remove Test & try");
    EXPECT_EQ(entry(object), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_FALSE(made) << "the entry is deleted";
    stack.undo();
    ASSERT_NE(entry(object), nullptr) << "and made anew with the instance, under its own id";
    EXPECT_EQ(filter.page(object)->size->value(), 6);
    stack.undo();
    EXPECT_TRUE(store.instances().empty());
    stack.redo();
    EXPECT_THAT(renderingOrder(), ElementsAre(object));
}

TEST_F(Manipulator, OneEditIsOneStepAndUndoShowsTheOldValue) {
    const int object = filter.addFilter();
    TestPage* page = filter.page(object);
    const int refreshes = filter.refreshes;
    page->size->setValue(5);
    EXPECT_EQ(valueAt(object, TestManipulator::Size), QVariant(5));
    EXPECT_EQ(stack.count(), 2);
    EXPECT_EQ(filter.refreshes, refreshes) << "the page does not refresh for its own edit";
    stack.undo();
    EXPECT_EQ(page->size->value(), 1);
    EXPECT_EQ(filter.refreshes, refreshes + 1);
    EXPECT_EQ(stack.count(), 2) << "showing a value is no edit";
    stack.redo();
    EXPECT_EQ(page->size->value(), 5);
}

TEST_F(Manipulator, ThePageIsTheEntrysOwnChildAndFillsIt) {
    const int object = filter.addFilter();
    FxGuiImageFilter* made = entry(object);
    QWidget* page = made->controlPage;
    EXPECT_EQ(page->parentWidget(), made);
    for (const int width : {300, 420}) {
        window.resize(width, 200);
        QApplication::processEvents();
        EXPECT_TRUE(made->rect().contains(page->geometry()));
        EXPECT_GT(page->width(), made->width() - 20);
        for (const char* control : {"theChbEnabled", "theTbRemove"}) {
            const QRect place = made->findChild<QWidget*>(control)->geometry();
            EXPECT_TRUE(made->rect().contains(place)) << control;
            EXPECT_LT(place.bottom(), page->geometry().top()) << control;
        }
        // What is between the controls belongs to the card, which lies behind them.
        EXPECT_EQ(made->childAt(1, 1)->metaObject()->className(), std::string("QFrame"));
        EXPECT_EQ(made->childAt(page->geometry().center())->window(), &window);
        EXPECT_NE(made->childAt(page->geometry().center()), made->childAt(1, 1));
    }
}

TEST_F(Manipulator, EnablingIsShownAndUndone) {
    const int object = filter.addFilter();
    auto* box = entry(object)->findChild<QCheckBox*>("theChbEnabled");
    EXPECT_TRUE(box->isChecked());
    box->click();
    EXPECT_EQ(stored(object, TestManipulator::Enabled).base, QVariant(0));
    EXPECT_EQ(stack.undoText(), "Test & try: switch off");
    stack.undo();
    EXPECT_TRUE(box->isChecked());
    filter.enableFilter(object, true);
    EXPECT_EQ(stack.count(), 1) << "nothing to switch: the undone step is replaced by none";
    filter.enableFilter(object + 5, true);
    EXPECT_EQ(stack.count(), 1);
}

TEST_F(Manipulator, AnimatingMakesKeysOfTheCurrentFrame) {
    const int object = filter.addFilter();
    store.setBaseValue(object, TestManipulator::Size, 4);
    store.setCurrentFrame(12);
    const InstanceState before = *store.state(object);
    click(object, "theTbAnimate");
    EXPECT_EQ(stack.undoText(), "Test & try: animate");
    EXPECT_TRUE(HkFXKernelData::getInstance()->getObject(kType, object)->animated);
    EXPECT_EQ(stored(object, TestManipulator::Size).keys, (ParamTrack{{12, {4, false}}}));
    EXPECT_EQ(stored(object, TestManipulator::Smooth).keys, (ParamTrack{{12, {false, true}}}));
    EXPECT_TRUE(stored(object, TestManipulator::Enabled).keys.empty());

    store.setCurrentFrame(20);
    filter.page(object)->size->setValue(12);
    EXPECT_EQ(valueAt(object, TestManipulator::Size, 16), QVariant(8));
    store.setCurrentFrame(16);
    EXPECT_EQ(filter.page(object)->size->value(), 8) << "pages follow the current frame";
    const InstanceState edited = *store.state(object);
    click(object, "theTbAnimate");
    EXPECT_EQ(valueAt(object, TestManipulator::Size, 0), QVariant(8))
        << "what was in force at the current frame stays";
    EXPECT_TRUE(stored(object, TestManipulator::Size).keys.empty());
    stack.undo();
    EXPECT_TRUE(*store.state(object) == edited);
    EXPECT_TRUE(entry(object)->findChild<QToolButton*>("theTbAnimate")->isChecked());
    stack.undo();
    stack.undo();
    EXPECT_TRUE(*store.state(object) == before);
    const int steps = stack.count();
    filter.changeFilterAnimationState(object, true, false);
    EXPECT_EQ(stack.count(), steps) << "done at once when no undo step is asked for";
    EXPECT_TRUE(store.state(object)->animated);
    store.setCurrentFrame(0);
}

TEST_F(Manipulator, EntriesMoveAcrossTypes) {
    const int a = filter.addFilter();
    const int b = other.addFilter();
    const int c = filter.addFilter();
    const auto isEnabled = [&](int object, const char* button) {
        return entry(object)->findChild<QToolButton*>(button)->isEnabled();
    };
    EXPECT_FALSE(isEnabled(a, "theTbUp"));
    EXPECT_TRUE(isEnabled(a, "theTbDown"));
    EXPECT_FALSE(isEnabled(c, "theTbDown"));
    click(a, "theTbDown");
    EXPECT_THAT(renderingOrder(), ElementsAre(b, a, c));
    EXPECT_EQ(stack.undoText(), "Move Test & try down");
    EXPECT_TRUE(isEnabled(a, "theTbUp"));
    click(a, "theTbDown");
    EXPECT_THAT(renderingOrder(), ElementsAre(b, c, a));
    EXPECT_FALSE(isEnabled(a, "theTbDown"));
    click(c, "theTbUp");
    EXPECT_THAT(renderingOrder(), ElementsAre(c, b, a));
    const int steps = stack.count();
    filter.moveFilter(entry(a), nullptr);
    filter.moveFilter(entry(a), entry(a));
    filter.moveFilter(nullptr, entry(a));
    filter.moveFilter(entry(c), other.getFilterGui(b));
    EXPECT_EQ(stack.count(), steps) << "each is where it should go already";
    while (stack.index() > 3) stack.undo();
    EXPECT_THAT(renderingOrder(), ElementsAre(a, b, c));
    click(b, "theTbRemove");
    EXPECT_THAT(renderingOrder(), ElementsAre(a, c));
    QApplication::processEvents();
    stack.undo();
    EXPECT_THAT(renderingOrder(), ElementsAre(a, b, c)) << "back in its place";
}

TEST_F(Manipulator, AWindowThatClosesTakesItsEntriesAndTheyCanBeMadeAgain) {
    const int object = filter.addFilter();
    auto* dialog = new QWidget;
    entry(object)->setParent(dialog);
    delete dialog;
    store.setBaseValue(object, TestManipulator::Size, 3);
    ASSERT_NE(entry(object), nullptr);
    EXPECT_EQ(filter.page(object)->size->value(), 3);
}

}  // namespace
