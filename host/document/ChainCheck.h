#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"
#include "host/document/FilterLimits.h"
#include "host/kernel/InstanceState.h"

namespace document {

/// What to say about keys before the first and after the last of the frames there are, for the
/// parameters that have some: "Blur has a key at frame 20, and the input has frames 0 to 4; ...".
std::vector<std::string> adviceOnKeys(const InstanceState& state,
                                      const HkKernelObjectDataDescr& descr, std::int64_t firstFrame,
                                      std::int64_t lastFrame);

/// Collects what would go wrong when the filters in the kernel store, in their order, run over
/// frames. Each objection is kept once, with the frames it applies to. GUI thread.
class ChainCheck {
public:
    ChainCheck();

    /// Looks for keys before the first and after the last of the frames there are.
    void lookAtKeys(std::int64_t firstFrame, std::int64_t lastFrame);

    /// Looks at the values in force at a frame of this size.
    void lookAtSettings(std::int64_t frame, int width, int height);

    /// Runs the filters on a picture, as far as one is interested in what reaches it or what it
    /// makes.
    void lookAtPicture(std::int64_t frame, std::unique_ptr<HkImage> picture);
    bool wantsPicture(int channels) const;

    /// Anything else that was found about a frame.
    void object(std::int64_t frame, const std::string& objection);

    /// One line each, in the order in which they were found: "Degauss: ... (frame 3)".
    std::vector<std::string> objections() const;

    /// Those of them that do not keep a frame from being rendered.
    std::vector<std::string> advice() const;

    /// What was found about this frame, without naming it.
    std::vector<std::string> objectionsAt(std::int64_t frame) const;

private:
    enum Kind { Advice, Obstacle };
    struct Objection {
        Kind kind;
        std::string text;
        std::set<std::int64_t> frames;  ///< empty: it is about none in particular
    };
    struct Instance {
        int typeId, objectId;
        QString key;
        FilterLimits limits;
    };
    void note(Kind kind, std::int64_t frame, const std::string& text);
    static std::string line(const Objection& objection);

    std::vector<Instance> m_instances;
    std::vector<Objection> m_objections;
};

}  // namespace document
