#include "host/editor/SweepRenderer.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "host/kernel/KernelStore.h"

namespace editor {

quint64 SweepRenderer::start(const std::shared_ptr<const media::MediaSource>& source, qint64 frame,
                             int objectId, const std::vector<InstanceState>& states,
                             int longestSide) {
    stop();
    KernelStore& store = KernelStore::instance();
    const std::vector<InstanceId> order = store.instances();
    const int step = store.positionOf(objectId);
    if (step < 0 || !source) return ++m_run;
    const int typeId = order[static_cast<std::size_t>(step)].typeId;
    for (const InstanceState& state : states) {
        std::vector<InstanceId> instances = order;
        const int trial = store.addTrial(typeId, state);
        instances[static_cast<std::size_t>(step)].objectId = trial;
        m_trials.push_back({trial, std::make_unique<document::ChainRenderer>(instances)});
    }
    const quint64 number = ++m_run;
    m_thread = std::thread([=] { run(number, source, frame, step, longestSide); });
    return number;
}

void SweepRenderer::stop() {
    m_isStopping = true;
    if (m_thread.joinable()) m_thread.join();
    m_isStopping = false;
    for (const Trial& trial : m_trials) KernelStore::instance().removeTrial(trial.objectId);
    m_trials.clear();
}

void SweepRenderer::run(quint64 number, const std::shared_ptr<const media::MediaSource>& source,
                        qint64 frame, int step, int longestSide) {
    std::unique_ptr<HkImage> input;
    try {
        input = source->read(frame);
        for (int before = 0; before < step; ++before)
            input = m_trials.front().chain->renderStep(before, std::move(input), frame);
    } catch (const std::exception&) {
        return;  // the preview of this frame says why
    }
    for (std::size_t index = 0; index < m_trials.size() && !m_isStopping; ++index) {
        document::ChainRenderer& chain = *m_trials[index].chain;
        Cell cell;
        try {
            std::unique_ptr<HkImage> picture = copyPicture(*input);
            for (int at = step; picture && at < chain.stepCount(); ++at)
                picture = chain.renderStep(at, std::move(picture), frame);
            if (picture) {
                cell.objects = chain.objectsIn(*picture, frame);
                const int side = std::max(picture->roiWidth, picture->roiHeight);
                cell.picture = reducedPicture(*picture, std::max(1, side / longestSide));
            }
        } catch (const std::exception&) {
            cell = Cell();
        }
        m_deliver(number, index, cell);
    }
}

}  // namespace editor
