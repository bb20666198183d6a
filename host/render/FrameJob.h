#pragma once

#include <vector>

#include "host/media/MediaSource.h"
#include "host/render/FrameRunner.h"
#include "host/render/ResultTaker.h"

namespace render {

/// The workers that read frames, run them through the filters of the kernel store and hand them to
/// the taker; each with filters of its own. What they are given must outlive them. GUI thread.
std::vector<FrameWork> renderingWorkers(int count, const media::MediaSource& source,
                                        ResultTaker& taker);

/// The workers of a dry run: they look at the inputs without decoding or writing anything.
std::vector<FrameWork> inspectingWorkers(int count, const media::MediaSource& source);

}  // namespace render
