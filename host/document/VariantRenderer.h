#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "host/document/ChainRenderer.h"
#include "host/document/ParameterSweep.h"

namespace document {

/// What the chain makes of a frame with one value of each parameter that is tried.
struct Variant {
    int column = 0;                    ///< index of the value in the first sweep
    int row = 0;                       ///< and in the second, if there is one
    std::unique_ptr<HkImage> picture;  ///< null when a filter refuses the frame
    std::string refusal;               ///< why, empty when it does not
    bool showsObjects = false;         ///< see ChainRenderer::showsObjects()
};

/// Renders a frame with several values of one parameter, or of two as a grid, through the filters
/// that the kernel store held when this was made. The user's instances stay as they are: the values
/// are given to instances outside the chain. A tried parameter's keys do not count.
class VariantRenderer {
public:
    /// GUI thread, as is the destructor. Throws as ChainRenderer(), and FilterError when both
    /// sweeps are about the same parameter.
    explicit VariantRenderer(const ParameterSweep& columns,
                             const std::optional<ParameterSweep>& rows = std::nullopt);
    ~VariantRenderer();
    VariantRenderer(const VariantRenderer&) = delete;
    VariantRenderer& operator=(const VariantRenderer&) = delete;

    /// Hands over one variant after the other, row by row; goes on while `take` answers true.
    /// The filters before the first one that is tried work once.
    /// Any thread, one at a time. Throws as ChainRenderer::render(), but what refuses a single
    /// variant is that variant's refusal.
    void render(std::unique_ptr<HkImage> input, qint64 frame,
                const std::function<bool(Variant)>& take);

private:
    InstanceId trialOf(InstanceId original, const std::vector<const ParameterSweep*>& sweeps,
                       const std::vector<std::size_t>& choice);
    void removeTrials();

    std::vector<int> m_trials;  ///< object ids
    std::unique_ptr<ChainRenderer> m_before;
    std::vector<std::unique_ptr<ChainRenderer>> m_variants;  ///< row by row
    std::size_t m_columns;
};

}  // namespace document
