#pragma once

#include <QUndoStack>
#include <functional>
#include <string>
#include <vector>

class HkFilterManipulator;

namespace check {

/// Whether a filter keeps one promise of the contract.
struct Finding {
    std::string filter;   ///< its key
    std::string promise;  ///< such as "null image"
    std::string fault;    ///< what it does instead; empty: it keeps it
};

/// The promises that are checked of every filter, in their order.
std::vector<std::string> promises();

/// Checks every promise of a filter that is registered with the kernel store and has `undo` as its
/// stack, in a host with a tool box. onBegin is told of each promise before it is checked: broken
/// code may end the process there. Instances that the store holds are removed. GUI thread.
std::vector<Finding> checkFilter(
    HkFilterManipulator& manipulator, QUndoStack& undo,
    const std::function<void(const std::string& promise)>& onBegin = {});

}  // namespace check
