#pragma once

#include <QString>
#include <memory>
#include <optional>
#include <vector>

#include "framework/contract/ImageProcessor/HkImage.h"
#include "host/imaging/PictureViews.h"

namespace editor {

/// Stages of the chain are named by the object id of their filter; these two are the ends.
constexpr int kResultStage = -1;
constexpr int kSourceStage = -2;

/// How the picture is set against the one before it.
enum class Comparison { None, Wipe, SideBySide, Difference, Objects };

using Picture =
    std::shared_ptr<const HkImage>;  ///< shared between cache and windows: never changed

/// What a check objects to, and in which filter.
struct Objection {
    int objectId = 0;
    QString text;
};

/// One rendered frame, as far as it is shown.
struct Preview {
    quint64 request = 0;  ///< the number of the one that it answers
    qint64 frame = 0;
    int stage = kResultStage;
    int width = 0;  ///< of the frame itself; the pictures are smaller when they are reduced
    int height = 0;
    int reduction = 1;

    Picture before;   ///< the input when the result is shown, else what the shown filter got
    Picture after;    ///< the picture after the shown stage
    Picture display;  ///< after, or what the comparison makes of both
    /// before and display at the size at which they are drawn, where that is smaller; or null.
    Picture fittedBefore, fittedDisplay;
    LevelCounts beforeLevels, afterLevels;  ///< come a little later than the pictures

    std::vector<Objection> objections;
    std::optional<int> objectCount;
    QString problem;  ///< why there is no picture, or why it is shown without filters; or empty
    double milliseconds = 0;  ///< spent in filters; what was kept from before costs nothing
};

}  // namespace editor
