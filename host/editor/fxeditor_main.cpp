#include <QApplication>
#include <QCommandLineParser>
#include <QFile>
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
#include "host/kernel/PluginGuard.h"

namespace {

QString toolkitTexts() {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
}

/// The library that is not the one of this program; empty: there is none.
QString foreignPlugin(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        const QString word = QFile::decodeName(argv[i]);
        if (word == QLatin1String("--plugin") && i + 1 < argc)
            return QFile::decodeName(argv[i + 1]);
        if (word.startsWith(QLatin1String("--plugin="))) return word.mid(word.indexOf('=') + 1);
    }
    return {};
}

int runEditor(int argc, char** argv) {
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
    const QString ownTexts =
        QApplication::applicationDirPath() + QStringLiteral("/../translations");
    QTranslator toolkitTranslator, translator;
    if (toolkitTranslator.load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                               toolkitTexts()))
        QApplication::installTranslator(&toolkitTranslator);
    if (translator.load(QLocale(), QStringLiteral("fxeditor"), QStringLiteral("_"), ownTexts))
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

}  // namespace

int main(int argc, char** argv) {
    const QString plugin = foreignPlugin(argc, argv);
    if (plugin.isEmpty()) return runEditor(argc, argv);
    try {
        return runGuarded(plugin, [&] { return runEditor(argc, argv); });
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fxeditor: %s\n", error.what());
        return 65;
    }
}
