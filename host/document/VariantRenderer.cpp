#include "host/document/VariantRenderer.h"

#include <algorithm>
#include <new>
#include <utility>

#include "host/document/FilterError.h"
#include "host/imaging/PictureViews.h"
#include "host/kernel/KernelStore.h"

namespace document {

VariantRenderer::VariantRenderer(const ParameterSweep& columns,
                                 const std::optional<ParameterSweep>& rows)
    : m_columns(columns.values.size()) {
    if (rows && rows->instance == columns.instance && rows->parameter == columns.parameter)
        throw FilterError(QStringLiteral("rows and columns try the same parameter; try two"));
    std::vector<const ParameterSweep*> sweeps = {&columns};
    if (rows) sweeps.push_back(&*rows);
    const std::vector<InstanceId> chain = KernelStore::instance().instances();
    const auto isTried = [&sweeps](InstanceId instance) {
        return std::any_of(sweeps.begin(), sweeps.end(), [instance](const ParameterSweep* sweep) {
            return sweep->instance == instance;
        });
    };
    const auto firstTried = std::find_if(chain.begin(), chain.end(), isTried);
    try {
        m_before =
            std::make_unique<ChainRenderer>(std::vector<InstanceId>(chain.begin(), firstTried));
        for (std::size_t row = 0; row < (rows ? rows->values.size() : 1); ++row) {
            for (std::size_t column = 0; column < m_columns; ++column) {
                std::vector<InstanceId> rest(firstTried, chain.end());
                for (InstanceId& instance : rest)
                    if (isTried(instance)) instance = trialOf(instance, sweeps, {column, row});
                m_variants.push_back(std::make_unique<ChainRenderer>(rest));
            }
        }
    } catch (...) {
        removeTrials();
        throw;
    }
}

VariantRenderer::~VariantRenderer() {
    removeTrials();
}

void VariantRenderer::render(std::unique_ptr<HkImage> input, qint64 frame,
                             const std::function<bool(Variant)>& take) {
    const std::unique_ptr<HkImage> common = m_before->render(std::move(input), frame);
    for (std::size_t i = 0; i < m_variants.size(); ++i) {
        Variant variant;
        variant.column = static_cast<int>(i % m_columns);
        variant.row = static_cast<int>(i / m_columns);
        try {
            std::unique_ptr<HkImage> copy = copyPicture(*common);
            if (!copy) throw std::bad_alloc();
            variant.picture = m_variants[i]->render(std::move(copy), frame);
            variant.showsObjects = m_variants[i]->showsObjects(frame);
        } catch (const FrameRefused& refusal) {
            variant.refusal = refusal.what();
        }
        if (!take(std::move(variant))) return;
    }
}

InstanceId VariantRenderer::trialOf(InstanceId original,
                                    const std::vector<const ParameterSweep*>& sweeps,
                                    const std::vector<std::size_t>& choice) {
    KernelStore& store = KernelStore::instance();
    InstanceState state = *store.state(original.objectId);
    for (std::size_t i = 0; i < sweeps.size(); ++i) {
        if (!(sweeps[i]->instance == original)) continue;
        InstanceParam& param = state.params.at(static_cast<std::size_t>(sweeps[i]->parameter));
        param.base = sweeps[i]->values[choice[i]];
        param.keys.clear();
    }
    const int trial = store.addTrial(original.typeId, state);
    if (trial < 0)
        throw FilterError(
            QStringLiteral("%1: this value cannot be tried").arg(store.filterKey(original.typeId)));
    m_trials.push_back(trial);
    return {original.typeId, trial};
}

void VariantRenderer::removeTrials() {
    for (const int trial : m_trials) KernelStore::instance().removeTrial(trial);
}

}  // namespace document
