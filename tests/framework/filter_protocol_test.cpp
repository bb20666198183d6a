// What every filter of the library owes its host.

#include <gtest/gtest.h>

#include <QImage>
#include <QImageReader>
#include <QPixmap>
#include <cstddef>
#include <cstring>

#include "framework/contract/FxKernelApi/HkFXKernelCommand.h"
#include "host/kernel/KernelNotifier.h"
#include "host/kernel/KernelStore.h"
#include "tests/kit/ExpectedFilters.h"
#include "tests/kit/FilterHost.h"

namespace {

const int kEnabled = 0;

/// Reads the flag that a manipulator shares with its host only.
struct EditFlag : HkFilterManipulator {
    static bool of(HkFilterManipulator& manipulator) {
        return manipulator.*(&EditFlag::editInProgress);
    }
};

class FilterProtocol : public testing::TestWithParam<ExpectedFilter> {
protected:
    const ExpectedFilter& expected() const { return GetParam(); }
};

}  // namespace

TEST_P(FilterProtocol, SaysWhatItIs) {
    const auto manipulator = makeManipulator(expected().key);
    EXPECT_EQ(KernelStore::filterTypeOf(*manipulator), expected().typeId);
    EXPECT_EQ(manipulator->filterTitle().toStdString(), expected().title);
    EXPECT_EQ(manipulator->filterDescription().toStdString(), expected().description);
    EXPECT_EQ(manipulator->filterDetailedDescription(), manipulator->filterDescription());
    const std::unique_ptr<HkImageFilter> filter(manipulator->createImageFilter(1));
    EXPECT_EQ(filter->filterTypeId(), expected().typeId);
    // The meta-object follows the host's base class directly.
    EXPECT_STREQ(manipulator->metaObject()->className(), expected().className);
    EXPECT_STREQ(manipulator->metaObject()->superClass()->className(), "HkFilterManipulator");
    EXPECT_EQ(manipulator->qt_metacast(expected().className), manipulator.get());
    EXPECT_EQ(manipulator->qt_metacast("HkFilterManipulator"), manipulator.get());
    EXPECT_EQ(manipulator->qt_metacast("FxFilterManipulator"), nullptr);
}

// That undo and redo bring values and page back is a promise of the contract, which fxcheck checks.
TEST_P(FilterProtocol, AnEditStoresItsValueAndNothingElse) {
    for (const ExpectedEdit& edit : expected().edits) {
        SCOPED_TRACE(edit.control);
        FilterHost host(expected().key);
        host.set(kEnabled, 7);
        std::vector<bool> inProgress;
        QObject::connect(KernelNotifier::instance(), &KernelNotifier::objectChanged,
                         host.manipulator.get(),
                         [&] { inProgress.push_back(EditFlag::of(*host.manipulator)); });

        host.edit(edit.control, edit.position);
        EXPECT_EQ(host.undo.count(), 1);
        EXPECT_EQ(host.value(edit.parameter), edit.stored);
        EXPECT_EQ(host.value(kEnabled), QVariant(7)) << "the page carries no \"Enabled\"";
        EXPECT_EQ(inProgress, std::vector<bool>{true});
        EXPECT_FALSE(EditFlag::of(*host.manipulator));

        host.undo.undo();
        host.undo.redo();
        EXPECT_EQ(inProgress, (std::vector<bool>{true, false, false}));
    }
}

TEST_P(FilterProtocol, NothingHappensWithoutAPage) {
    const ExpectedEdit& edit = expected().edits.front();
    FilterHost host(expected().key);
    const auto* object = HkFXKernelData::getInstance()->getObject(host.typeId, host.objectId);
    host.editUnnoticed(edit.control, edit.position);
    QWidget* const page = host.entry().controlPage;
    host.entry().controlPage = nullptr;
    for (const int objectId : {host.objectId, -5}) {
        host.manipulator->commitGuiChanges(objectId);
        host.manipulator->updateGuiFromKernel(objectId, object);
    }
    host.entry().controlPage = page;
    EXPECT_EQ(host.undo.count(), 0);
    EXPECT_EQ(host.position(edit.control), edit.position);
    host.manipulator->commitGuiChanges(host.objectId);
    EXPECT_EQ(host.undo.count(), 1);
}

INSTANTIATE_TEST_SUITE_P(Filters, FilterProtocol, testing::ValuesIn(expectedFilters()),
                         [](const auto& row) { return std::string(row.param.className); });

TEST(FilterIcons, AreSmallPicturesThatDiffer) {
    std::vector<QImage> seen;
    for (const ExpectedFilter& filter : expectedFilters()) {
        const auto manipulator = makeManipulator(filter.key);
        const QString resource = QString::fromLatin1(filter.icon);
        EXPECT_EQ(QImageReader(resource).size(), QSize(22, 22)) << filter.icon;
        const QImage image = manipulator->filterIcon().pixmap(22, 22).toImage();
        EXPECT_EQ(image, QIcon(resource).pixmap(22, 22).toImage()) << filter.icon;
        for (const QImage& other : seen) EXPECT_NE(image, other) << filter.icon;
        seen.push_back(image);
    }
}

// The host's binary interface

namespace {

/// Where a virtual operation stands in its class's table of functions, from 0. Read from the
/// pointer to member, as the Itanium C++ ABI lays it out (on some processors one is added to the
/// offset).
template <class Operation>
int slotOf(Operation operation) {
    static_assert(sizeof operation >= sizeof(std::ptrdiff_t), "a pointer to a virtual operation");
    std::ptrdiff_t offset = 0;
    std::memcpy(&offset, &operation, sizeof offset);
    return static_cast<int>(offset / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

template <class... Operation>
void expectSlots(int first, Operation... operations) {
    for (const int slot : {slotOf(operations)...}) EXPECT_EQ(slot, first++);
}

}  // namespace

TEST(BinaryInterface, OperationsStandInTheHostsOrder) {
    // After those of QObject: metaObject, qt_metacast, qt_metacall, two destructors, event,
    // eventFilter, timerEvent, childEvent, customEvent, connectNotify, disconnectNotify.
    using M = HkFilterManipulator;
    expectSlots(12, &M::initManipulator, &M::setUndoStack, &M::setCvEditor, &M::filterTitle,
                &M::filterIcon, &M::filterDescription, &M::filterDetailedDescription,
                &M::getFilterGui, &M::commitGuiChanges, &M::removeFilter, &M::moveFilter,
                &M::enableFilter, &M::changeFilterAnimationState, &M::constructDataObject,
                &M::createImageFilter, &M::createFilterGui, &M::fillDefaultValues,
                &M::updateGuiFromKernel);
    // After two destructors.
    expectSlots(2, &HkImageFilter::filterTypeId, &HkImageFilter::processImage);
    expectSlots(2, &HkFilterManipulatorPluginInterface::keys,
                &HkFilterManipulatorPluginInterface::create);
    // After QUndoCommand's undo, redo, id and mergeWith.
    expectSlots(5, &HkFXKernelCommand::mergeWith, &HkFXKernelCommand::mergeMeWith);
}
