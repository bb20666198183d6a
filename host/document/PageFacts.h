#pragma once

#include <QString>
#include <optional>
#include <vector>

namespace document {

/// The smallest and the largest value that a control can be brought to.
struct ParameterRange {
    double lowest = 0;
    double highest = 0;
};

/// One of a row of buttons, or of a list.
struct ParameterChoice {
    int value = 0;
    QString text;     ///< as the page shows it
    QString toolTip;  ///< empty where the page has none, as are all texts below
    QString whatsThis;
};

/// What a filter's control page tells about one parameter; nothing of one that is not on it.
struct ParameterFacts {
    QString label;  ///< the text beside the control, or that of a check box
    /// The texts at both ends of a slider, which name its directions; then there is no label.
    QString lowEnd, highEnd;
    QString toolTip, whatsThis;
    std::optional<ParameterRange> range;   ///< of a number whose control knows bounds
    std::vector<ParameterChoice> choices;  ///< by rising value; empty unless it is chosen by name
};

/// The facts about a filter's parameters, indexed as declared.
///
/// Neither a parameter's declaration nor the contract says these things, so the page is asked:
/// values are put on it the way a host shows them, and what comes back when it is committed is what
/// the controls can hold; the controls that change meanwhile are the parameter's own, and their
/// texts are its explanation.
///
/// Found at the first call for a type, on an instance of its own and with an undo stack of its own;
/// both are gone afterwards. GUI thread, with a QApplication, and a manipulator that was
/// initialised with a tool box: without one there is no page. The result lives as long as the
/// manipulator.
const std::vector<ParameterFacts>& pageFacts(int typeId);

}  // namespace document
