#include "host/render/DisplaylessApplication.h"

#include <cstdio>

#include "host/media/file_names.h"

namespace render {

namespace {

/// What the toolkit says about the user's desktop does not concern a renderer.
void printToolkitMessage(QtMsgType, const QMessageLogContext&, const QString& message) {
    if (message.startsWith(QLatin1String("QStandardPaths: "))) return;
    std::fprintf(stderr, "%s\n", media::shown(message.toStdString()).c_str());
}

}  // namespace

DisplaylessApplication::DisplaylessApplication() {
    qInstallMessageHandler(printToolkitMessage);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qunsetenv("QT_QPA_PLATFORMTHEME");
    qunsetenv("QT_STYLE_OVERRIDE");
    m_application = std::make_unique<QApplication>(m_argumentCount, m_arguments);
}

}  // namespace render
