#pragma once

#include <cstdint>
#include <string>
#include <vector>

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

}  // namespace render
