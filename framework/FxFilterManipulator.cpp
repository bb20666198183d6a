#include "framework/FxFilterManipulator.h"

#include <QCoreApplication>
#include <QSize>
#include <QUndoStack>

#include "framework/FxControlPage.h"
#include "framework/QtCompat.h"
#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFXKernelData.h"

namespace {

/// Raises the edit-in-progress flag while a command is pushed.
class EditInProgress {
public:
    explicit EditInProgress(bool& flag) : m_flag(flag) { m_flag = true; }
    ~EditInProgress() { m_flag = false; }

private:
    bool& m_flag;
};

}  // namespace

FxFilterManipulator::FxFilterManipulator(const FilterFacts& facts, QObject* parent)
    : HkFilterManipulator(parent), m_facts(facts) {
    filterType = facts.typeId;
    connect(mediaNotifier, SIGNAL(signalMediaLoaded()), this, SLOT(slotMediaLoadedInKernel()),
            kAutoCompatConnection);
    m_icon.addFile(QString::fromLatin1(facts.iconResource), QSize(), QIcon::Normal, QIcon::Off);
}

void FxFilterManipulator::initManipulator(QToolBox* toolBox) {
    HkFilterManipulator::initManipulator(toolBox);
    HkFXKernelData* kernel = HkFXKernelData::getInstance();
    registered = kernel->registerFilterType(this, filterType);
    if (!registered) return;

    const ParameterTable& parameters = m_facts.parameters;
    HkKernelObjectDataDescr* descriptor =
        new HkKernelObjectDataDescr(filterType, parameters.count());
    for (int index = 0; index < parameters.count(); ++index) {
        const ParameterRow& row = parameters.row(index);
        bestEffort(descriptor->addParamDescr(static_cast<unsigned int>(index),
                                             QString::fromLatin1(row.name), row.type, row.kind));
    }
    registered =
        kernel->registerDataDescriptor(descriptor, filterType);  // the kernel's from here on
}

QString FxFilterManipulator::filterTitle() {
    return translated(m_facts.title);
}

QIcon FxFilterManipulator::filterIcon() {
    return m_icon;
}

QString FxFilterManipulator::filterDescription() {
    return translated(m_facts.description);
}

QString FxFilterManipulator::filterDetailedDescription() {
    return filterDescription();
}

bool FxFilterManipulator::fillDefaultValues(const HkKernelObjectDataDescr* descr,
                                            HkParamKeyframeVector& values, int /*reserved*/) {
    for (const ParameterRow& row : m_facts.parameters.writtenRows())
        if (!descr->setValue(values, QString::fromLatin1(row.name), row.defaultValue)) return false;
    return true;
}

QWidget* FxFilterManipulator::createFilterGui(QWidget* parent) {
    FxControlPage* page = createPage(parent);
    for (const FxControlPage::ChangeSignal& change : page->changeSignals())
        connect(change.control, change.signal, parent, SLOT(slotGuiControlsChanged()),
                kAutoCompatConnection);
    return page;
}

void FxFilterManipulator::commitGuiChanges(int objectId) {
    const FxControlPage* page = pageOf(objectId);
    if (!page) return;
    const HkKernelObjectData* object = kernelData->getObject(filterType, objectId);
    const HkKernelObjectDataDescr* descriptor = kernelData->getDataDescriptor(filterType);
    if (!object || !descriptor || !undoStack) return;

    HkParamKeyframeVector values = descriptor->createKeyframeVector();
    ValueWriter out(m_facts.parameters, *descriptor, values);
    page->store(out);
    if (object->animated) values.setFrameNumber(static_cast<__int64>(kernelData->currentFrame));

    const EditInProgress edit(editInProgress);
    undoStack->push(
        new CmdChangeObject(filterType, objectId, values, m_facts.merging == EditMerging::Merged));
}

void FxFilterManipulator::updateGuiFromKernel(int objectId, const HkKernelObjectData* object) {
    FxControlPage* page = pageOf(objectId);
    if (!page || !object) return;
    page->showValues(
        ParameterValues(object->getKeyframesAt(static_cast<__int64>(kernelData->currentFrame))));
}

QString FxFilterManipulator::translated(const char* text) const {
    return QCoreApplication::translate(metaObject()->className(), text);
}

FxControlPage* FxFilterManipulator::pageOf(int objectId) {
    const FxGuiImageFilter* entry = getFilterGui(objectId);
    return entry ? dynamic_cast<FxControlPage*>(entry->controlPage) : nullptr;
}
