#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/render/Messages.h"
#include "host/render/ResultFile.h"

namespace render {

/// How every plot begins, blanks and line ends left out.
extern const char* const kCountPlotBeginning;

struct PlotPoint {
    std::int64_t frame;
    int objects;  ///< -1: the frame has no number
};

/// What a plot of these inputs is called: "nuclei_####.tif", "a.png and 3 more".
std::string plotTitle(const std::vector<std::string>& inputs);

/// The number of objects over the frames (ascending, at least one) as SVG. A frame without a number
/// is a gap in the line, and is mentioned.
std::string countPlot(const std::string& title, const std::vector<PlotPoint>& points);

/// Writes the plot of a run over these inputs. A run without frames, as a shard may be, has none,
/// which is said. Throws as ResultFile::write() does.
void writeCountPlot(const ResultFile& file, const std::vector<std::string>& inputs,
                    const std::vector<PlotPoint>& points, const Messages& messages);

}  // namespace render
