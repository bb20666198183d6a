// Makes the pictures of docs/editor.md: drives the real window and saves what it shows.
// screenshots PICTURES OUT light|dark WIDTH HEIGHT; PICTURES is a folder of sample pictures.
#include <QApplication>
#include <QDir>
#include <QSettings>
#include <QTemporaryDir>
#include <QTest>
#include <cstdio>

#include "host/editor/EditorSession.h"
#include "host/editor/Theme.h"
#include "tests/host/editor/EditorDriver.h"

namespace {

class Photographer {
public:
    Photographer(editor::MainWindow& window, const QDir& pictures, const QDir& out)
        : m_window(window), m_driver(window), m_pictures(pictures), m_out(out) {}

    void takeAll();

private:
    void take(const char* name) {
        m_driver.settle();
        QTest::qWait(150);
        m_window.grab().save(m_out.filePath(QLatin1String(name) + QStringLiteral(".png")));
    }
    void open(const char* picture) {
        m_window.open({m_pictures.filePath(QLatin1String(picture))});
        m_driver.settle();
    }
    void discard() { m_window.document().newEmpty(); }

    editor::MainWindow& m_window;
    EditorDriver m_driver;
    QDir m_pictures;
    QDir m_out;
};

void Photographer::takeAll() {
    take("start");
    open("coffee.png");
    take("opened");
    const int blur = m_driver.addFilter(QStringLiteral("Blur and enhance"));
    m_driver.dragSlider(m_driver.control<QSlider>(blur, "theSlBlur"), 9);
    m_driver.addFilter(QStringLiteral("Channel separation"));
    m_driver.trigger("actWipe");
    take("wipe");
    m_driver.trigger("actSideBySide");
    take("side-by-side");
    m_driver.trigger("actDifference");
    take("difference");
    m_driver.trigger("actSingle");
    m_window.state().setShownStage(blur);
    take("stage");
    discard();
    open("coins.png");
    m_driver.addFilter(QStringLiteral("Adaptive threshold"));
    m_driver.addFilter(QStringLiteral("Object separator"));
    m_driver.trigger("actObjects");
    take("objects");
    m_driver.trigger("actSingle");
    discard();
}

}  // namespace

int main(int argc, char** argv) {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
#endif
    QTemporaryDir home;  // nothing of the caller's settings shows, or is changed
    qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
    qputenv("XDG_DATA_HOME", home.path().toUtf8());
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("fxeditor"));
    QApplication::setApplicationName(QStringLiteral("fxeditor"));
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 6) {
        std::fprintf(stderr, "screenshots PICTURES OUT light|dark WIDTH HEIGHT\n");
        return 2;
    }
    editor::applyTheme(editor::themeOfName(arguments[3]));
    QDir().mkpath(arguments[2]);
    try {
        editor::EditorSession session(QStringLiteral(FX_PLUGIN));
        editor::MainWindow window(session);
        window.resize(arguments[4].toInt(), arguments[5].toInt());
        window.show();
        Photographer(window, QDir(arguments[1]), QDir(arguments[2])).takeAll();
    } catch (const std::exception& error) {
        std::fprintf(stderr, "screenshots: %s\n", error.what());
        return 1;
    }
}
