// Trials of the real window that take too long, or depend too much on the machine, for a test:
//   editor_trial drag FILTER SLIDER SECONDS [BEFORE...]
//       drags a slider on a picture of 1920 x 1080, after the filters named before it, and says how
//       the window kept up
//   editor_trial random SEED SECONDS      random clicks, drags and keys; fails on any warning
//   editor_trial kill-edits SEED COUNT    kills while editing; fails when too much is lost
//   editor_trial kill-saves SEED COUNT    kills while saving; fails when a file is torn
//   editor_trial edit SEED FOLDER         what kill-edits kills
#include <QApplication>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QImage>
#include <QPainter>
#include <QPointer>
#include <QSlider>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QUndoStack>
#include <QWindow>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <functional>

#include "framework/contract/FxKernelApi/HkFilterManipulator.h"
#include "host/editor/EditorSession.h"
#include "host/editor/ExportDialog.h"
#include "host/editor/Theme.h"
#include "tests/host/editor/EditorDriver.h"
#include "tests/host/editor/kill_trials.h"
#include "tests/kit/Dice.h"

namespace {

int g_warnings = 0;

void countWarnings(QtMsgType type, const QMessageLogContext&, const QString& message) {
    // What the toolkit says about a machine without a desktop is not about the editor.
    if (type == QtDebugMsg || type == QtInfoMsg ||
        message.startsWith(QLatin1String("QStandardPaths")) ||
        message.startsWith(QLatin1String("This plugin does not support")))
        return;
    ++g_warnings;
    std::fprintf(stderr, "warning: %s\n", qPrintable(message));
}

QImage largeFrame(int number) {
    QImage image(1920, 1080, QImage::Format_RGB888);
    image.fill(QColor(40, 60, 90));
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    for (int i = 0; i < 900; ++i) {
        painter.setBrush(QColor::fromHsv(i * 37 % 360, 180, 120 + i % 130));
        painter.drawEllipse((i * 211 + number * 17) % 1900, i * 97 % 1060, 12 + i % 40,
                            10 + i % 33);
    }
    return image;
}

double megabytesInUse() {
    std::ifstream status("/proc/self/statm");
    long total = 0, resident = 0;
    status >> total >> resident;
    return static_cast<double>(resident) * 4096 / 1e6;
}

/// Of the calling thread.
qint64 nanosecondsOfWork() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return qint64{time.tv_sec} * 1000000000 + time.tv_nsec;
}

int drag(editor::MainWindow& window, const QTemporaryDir& folder, const QStringList& arguments) {
    EditorDriver driver(window);
    const QString picture = folder.filePath(QStringLiteral("large.png"));
    largeFrame(0).save(picture);
    window.files().open({picture});
    driver.settle();
    for (const QString& before : arguments.mid(5)) driver.addFilter(before);
    const int objectId = driver.addFilter(arguments[2]);
    auto& slider = driver.control<QSlider>(objectId, qPrintable(arguments[3]));
    driver.settle();

    QElapsedTimer clock;
    clock.start();
    qint64 lastTick = 0, longestGap = 0;
    qint64 lastWork = 0,
           longestWork = 0;  // processor time: what others on the machine do not add to
    QTimer heartbeat;
    QObject::connect(&heartbeat, &QTimer::timeout, &window, [&] {
        longestGap = std::max(longestGap, clock.nsecsElapsed() - lastTick);
        lastTick = clock.nsecsElapsed();
        longestWork = std::max(longestWork, nanosecondsOfWork() - lastWork);
        lastWork = nanosecondsOfWork();
    });
    int changes = 0, changesAfterwards = 0, edits = 0;
    QObject::connect(&slider, &QSlider::valueChanged, &window, [&] { ++edits; });
    bool isDragging = true;
    double filterMilliseconds = 0;
    editor::Picture last;
    QObject::connect(&window.state(), &editor::EditorState::previewChanged, &window, [&] {
        const auto preview = window.state().preview();
        if (preview->after == last) return;
        last = preview->after;
        filterMilliseconds += preview->milliseconds;
        ++(isDragging ? changes : changesAfterwards);
    });
    // Through the window system, so that the toolkit knows the button to be down.
    QWindow* handle = window.windowHandle();
    const auto at = [&](int value) {
        return slider.mapTo(&window, driver.handleAt(slider, value));
    };
    at(slider.value());
    QTest::qWait(100);  // until it is scrolled into view
    QTest::mousePress(handle, Qt::LeftButton, {}, at(slider.value()));
    lastTick = clock.nsecsElapsed();
    lastWork = nanosecondsOfWork();
    heartbeat.start(1);
    const int milliseconds = arguments[4].toInt() * 1000;
    const qint64 begin = clock.elapsed();
    while (clock.elapsed() - begin < milliseconds) {
        const double phase = static_cast<double>(clock.elapsed() - begin) / 150;
        const double middle = (slider.minimum() + slider.maximum()) / 2.0;
        const double reach = (slider.maximum() - slider.minimum()) / 2.0;
        QTest::mouseMove(handle, at(static_cast<int>(middle + reach * std::sin(phase))));
        QTest::qWait(8);
    }
    heartbeat.stop();
    const double seconds = static_cast<double>(clock.elapsed() - begin) / 1000;
    isDragging = false;
    QTest::mouseRelease(handle, Qt::LeftButton, {}, at(slider.value()));
    driver.settle();
    QTest::qWait(500);
    driver.settle();
    std::printf(
        "%s after %d filters: %.1f edits/s, %.1f changes/s, longest gap %.1f ms (longest work of "
        "the window %.1f ms), %.1f ms in filters per change, %d pictures after the release\n",
        qPrintable(arguments[2]), static_cast<int>(arguments.size()) - 5, edits / seconds,
        changes / seconds, static_cast<double>(longestGap) / 1e6,
        static_cast<double>(longestWork) / 1e6, filterMilliseconds / std::max(changes, 1),
        changesAfterwards);
    return 0;
}

/// Acts once on whatever is in front.
class Monkey {
public:
    Monkey(editor::MainWindow& window, unsigned seed) : m_window(window), m_dice(seed) {}

    void act() {
        QWidget* front = QApplication::activePopupWidget();
        if (!front) front = QApplication::activeModalWidget();
        // A file dialog can delete files, an export writes them: these are only closed.
        if (qobject_cast<QFileDialog*>(front)) return static_cast<QDialog*>(front)->reject();
        for (QWidget* other : QApplication::topLevelWidgets())
            if (auto* exportDialog = qobject_cast<editor::ExportDialog*>(other))
                if (exportDialog->isVisible()) exportDialog->close();
        if (!front) {
            QWidgetList visible;
            for (QWidget* other : QApplication::topLevelWidgets())
                if (other->isVisible()) visible << other;
            front = visible.isEmpty() || m_dice.upTo(9) > 0 ? &m_window : m_dice.oneOf(visible);
        }
        QWindow* handle = front->windowHandle();
        if (!handle || !front->isVisible()) return;
        const QPointer<QWindow> pointer(handle);
        const QPoint place(m_dice.upTo(handle->width() - 1), m_dice.upTo(handle->height() - 1));
        const auto modifiers = m_dice.upTo(9) == 0 ? Qt::ControlModifier : Qt::NoModifier;
        switch (m_dice.upTo(9)) {
            case 0:
            case 1:
            case 2:
                click(handle, Qt::LeftButton, modifiers, place);
                break;
            case 3:
                click(handle, Qt::LeftButton, modifiers, place);
                if (pointer) click(pointer, Qt::LeftButton, modifiers, place);
                break;
            case 4:
                click(handle, Qt::RightButton, modifiers, place);
                break;
            case 5:
                QTest::mousePress(handle, Qt::LeftButton, modifiers, place);
                for (int step = m_dice.upTo(12); step > 0; --step)
                    if (pointer)
                        QTest::mouseMove(pointer, inside(pointer, m_dice.upTo(160) - 80,
                                                         m_dice.upTo(60) - 30, place));
                if (pointer)
                    QTest::mouseRelease(pointer, Qt::LeftButton, modifiers,
                                        inside(pointer, m_dice.upTo(90), 0, place));
                break;
            case 6:
                press(handle, Qt::Key_Escape);
                break;
            case 7:
                add();
                break;
            default:
                key(handle);
        }
    }

private:
    // What a press opens or closes may take its window away before the release, or make it smaller.
    static void click(QPointer<QWindow> handle, Qt::MouseButton button,
                      Qt::KeyboardModifiers modifiers, QPoint place) {
        QTest::mousePress(handle, button, modifiers, inside(handle, 0, 0, place));
        if (handle) QTest::mouseRelease(handle, button, modifiers, inside(handle, 0, 0, place));
    }
    static QPoint inside(const QPointer<QWindow>& handle, int right, int down, QPoint place) {
        return {std::clamp(place.x() + right, 0, handle->width() - 1),
                std::clamp(place.y() + down, 0, handle->height() - 1)};
    }
    static void press(QPointer<QWindow> handle, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        // Not keyPress(): it goes on with a window that the press of Ctrl has taken away.
        QTest::simulateEvent(handle.data(), true, key, modifiers, QString(), false);
        if (handle) QTest::simulateEvent(handle.data(), false, key, modifiers, QString(), false);
    }

    void add() {
        KernelStore& store = KernelStore::instance();
        if (store.instances().size() > 6)
            m_window.document().session().undoStack().undo();
        else
            store.manipulator(m_dice.oneOf(store.types()))->addFilter();
    }
    void key(QWindow* handle) {
        static const Qt::Key plain[] = {Qt::Key_W,      Qt::Key_S,      Qt::Key_D,     Qt::Key_O,
                                        Qt::Key_P,      Qt::Key_B,      Qt::Key_X,     Qt::Key_K,
                                        Qt::Key_Period, Qt::Key_Comma,  Qt::Key_Space, Qt::Key_Left,
                                        Qt::Key_Right,  Qt::Key_Up,     Qt::Key_Down,  Qt::Key_Tab,
                                        Qt::Key_Delete, Qt::Key_Return, Qt::Key_Home,  Qt::Key_End};
        static const Qt::Key withControl[] = {Qt::Key_Z,    Qt::Key_Y,     Qt::Key_C,     Qt::Key_V,
                                              Qt::Key_A,    Qt::Key_D,     Qt::Key_0,     Qt::Key_1,
                                              Qt::Key_Plus, Qt::Key_Minus, Qt::Key_Period};
        if (m_dice.upTo(2) == 0)
            press(handle, m_dice.oneOf(withControl), Qt::ControlModifier);
        else
            press(handle, m_dice.oneOf(plain));
    }

    editor::MainWindow& m_window;
    Dice m_dice;
};

int actAtRandom(editor::MainWindow& window, const QTemporaryDir& folder,
                const QStringList& arguments) {
    const QString shots = folder.filePath(QStringLiteral("shots"));
    QDir().mkpath(shots);
    for (int number = 0; number < 6; ++number)
        largeFrame(number).scaled(240, 135).save(shots + QStringLiteral("/%1.png").arg(number));
    window.files().open({shots});
    Monkey monkey(window, arguments[2].toUInt());
    QElapsedTimer clock;
    clock.start();
    const qint64 end = arguments[3].toLongLong() * 1000;
    qint64 acts = 0, nextReport = 0;
    // Each act arranges for the next before it begins: it may end in the event loop of a dialog.
    std::function<void()> act = [&] {
        if (clock.elapsed() >= end) return;
        QTimer::singleShot(3, &window, act);
        if (clock.elapsed() >= nextReport) {
            std::printf(
                "%5lld s  %6lld acts  %.0f MB  %d steps  %d windows  %d widgets  %d objects  %d "
                "instances\n",
                static_cast<long long>(clock.elapsed() / 1000), static_cast<long long>(acts),
                megabytesInUse(), window.document().session().undoStack().count(),
                static_cast<int>(QApplication::topLevelWidgets().size()),
                static_cast<int>(QApplication::allWidgets().size()),
                static_cast<int>(window.findChildren<QObject*>().size()),
                KernelStore::instance().liveObjectCount());
            std::fflush(stdout);
            nextReport += std::max<qint64>(end / 20, 1000);
        }
        ++acts;
        if (!window.isVisible()) window.show();
        if (!window.document().source()) {  // closed; what was there is of no interest
            window.document().newFromInputs({shots.toStdString()});
            return;
        }
        // The history of an hour would be what grows.
        if (window.document().session().undoStack().count() > 400)
            window.document().newFromInputs({shots.toStdString()});
        monkey.act();
    };
    act();
    while (clock.elapsed() < end) QTest::qWait(50);
    while (QWidget* front = QApplication::activeModalWidget()) {
        front->close();
        QTest::qWait(10);
    }
    std::printf("%lld acts, %d warnings\n", static_cast<long long>(acts), g_warnings);
    return g_warnings == 0 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    const bool isVictim = argc > 1 && qstrcmp(argv[1], "edit") == 0;  // its parent looks for it
    QTemporaryDir folder;
    qputenv("XDG_CONFIG_HOME", folder.path().toUtf8());
    if (!isVictim) qputenv("XDG_DATA_HOME", folder.path().toUtf8());
    qInstallMessageHandler(countWarnings);
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
    QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("fxeditor"));
    QApplication::setQuitOnLastWindowClosed(false);
    const QStringList arguments = QApplication::arguments();
    const QString what = arguments.value(1);
    const QStringList ofTwo = {QStringLiteral("random"), QStringLiteral("kill-edits"),
                               QStringLiteral("kill-saves"), QStringLiteral("edit")};
    if (!(what == QLatin1String("drag") && arguments.size() >= 5) &&
        !(ofTwo.contains(what) && arguments.size() == 4)) {
        std::fprintf(stderr,
                     "editor_trial drag FILTER SLIDER SECONDS [BEFORE...]\n"
                     "editor_trial random|kill-edits|kill-saves SEED SECONDS|COUNT\n");
        return 2;
    }
    editor::applyTheme(editor::Theme::Dark);
    try {
        editor::EditorSession session(QStringLiteral(FX_PLUGIN));
        const unsigned seed = arguments[2].toUInt();
        if (what == QLatin1String("kill-edits"))
            return killEdits(session, seed, arguments[3].toInt());
        if (what == QLatin1String("kill-saves"))
            return killSaves(session, seed, arguments[3].toInt());
        editor::MainWindow window(session);
        window.resize(1366, 768);
        window.show();
        if (!QTest::qWaitForWindowExposed(&window)) return 1;
        if (isVictim) editForever(window, arguments[3], seed);
        return what == QLatin1String("drag") ? drag(window, folder, arguments)
                                             : actAtRandom(window, folder, arguments);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "editor_trial: %s\n", error.what());
        return 1;
    }
}
