// Makes the pictures of docs/editor.md: drives the real window and saves what it shows.
// screenshots PICTURES OUT light|dark WIDTH HEIGHT; PICTURES is a folder of sample pictures.
#include <QApplication>
#include <QCheckBox>
#include <QDir>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <cstdio>

#include "host/editor/EditorSession.h"
#include "host/editor/ExportDialog.h"
#include "host/editor/Journal.h"
#include "host/editor/SweepDialog.h"
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
        save(m_window, name);
    }
    void open(const char* picture) {
        m_window.files().open({m_pictures.filePath(QLatin1String(picture))});
        m_driver.settle();
    }
    void save(QWidget& widget, const char* name) {
        QTest::qWait(150);
        widget.grab().save(m_out.filePath(QLatin1String(name) + QStringLiteral(".png")));
    }
    void takeDialogs(int objectId);
    void takeShapes();
    void takeTimeline();
    void takeRecovery();
    void discard() { m_window.document().newEmpty(); }

    editor::MainWindow& m_window;
    EditorDriver m_driver;
    QDir m_pictures;
    QDir m_out;
};

void Photographer::takeAll() {
    take("start");
    open("coffee.png");
    const int blur = m_driver.addFilter(QStringLiteral("Blur and enhance"));
    m_driver.dragSlider(m_driver.control<QSlider>(blur, "theSlBlur"), 9);
    m_driver.addFilter(QStringLiteral("Channel separation"));
    m_driver.trigger("actWipe");
    take("wipe");
    m_driver.trigger("actSideBySide");
    take("side-by-side");
    m_driver.trigger("actSingle");
    m_window.state().setShownStage(blur);
    take("stage");
    takeDialogs(blur);
    discard();

    open("moon.png");
    m_driver.addFilter(QStringLiteral("Degauss"));
    m_driver.trigger("actDifference");
    take("difference");
    m_driver.trigger("actSingle");
    discard();

    open("page.png");
    m_driver.addFilter(QStringLiteral("Adaptive threshold"));
    take("threshold");
    discard();

    open("xy_8bit__touching_objects.tif");
    m_driver.addFilter(QStringLiteral("Object separator"));
    take("warning");
    discard();
    takeShapes();
    takeTimeline();
    takeRecovery();
}

void Photographer::takeShapes() {
    const char* const picture = "xy_8bit_binary__for_open_and_close.tif";
    const struct {
        const char* key;
        const char* name;
    } filters[] = {{"Dilate_Erode", "dilate-erode"}, {"Open_Close", "open-close"}};
    for (const auto& filter : filters) {
        open(picture);
        const int added = m_driver.addFilter(QLatin1String(filter.key));
        auto* slider = m_driver.entry(added).findChild<QSlider*>();
        m_driver.dragSlider(*slider, 2);
        m_driver.trigger("actSideBySide");
        take(filter.name);
        m_driver.trigger("actSingle");
        discard();
    }
    open(picture);
    m_driver.addFilter(QStringLiteral("Object separator"));
    m_driver.trigger("actObjects");
    take("separator");
    m_driver.trigger("actSingle");
    discard();
}

/// As after a crash: a journal that no running program holds.
void Photographer::takeRecovery() {
    open("coffee.png");
    m_driver.addFilter(QStringLiteral("Blur and enhance"));
    m_window.journal().writeNow();
    QFile::copy(m_window.journal().file(),
                QDir(editor::Journal::folder()).filePath(QStringLiteral("left.journal")));
    discard();
    const int untilShown = 300;
    QTimer::singleShot(untilShown, &m_window, [this] {
        QWidget* box = QApplication::activeModalWidget();
        save(*box, "recovery");
        box->close();
    });
    m_window.files().offerRecovery(m_window.journal());
}

void Photographer::takeDialogs(int objectId) {
    m_window.showSweep(objectId);
    auto& sweep = m_driver.child<editor::SweepDialog>("sweepDialog");
    const int minute = 60000;
    if (!QTest::qWaitFor([&] { return sweep.isComplete(); }, minute))
        throw std::runtime_error("the sheet does not get complete");
    save(sweep, "sweep");
    delete &sweep;
    m_driver.trigger("actExport");
    auto& dialog = m_driver.child<editor::ExportDialog>("exportDialog");
    QTemporaryDir output;
    dialog.setOutput(output.filePath(QStringLiteral("coffee.png")));
    m_driver.click(m_driver.child<QPushButton>("exportStart"));
    if (!QTest::qWaitFor([&] { return !dialog.isRunning(); }, minute))
        throw std::runtime_error("the export does not end");
    save(dialog, "export");
    delete &dialog;
}

void Photographer::takeTimeline() {
    open("timelapse");
    // Nuclei are bright and the threshold finds what is dark: inverted before and after.
    const auto addInversion = [&] {
        const int inversion = m_driver.addFilter(QStringLiteral("Channel separation"));
        m_driver.click(m_driver.control<QCheckBox>(inversion, "Invert"));
    };
    addInversion();
    const int threshold = m_driver.addFilter(QStringLiteral("Adaptive threshold"));
    addInversion();
    const int separator = m_driver.addFilter(QStringLiteral("Object separator"));
    m_driver.dragSlider(m_driver.control<QSlider>(separator, "theSlDetails"), 30);
    auto& size = m_driver.control<QSlider>(threshold, "theSlSize");
    auto& level = m_driver.control<QSlider>(threshold, "theSlMin");
    const int levels = level.maximum() - level.minimum();
    m_driver.dragSlider(size, size.maximum());
    m_driver.dragSlider(level, level.minimum() + levels * 2 / 5);
    m_driver.click(m_driver.control<QToolButton>(threshold, "theTbAnimate"));
    m_window.state().setCurrentFrame(20);
    m_driver.dragSlider(level, level.minimum() + levels / 2);
    m_window.state().setCurrentFrame(12);
    m_driver.trigger("actObjects");
    const int untilCounted = 9000;
    QTest::qWait(untilCounted);
    take("timeline");
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
