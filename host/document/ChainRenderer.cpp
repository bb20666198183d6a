#include "host/document/ChainRenderer.h"

#include <new>

#include "framework/contract/FxKernelApi/HkFXKernelData.h"
#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "framework/contract/FxKernelApi/HkImageFilter.h"
#include "host/imaging/Areas.h"
#include "host/imaging/HkImageAccess.h"
#include "host/kernel/HeapWatch.h"
#include "host/kernel/KernelStore.h"
#include "host/kernel/ParamValue.h"
#include "host/kernel/PluginGuard.h"

namespace document {

namespace {

[[noreturn]] void blame(const QString& key, const std::string& deed) {
    throw FilterMisconduct("the filter " + key.toStdString() + ' ' + deed +
                           "; use another plug-in library");
}

/// Calls into the plug-in: whatever it throws becomes an error that names the filter.
template <typename Call>
auto ask(const QString& key, Call call) {
    try {
        return call();
    } catch (const std::bad_alloc&) {
        throw;
    } catch (const std::exception& error) {
        blame(key, std::string("broke off: ") + error.what());
    } catch (...) {
        blame(key, "broke off without a word");
    }
}

}  // namespace

ChainRenderer::ChainRenderer() : ChainRenderer(KernelStore::instance().instances()) {}

ChainRenderer::ChainRenderer(const std::vector<InstanceId>& instances) {
    const KernelStore& store = KernelStore::instance();
    for (const InstanceId& instance : instances) {
        Step step{store.filterKey(instance.typeId), instance.typeId, instance.objectId,
                  FilterLimits(instance.typeId), nullptr};
        HkFilterManipulator* manipulator = store.manipulator(instance.typeId);
        if (manipulator) {
            const PluginQuestion question(
                QStringLiteral("make the per-frame filter of \"%1\"").arg(step.key));
            step.filter.reset(
                ask(step.key, [&] { return manipulator->createImageFilter(instance.objectId); }));
        }
        if (!step.filter) blame(step.key, "cannot be made");
        m_steps.push_back(std::move(step));
    }
}

ChainRenderer::~ChainRenderer() {
    const PluginQuestion question(QStringLiteral("remove the per-frame filters"));
    m_steps.clear();
}

std::unique_ptr<HkImage> ChainRenderer::render(std::unique_ptr<HkImage> image, qint64 frame,
                                               const Observer& observer) {
    const RenderLease lease;
    for (const Step& step : m_steps) {
        const bool works = admits(step, *image, frame);
        if (works && observer.input) observer.input(step.key, *image);
        image = process(step, std::move(image), frame);
        if (works && observer.result) observer.result(step.key, *image);
    }
    return image;
}

bool ChainRenderer::admits(const Step& step, const HkImage& input, qint64 frame) {
    const std::optional<FilterValues> values = valuesAt(step, frame);
    if (!values || !values->isEnabled()) return false;
    if (const auto refusal = step.limits.refusal(*values, input.width, input.height))
        throw FrameRefused(step.key.toStdString(), *refusal);
    return true;
}

std::unique_ptr<HkImage> ChainRenderer::process(const Step& step, std::unique_ptr<HkImage> input,
                                                qint64 frame) {
    const unsigned long failedBefore = failedAllocations();
    // The filter frees the picture it was given when it answers with another one.
    std::unique_ptr<HkImage> result(
        ask(step.key, [&] { return step.filter->processImage(input.release(), frame); }));
    // It may have gone on without that memory: what it gives is not the result then.
    if (failedAllocations() != failedBefore) throw std::bad_alloc();
    if (!result) blame(step.key, "gave no picture");
    if (const char* fault = HkImageAccess::faultOf(*result))
        blame(step.key, std::string("gave a picture that has ") + fault);
    return result;
}

std::unique_ptr<HkImage> ChainRenderer::renderStep(int index, std::unique_ptr<HkImage> input,
                                                   qint64 frame) {
    const RenderLease lease;
    const Step& step = m_steps.at(static_cast<std::size_t>(index));
    admits(step, *input, frame);
    return process(step, std::move(input), frame);
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
                                                     const HkImage& result, qint64 frame) const {
    const RenderLease lease;
    const Step& step = m_steps.at(static_cast<std::size_t>(index));
    const std::optional<FilterValues> values = valuesAt(step, frame);
    if (!values || !values->isEnabled()) return {};
    std::vector<std::string> objections = adviceOnSettings(step.key, *values);
    const std::vector<std::string> onInput = adviceOnInput(step.key, input);
    objections.insert(objections.end(), onInput.begin(), onInput.end());
    if (!onInput.empty()) return objections;  // what comes of a bad picture needs no second line
    for (std::string& advice : adviceOnResult(step.key, result))
        objections.push_back(std::move(advice));
    return objections;
}

bool ChainRenderer::showsObjectsAfter(int index, qint64 frame) const {
    const RenderLease lease;
    for (int i = index; i >= 0; --i) {
        const Step& step = m_steps.at(static_cast<std::size_t>(i));
        const std::optional<FilterValues> values = valuesAt(step, frame);
        if (values && values->isEnabled()) return resultShowsObjects(step.key, *values);
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
