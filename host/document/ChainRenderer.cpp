#include "host/document/ChainRenderer.h"

#include <stdexcept>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "host/kernel/KernelStore.h"

namespace document {

ChainRenderer::ChainRenderer() : ChainRenderer(KernelStore::instance().instances()) {}

ChainRenderer::ChainRenderer(const std::vector<InstanceId>& instances) {
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& instance : instances) {
        Step step{store.filterKey(instance.typeId), instance.typeId, instance.objectId,
                  FilterLimits(instance.typeId), nullptr};
        HkFilterManipulator* manipulator = store.manipulator(instance.typeId);
        if (manipulator) step.filter.reset(manipulator->createImageFilter(instance.objectId));
        if (!step.filter)
            throw std::runtime_error("the filter " + step.key.toStdString() + " cannot be made");
        m_steps.push_back(std::move(step));
    }
}

ChainRenderer::~ChainRenderer() = default;

std::unique_ptr<HkImage> ChainRenderer::render(std::unique_ptr<HkImage> image, qint64 frame,
                                               const Observer& observer) {
    const RenderLease lease;
    for (const Step& step : m_steps) {
        const std::optional<FilterValues> values = valuesAt(step, frame);
        const bool works = values && values->isEnabled();
        if (works) {
            const auto refusal = step.limits.refusal(*values, image->width, image->height);
            if (refusal) throw FrameRefused(step.key.toStdString(), *refusal);
            if (observer.input) observer.input(step.key, *image);
        }
        // The filter frees the picture it was given when it answers with another one.
        image.reset(step.filter->processImage(image.release(), frame));
        if (!image)
            throw std::runtime_error("the filter " + step.key.toStdString() + " gave no picture");
        if (works && observer.result) observer.result(step.key, *image);
    }
    return image;
}

bool ChainRenderer::showsObjects(qint64 frame) const {
    const RenderLease lease;
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
        const std::optional<FilterValues> values = valuesAt(*step, frame);
        if (values && values->isEnabled()) return resultShowsObjects(step->key, *values);
    }
    return false;
}

std::optional<FilterValues> ChainRenderer::valuesAt(const Step& step, qint64 frame) {
    const HkKernelObjectData* object =
        HkFXKernelData::getInstance()->getObject(step.typeId, step.objectId);
    if (!object) return {};
    return FilterValues(step.typeId, object->getKeyframesAt(frame));
}

}  // namespace document
