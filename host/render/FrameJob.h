#pragma once

#include <cstdint>
#include <vector>

#include "host/media/MediaSink.h"
#include "host/media/MediaSource.h"
#include "host/render/FrameRunner.h"

namespace render {

/// The workers that read frames, run them through the filters of the kernel store and write them;
/// each with filters of its own. The source and the sink must outlive them. GUI thread.
std::vector<FrameWork> renderingWorkers(int count, const media::MediaSource& source,
                                        media::MediaSink& sink);

/// The workers of a dry run: they look at the inputs without decoding or writing anything.
std::vector<FrameWork> inspectingWorkers(int count, const media::MediaSource& source);

}  // namespace render
