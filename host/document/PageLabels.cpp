#include "host/document/PageLabels.h"

#include <QBoxLayout>
#include <QGridLayout>
#include <QLabel>
#include <QMetaProperty>

namespace document {

namespace {

/// The layout that holds the widget itself, at any depth.
QLayout* holderOf(const QWidget* widget, QLayout* layout) {
    if (!layout || layout->indexOf(const_cast<QWidget*>(widget)) >= 0) return layout;
    for (int i = 0; i < layout->count(); ++i)
        if (QLayout* inner = layout->itemAt(i)->layout())
            if (QLayout* holder = holderOf(widget, inner)) return holder;
    return nullptr;
}

/// The widgets of the control's row, or of its column where it is in one, from left to right.
QList<QWidget*> lineOf(QWidget* control) {
    QList<QWidget*> line;
    QLayout* layout = control->parentWidget() ? control->parentWidget()->layout() : nullptr;
    layout = holderOf(control, layout);
    const auto append = [&line](QLayoutItem* item) {
        if (item && item->widget() && !line.contains(item->widget())) line.append(item->widget());
    };
    if (auto* grid = qobject_cast<QGridLayout*>(layout)) {
        int row = 0, column = 0, rows = 0, columns = 0;
        grid->getItemPosition(grid->indexOf(control), &row, &column, &rows, &columns);
        for (int i = 0; i < grid->columnCount(); ++i) append(grid->itemAtPosition(row, i));
    } else if (layout) {
        for (int i = 0; i < layout->count(); ++i) append(layout->itemAt(i));
    }
    return line;
}

/// The label next to the control in this direction.
QLabel* neighbour(const QList<QWidget*>& line, QWidget* control, const QList<QWidget*>& group,
                  int step, int* position) {
    for (int i = line.indexOf(control) + step; i >= 0 && i < line.size(); i += step) {
        *position = i;
        if (auto* label = qobject_cast<QLabel*>(line[i])) return label;
        if (!group.contains(line[i])) return nullptr;
    }
    return nullptr;
}

QLabel* buddyOf(QWidget* control) {
    for (QLabel* label : control->window()->findChildren<QLabel*>())
        if (label->buddy() == control) return label;
    return nullptr;
}

}  // namespace

PageLabels labelsOf(QWidget* control, const QList<QWidget*>& group) {
    PageLabels labels;
    const QList<QWidget*> line = lineOf(control);
    int position = 0;
    const QLabel* before = buddyOf(control);
    if (!before) before = neighbour(line, control, group, -1, &position);
    if (before) labels.before = plainText(before->text());
    const QLabel* after = neighbour(line, control, group, 1, &position);
    const QWidget* next = after ? line.value(position + 1) : nullptr;
    const bool isAnothers = next && next->metaObject()->userProperty().isValid();
    if (after && after != before && !isAnothers) labels.after = plainText(after->text());
    return labels;
}

QString plainText(const QString& text) {
    QString plain = text.simplified();
    if (plain.endsWith(':')) plain.chop(1);
    return plain.remove('&');
}

}  // namespace document
