#pragma once

#include <QMetaType>
#include <QVariant>
#include <ostream>
#include <vector>

#include "framework/contract/FxKernelApi/ParamDescr.h"

// What each filter of the library promises to its host and to saved documents, written down apart
// from the code.

struct ExpectedParameter {
    const char* name;
    QMetaType::Type type;
    ParamDescr::KeyframeType kind;
    QVariant defaultValue;
};

/// An edit on a fresh page: a slider, given by its object name, is set to `position`; a button,
/// given by its label, is clicked.
struct ExpectedEdit {
    const char* control;
    int position;
    int parameter;    ///< index of the parameter it changes
    QVariant stored;  ///< and what becomes of it
};

struct ExpectedFilter {
    const char* key;
    int typeId;
    const char* className;
    const char* title;
    const char* description;
    const char* icon;
    bool merges;  ///< consecutive edits may become one undo step
    std::vector<ExpectedParameter> parameters;
    std::vector<int> writeOrder;      ///< the order in which defaults are written, and edits
    std::vector<ExpectedEdit> edits;  ///< the first two change the same parameter
};

/// In the order in which the library lists them.
const std::vector<ExpectedFilter>& expectedFilters();

inline void PrintTo(const ExpectedFilter& filter, std::ostream* out) {
    *out << filter.key;
}
