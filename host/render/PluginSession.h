#pragma once

#include <QtGlobal>
#include <memory>
#include <string>

#include "host/document/FilterCatalog.h"

namespace render {

/// The toolkit without a display and the filters of one plug-in in the kernel store, for as long as
/// it lives. One at a time, on the main thread.
class PluginSession {
public:
    /// An empty path means PluginLoader::ownPlugin().
    /// Throws CommandError: MissingInput when the library is not there or cannot be read,
    /// InvalidData when it is refused.
    explicit PluginSession(const std::string& pluginPath);
    ~PluginSession();

    const document::FilterCatalog& catalog() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};

}  // namespace render
