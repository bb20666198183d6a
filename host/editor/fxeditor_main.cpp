#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QSettings>
#include <QTranslator>
#include <cstdio>
#include <exception>

#include "host/editor/EditorSession.h"
#include "host/editor/MainWindow.h"
#include "host/editor/Theme.h"

namespace {

QString toolkitTexts() {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
}

}  // namespace

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

    QApplication::setWindowIcon(QIcon(QStringLiteral(":/editor/fxeditor.svg")));
    QApplication::setDesktopFileName(QStringLiteral("fxeditor"));
    // The toolkit's own texts (Cancel, Save) first: what the editor says goes before them.
    QTranslator toolkitTranslator, translator;
    if (toolkitTranslator.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                               toolkitTexts()))
        QApplication::installTranslator(&toolkitTranslator);
    if (translator.load(QLocale(), QStringLiteral("fxeditor"), QStringLiteral("_"),
                        QStringLiteral(":/translations")))
        QApplication::installTranslator(&translator);

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
        window.offerRecovery();
        if (!parser.positionalArguments().isEmpty()) window.open(parser.positionalArguments());
        return QApplication::exec();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fxeditor: %s\n", error.what());
        return 65;
    }
}
