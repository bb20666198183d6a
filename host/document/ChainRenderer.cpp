#include "host/document/ChainRenderer.h"

#include <stdexcept>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "host/kernel/KernelStore.h"

namespace document {

ChainRenderer::ChainRenderer() {
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& instance : store.instances()) {
        Step step;
        step.key = store.filterKey(instance.typeId).toStdString();
        HkFilterManipulator* manipulator = store.manipulator(instance.typeId);
        if (manipulator) step.filter.reset(manipulator->createImageFilter(instance.objectId));
        if (!step.filter) throw std::runtime_error("the filter " + step.key + " cannot be made");
        m_steps.push_back(std::move(step));
    }
}

ChainRenderer::~ChainRenderer() = default;

std::unique_ptr<HkImage> ChainRenderer::render(std::unique_ptr<HkImage> image, qint64 frame) {
    const RenderLease lease;
    for (const Step& step : m_steps) {
        // The filter frees the picture it was given when it answers with another one.
        image.reset(step.filter->processImage(image.release(), frame));
        if (!image) throw std::runtime_error("the filter " + step.key + " gave no picture");
    }
    return image;
}

}  // namespace document
