#include "host/kernel/UndoGesture.h"

#include <QCoreApplication>
#include <QEvent>
#include <QPointer>

namespace {

quint64 g_gesture = 0;

class ReleaseWatcher : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() == QEvent::MouseButtonRelease) ++g_gesture;
        return false;
    }
};

}  // namespace

quint64 currentGesture() {
    static QPointer<ReleaseWatcher> watcher;  // goes with the application object
    QCoreApplication* application = QCoreApplication::instance();
    if (!watcher && application) {
        watcher = new ReleaseWatcher(application);
        application->installEventFilter(watcher);
    }
    return g_gesture;
}
