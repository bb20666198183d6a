#include "host/kernel/UndoGesture.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QPointer>

namespace {

const qint64 kLongestPause = 1000;  // milliseconds

qint64 realMilliseconds() {
    static const QElapsedTimer timer = [] {
        QElapsedTimer started;
        started.start();
        return started;
    }();
    return timer.elapsed();
}

qint64 (*g_clock)() = realMilliseconds;

struct Gesture {
    quint64 number = 0;
    bool ofKeys = false;
    qint64 lastSign = 0;  ///< when it was last seen to go on

    void begin(bool withKey) {
        ++number;
        ofKeys = withKey;
        lastSign = g_clock();
    }
    void goOn() {
        if (g_clock() - lastSign > kLongestPause) begin(false);
        lastSign = g_clock();
    }
};

Gesture g_gesture;

class InputWatcher : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override {
        switch (event->type()) {
            case QEvent::MouseButtonPress:
            case QEvent::MouseButtonDblClick:
                g_gesture.begin(false);
                break;
            case QEvent::MouseButtonRelease:
                endAfterDelivery();
                break;
            case QEvent::MouseMove:
                if (static_cast<QMouseEvent*>(event)->buttons() != Qt::NoButton) g_gesture.goOn();
                break;
            case QEvent::KeyPress:
                g_gesture.goOn();
                if (!g_gesture.ofKeys) g_gesture.begin(true);
                break;
            case QEvent::Wheel:
                g_gesture.goOn();
                break;
            case QEvent::FocusIn:
            case QEvent::FocusOut:
                endGesture();
                break;
            default:
                break;
        }
        return false;
    }

private:
    /// What the release itself brings about belongs to the gesture.
    void endAfterDelivery() {
        g_gesture.goOn();
        const auto endIfStillThere = [number = g_gesture.number] {
            if (g_gesture.number == number) endGesture();
        };
        QMetaObject::invokeMethod(this, endIfStillThere, Qt::QueuedConnection);
    }
};

}  // namespace

quint64 currentGesture() {
    static QPointer<InputWatcher> watcher;  // goes with the application object
    QCoreApplication* application = QCoreApplication::instance();
    if (!watcher && application) {
        watcher = new InputWatcher(application);
        application->installEventFilter(watcher);
    }
    g_gesture.goOn();
    return g_gesture.number;
}

void endGesture() {
    g_gesture.begin(false);
}

void setGestureClock(qint64 (*milliseconds)()) {
    g_clock = milliseconds ? milliseconds : realMilliseconds;
    endGesture();
}
