#include <QApplication>
#include <QCommandLineParser>
#include <QSettings>
#include <cstdio>
#include <exception>

#include "host/editor/EditorSession.h"
#include "host/editor/MainWindow.h"
#include "host/editor/Theme.h"

int main(int argc, char** argv) {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QGuiApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
#endif
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("fxeditor"));
    QApplication::setApplicationName(QStringLiteral("fxeditor"));
    QApplication::setApplicationVersion(QStringLiteral(FX_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QCoreApplication::translate(
        "fxeditor", "Applies image filters to pictures and sequences, with a preview."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption plugin(
        QStringLiteral("plugin"),
        QCoreApplication::translate("fxeditor",
                                    "The plug-in library, if not the one of this program"),
        QStringLiteral("FILE"));
    const QCommandLineOption theme(
        QStringLiteral("theme"), QCoreApplication::translate("fxeditor", "system, light or dark"),
        QStringLiteral("NAME"), QSettings().value(QStringLiteral("theme")).toString());
    parser.addOptions({plugin, theme});
    parser.addPositionalArgument(
        QStringLiteral("FILES"),
        QCoreApplication::translate(
            "fxeditor", "A project, pictures, a numbered sequence (shot_####.png) or a folder"));
    parser.process(application);

    editor::applyTheme(editor::themeOfName(parser.value(theme)));
    try {
        editor::EditorSession session(parser.value(plugin));
        editor::MainWindow window(session);
        window.show();
        if (!parser.positionalArguments().isEmpty())
            window.open(parser.positionalArguments());
        else
            window.offerRecovery();
        return QApplication::exec();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fxeditor: %s\n", error.what());
        return 65;
    }
}
