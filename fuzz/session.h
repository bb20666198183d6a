#pragma once

#include "host/render/PluginSession.h"

namespace fuzz {

/// The filters of the library that was built, for all trials of the process: it is never closed.
inline const document::FilterCatalog& filters() {
    static const auto* const session = new render::PluginSession({});
    return session->catalog();
}

}  // namespace fuzz
