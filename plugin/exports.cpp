#include <QtPlugin>

#include "plugin/FxFilterPluginBasic.h"

/// The build key of the host's toolkit. The host compares it with its own before it touches
/// anything else.
extern "C" Q_DECL_EXPORT const char* qt_plugin_query_verification_data() {
    return "pattern=QT_PLUGIN_VERIFICATION_DATA\n"
           "version=4.7.1\n"
           "debug=false\n"
           "buildkey=Windows msvc release full-config";
}

#if QT_VERSION < 0x050000
// Not Q_EXPORT_PLUGIN2: that would bring a verification text of its own.
extern "C" Q_DECL_EXPORT QObject* qt_plugin_instance() Q_PLUGIN_INSTANCE(FxFilterPluginBasic)
#endif
