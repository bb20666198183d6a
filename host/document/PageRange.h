#pragma once

#include <optional>
#include <vector>

namespace document {

/// The smallest and the largest value that a control can be brought to.
struct ParameterRange {
    double lowest = 0;
    double highest = 0;
};

/// The ranges that a filter's control page gives its parameters, indexed as declared; none for a
/// parameter that is not on the page, is no number, or whose control knows no bounds.
///
/// Neither a parameter's declaration nor a page says its range, so the page is asked: values are
/// put on it the way a host shows them, read back the way a host commits them, and what comes out
/// is what the controls can hold. Works on an instance of its own, which is gone afterwards, but
/// leaves its steps on the manipulator's undo stack, which is to be cleared then. GUI thread, with
/// a QApplication, and the manipulator initialised with a tool box, without which there is no page.
std::vector<std::optional<ParameterRange>> pageRanges(int typeId);

}  // namespace document
