#include "host/editor/Attempt.h"

#include <QMessageBox>
#include <exception>

namespace editor {

bool attempt(QWidget* window, const QString& heading, const std::function<void()>& work) {
    try {
        work();
        return true;
    } catch (const std::exception& error) {
        QMessageBox box(QMessageBox::Warning, heading, QString::fromUtf8(error.what()),
                        QMessageBox::Ok, window);
        box.setTextFormat(Qt::PlainText);
        box.exec();
        return false;
    }
}

}  // namespace editor
