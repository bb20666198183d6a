#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"

namespace document {

/// Collects what would go wrong when the filters in the kernel store, in their order, run over
/// frames. Each objection is kept once, with the frames it applies to. GUI thread.
class ChainCheck {
public:
    /// Looks at the values in force at a frame of this size.
    void lookAtSettings(std::int64_t frame, int width, int height);

    /// Runs the filters on a picture, as far as one is interested in what reaches it.
    void lookAtPicture(std::int64_t frame, std::unique_ptr<HkImage> picture);
    static bool wantsPicture();

    /// Anything else that was found about a frame.
    void object(std::int64_t frame, const std::string& objection);

    /// One line each, in the order in which they were found: "Degauss: ... (frames 0 to 9)".
    std::vector<std::string> objections() const;

private:
    struct Objection {
        std::string text;
        std::int64_t firstFrame, lastFrame;
        int frameCount;
    };
    std::vector<Objection> m_objections;
};

}  // namespace document
