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
#include "host/editor/FileActions.h"
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

/// Takes --plugin FILE out of the arguments: the toolkit has an option of that name, and would take
/// it away unseen. Empty: the one of this program.
QString takePlugin(int& argc, char** argv) {
    const QByteArray option("--plugin");
    QString file;
    int kept = 1;
    for (int i = 1; i < argc; ++i) {
        const QByteArray word(argv[i]);
        if (word == option && i + 1 < argc)
            file = QFile::decodeName(argv[++i]);
        else if (word.startsWith(option + '='))
            file = QFile::decodeName(word.mid(option.size() + 1));
        else
            argv[kept++] = argv[i];
    }
    argc = kept;
    argv[argc] = nullptr;
    return file;
}

int runEditor(int argc, char** argv, const QString& pluginFile) {
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
    const QCommandLineOption plugin(  // for the help; it is taken before
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
        editor::EditorSession session(pluginFile);
        editor::MainWindow window(session);
        window.show();
        window.files().offerRecovery(window.journal());
        if (!parser.positionalArguments().isEmpty())
            window.files().open(parser.positionalArguments());
        return QApplication::exec();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fxeditor: %s\n", error.what());
        return 65;
    }
}

}  // namespace

int main(int argc, char** argv) {
    const QString plugin = takePlugin(argc, argv);
    if (plugin.isEmpty()) return runEditor(argc, argv, plugin);
    try {
        return runGuarded(plugin, [&] { return runEditor(argc, argv, plugin); });
    } catch (const std::exception& error) {
        std::fprintf(stderr, "fxeditor: %s\n", error.what());
        return 65;
    }
}
