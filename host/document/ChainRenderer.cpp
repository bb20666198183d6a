#include "host/document/ChainRenderer.h"

#include <stdexcept>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "host/imaging/AreaCount.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"

namespace document {

ChainRenderer::ChainRenderer() : ChainRenderer(KernelStore::instance().instances()) {}

ChainRenderer::ChainRenderer(const std::vector<InstanceId>& instances) {
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& instance : instances) {
        Step step;
        step.typeId = instance.typeId;
        step.objectId = instance.objectId;
        step.key = store.filterKey(instance.typeId).toStdString();
        HkFilterManipulator* manipulator = store.manipulator(instance.typeId);
        if (manipulator) step.filter.reset(manipulator->createImageFilter(instance.objectId));
        if (!step.filter) throw std::runtime_error("the filter " + step.key + " cannot be made");
        m_steps.push_back(std::move(step));
    }
}

ChainRenderer::~ChainRenderer() = default;

std::unique_ptr<HkImage> ChainRenderer::render(std::unique_ptr<HkImage> image, qint64 frame,
                                               const Observer& observer) {
    const RenderLease lease;
    for (int i = 0; i < stepCount(); ++i) {
        if (observer) {
            const Step& step = m_steps[static_cast<std::size_t>(i)];
            const std::optional<FilterValues> values = valuesAt(step, frame);
            if (values && values->isEnabled()) observer(step.key, *image);
        }
        image = renderStep(i, std::move(image), frame);
    }
    return image;
}

std::unique_ptr<HkImage> ChainRenderer::renderStep(int index, std::unique_ptr<HkImage> input,
                                                   qint64 frame) {
    const RenderLease lease;
    const Step& step = m_steps.at(static_cast<std::size_t>(index));
    // The filter frees the picture it was given when it answers with another one.
    std::unique_ptr<HkImage> result(step.filter->processImage(input.release(), frame));
    if (!result) throw std::runtime_error("the filter " + step.key + " gave no picture");
    return result;
}

std::string ChainRenderer::settingsOf(int index, qint64 frame) const {
    const RenderLease lease;
    const Step& step = m_steps.at(static_cast<std::size_t>(index));
    const HkKernelObjectData* object =
        HkFXKernelData::getInstance()->getObject(step.typeId, step.objectId);
    std::string text = std::to_string(step.typeId);
    if (!object) return text;
    for (const HkParamKeyframe& value : object->getKeyframesAt(frame))
        text += ' ' + paramValueText(value.getValue()).toStdString();
    return text;
}

std::vector<std::string> ChainRenderer::objectionsTo(int index, const HkImage& input,
                                                     qint64 frame) const {
    const RenderLease lease;
    const Step& step = m_steps.at(static_cast<std::size_t>(index));
    const std::optional<FilterValues> values = valuesAt(step, frame);
    if (!values || !values->isEnabled()) return {};
    const QString key = QString::fromStdString(step.key);
    std::vector<std::string> objections =
        adviceOnSettings(key, *values, input.roiWidth, input.roiHeight);
    for (std::string& advice : adviceOnPicture(key, input)) objections.push_back(std::move(advice));
    return objections;
}

bool ChainRenderer::showsObjectsAfter(int index, qint64 frame) const {
    const RenderLease lease;
    for (int i = index; i >= 0; --i) {
        const Step& step = m_steps.at(static_cast<std::size_t>(i));
        const std::optional<FilterValues> values = valuesAt(step, frame);
        if (values && values->isEnabled())
            return resultShowsObjects(QString::fromStdString(step.key), *values);
    }
    return false;
}

std::optional<int> ChainRenderer::objectsIn(const HkImage& result, qint64 frame) const {
    if (!showsObjectsAfter(stepCount() - 1, frame)) return {};
    const int count = countWhiteAreas(result);
    return count < 0 ? std::optional<int>() : count;
}

std::optional<FilterValues> ChainRenderer::valuesAt(const Step& step, qint64 frame) {
    const HkKernelObjectData* object =
        HkFXKernelData::getInstance()->getObject(step.typeId, step.objectId);
    if (!object) return {};
    return FilterValues(step.typeId, object->getKeyframesAt(frame));
}

}  // namespace document
