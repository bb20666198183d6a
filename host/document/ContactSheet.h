#pragma once

#include <QImage>
#include <QString>
#include <QStringList>
#include <optional>
#include <vector>

namespace document {

/// A picture on a contact sheet, with the texts below it. The texts stand in the place of a null
/// picture.
struct SheetCell {
    QImage picture;
    QString title;
    QString text;
};

/// Pictures side by side, with labels. Texts are wrapped to the width there is, and none is cut.
struct ContactSheet {
    QString heading;
    QString text;                   ///< below the heading
    std::optional<SheetCell> lead;  ///< beside the heading, above all others
    int columns = 1;
    QSize box;                     ///< the most that a picture takes, pixels of the sheet
    std::vector<SheetCell> cells;  ///< row by row
    QStringList columnHeadings;    ///< of a grid, as many as columns; else empty
    QStringList rowHeadings;       ///< of a grid, as many as rows; else empty
};

/// Needs a QGuiApplication; any thread.
QImage drawContactSheet(const ContactSheet& sheet);

/// By which factor a picture is shown in a box: below 1 to fit in, else a whole number, so that
/// every pixel is seen as it is. scaledForSheet() does it; done twice it changes nothing more.
double sheetScale(const QSize& picture, const QSize& box);
QImage scaledForSheet(const QImage& picture, const QSize& box);

/// "shown at 47 % of 1920 x 1080 pixels", "each pixel shown as 4 x 4".
QString scaleText(const QSize& picture, const QSize& box);

/// Columns and box with which so many pictures of one size are seen as large as possible on a sheet
/// that still fits a screen, and tiny ones enlarged. columns: 0 to choose them as well.
struct SheetPlan {
    int columns = 1;
    QSize box;
};
SheetPlan planSheet(int cells, const QSize& picture, int columns = 0);

}  // namespace document
