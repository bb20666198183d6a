#pragma once

#include <QList>
#include <QString>

class QWidget;

namespace document {

/// The labels of a control, empty where there is none.
struct PageLabels {
    QString before;  ///< to the left of it or above, or that it is the buddy of
    QString after;   ///< to the right of it
};

/// Looks for labels in the layout of the control. Widgets of the `group`, to which the control
/// belongs, may stand between it and a label, no others. A label that stands before another control
/// belongs to that one.
PageLabels labelsOf(QWidget* control, const QList<QWidget*>& group);

/// A label's text without the marks for the keyboard and the colon at its end.
QString plainText(const QString& text);

}  // namespace document
