#pragma once

#include <QImage>
#include <QString>
#include <vector>

namespace render {

/// A picture on a contact sheet with the text below it.
struct SheetCell {
    QImage picture;
    QString title;
    QString text;  ///< wrapped to the width of the cell
};

/// One picture of all the cells, row by row, with a heading. Needs a QGuiApplication.
QImage contactSheet(const QString& heading, const std::vector<SheetCell>& cells);

}  // namespace render
