#include "tests/host/kernel/plugins/TestFilter.h"

#include <QHBoxLayout>
#include <QSignalBlocker>
#include <QUndoStack>

#include "framework/contract/FxKernelApi/CmdChangeObject.h"
#include "framework/contract/FxKernelApi/FxGuiImageFilter.h"
#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "host/kernel/KernelStore.h"

namespace {

class TestImageFilter : public HkImageFilter {
public:
    TestImageFilter(int typeId, int instance) : HkImageFilter(instance), m_typeId(typeId) {}
    int filterTypeId() override { return m_typeId; }
    HkImage* processImage(HkImage* image, __int64) override { return image; }

private:
    int m_typeId;
};

}  // namespace

TestPage::TestPage(QWidget* parent) : QWidget(parent), size(new QSlider(Qt::Horizontal, this)) {
    (new QHBoxLayout(this))->addWidget(size);
    size->setRange(1, 13);
}

TestManipulator::TestManipulator(int typeId, const QString& title)
    : HkFilterManipulator(nullptr), m_title(title) {
    filterType = typeId;
}

void TestManipulator::initManipulator(QToolBox* toolBox) {
    stackAtInit = undoStack;
    HkFilterManipulator::initManipulator(toolBox);
    HkFXKernelData* kernel = HkFXKernelData::getInstance();
    registered = kernel->registerFilterType(this, filterType);
    if (!registered) return;
    auto* descr = new HkKernelObjectDataDescr(filterType, ParameterCount);
    descr->addParamDescr(Enabled, "Enabled", QMetaType::Int, ParamDescr::Constant);
    descr->addParamDescr(Smooth, "Smooth", QMetaType::Bool, ParamDescr::Stepped);
    descr->addParamDescr(Size, "Size", QMetaType::Int, ParamDescr::Interpolated);
    descr->addParamDescr(Gain, "Gain", QMetaType::Double, ParamDescr::Interpolated);
    descr->addParamDescr(Label, "Label", QMetaType::QString, ParamDescr::Stepped);
    registered = kernel->registerDataDescriptor(descr, filterType);
}

QIcon TestManipulator::filterIcon() {
    QPixmap pixmap(22, 22);
    pixmap.fill(Qt::blue);
    return QIcon(pixmap);
}

void TestManipulator::commitGuiChanges(int objectId) {
    const TestPage* shown = page(objectId);
    const HkKernelObjectData* object = kernelData->getObject(filterType, objectId);
    const HkKernelObjectDataDescr* descr = kernelData->getDataDescriptor(filterType);
    if (!shown || !object) return;
    HkParamKeyframeVector values = descr->createKeyframeVector();
    descr->setValue(values, "Size", shown->size->value());
    if (object->animated) values.setFrameNumber(kernelData->currentFrame);
    editInProgress = true;
    undoStack->push(new CmdChangeObject(filterType, objectId, values, true));
    editInProgress = false;
}

HkImageFilter* TestManipulator::createImageFilter(int objectId) {
    return new TestImageFilter(filterType, objectId);
}

QWidget* TestManipulator::createFilterGui(QWidget* parent) {
    auto* made = new TestPage(parent);
    made->size->setMaximum(largestSize);
    connect(made->size, SIGNAL(valueChanged(int)), parent, SLOT(slotGuiControlsChanged()));
    return made;
}

bool TestManipulator::fillDefaultValues(const HkKernelObjectDataDescr* descr,
                                        HkParamKeyframeVector& values, int) {
    return descr->setValue(values, "Enabled", 1) && descr->setValue(values, "Smooth", false) &&
           descr->setValue(values, "Size", 1) && descr->setValue(values, "Gain", 0.5) &&
           descr->setValue(values, "Label", "plain");
}

void TestManipulator::updateGuiFromKernel(int objectId, const HkKernelObjectData* object) {
    TestPage* shown = page(objectId);
    if (!shown) return;
    ++refreshes;
    const HkParamKeyframeVector values = object->getKeyframesAt(kernelData->currentFrame);
    const QSignalBlocker blockSize(shown->size);
    shown->size->setValue(values.at(Size).getValue().toInt());
}

TestPage* TestManipulator::page(int objectId) {
    const FxGuiImageFilter* entry = getFilterGui(objectId);
    return entry ? dynamic_cast<TestPage*>(entry->controlPage) : nullptr;
}

QVariant valueAt(int objectId, TestManipulator::Parameter parameter, qint64 frame) {
    return HkFXKernelData::getInstance()
        ->getObject(TestManipulator::kTypeId, objectId)
        ->getKeyframesAt(frame)
        .at(parameter)
        .getValue();
}

std::vector<int> renderingOrder() {
    std::vector<int> ids;
    for (const InstanceId& id : KernelStore::instance().instances()) ids.push_back(id.objectId);
    return ids;
}
