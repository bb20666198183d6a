#include "host/document/ContactSheet.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>
#include <cmath>

namespace document {

namespace {

const int kGap = 24;
const int kTextGap = 6;        ///< between a picture and the texts that belong to it
const int kLeastColumn = 180;  ///< labels below that would break into pieces
const QSize kScreen(1920, 1920);
const int kSmall = 240;  ///< pictures with both sides below half of this are enlarged

const QColor kPaper(245, 245, 242);
const QColor kInk(32, 34, 38);
const QColor kFaintInk(92, 96, 104);

QFont sans(int pixels, QFont::Weight weight = QFont::Normal) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

QFont headingFont() {
    return sans(22, QFont::Bold);
}
QFont titleFont() {
    return sans(16, QFont::Bold);
}
QFont textFont() {
    return sans(13);
}

const int kWrapped = Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap | Qt::TextWrapAnywhere;

/// Breaks a line where there is no blank as well: names of files have none.
int heightOf(const QString& text, const QFont& font, int width) {
    if (text.isEmpty()) return 0;
    return QFontMetrics(font).boundingRect(QRect(0, 0, width, 1 << 20), kWrapped, text).height();
}

/// A sheet under way: places and sizes of everything on it.
class Drawing {
public:
    explicit Drawing(const ContactSheet& sheet) : m_sheet(sheet) {
        m_columnWidth = std::max(sheet.box.width(), kLeastColumn);
        for (const QString& heading : sheet.rowHeadings) {
            const int width = QFontMetrics(titleFont()).horizontalAdvance(heading) + 2;
            m_gutter = std::max(m_gutter, std::min(width, kLeastColumn) + kGap);
        }
        m_width = 2 * kGap + m_gutter + sheet.columns * (m_columnWidth + kGap) - kGap;
        if (sheet.lead) m_width = std::max(m_width, 3 * kGap + m_columnWidth + 2 * kLeastColumn);
        m_textHeight = 0;
        for (const SheetCell& cell : sheet.cells)
            m_textHeight = std::max(m_textHeight, textHeightOf(cell));
    }

    QImage draw() {
        QImage image(m_width, height(), QImage::Format_RGB888);
        image.fill(kPaper);
        QPainter painter(&image);
        painter.setRenderHint(QPainter::TextAntialiasing);
        m_painter = &painter;
        int y = drawHead();
        y = drawColumnHeadings(y);
        for (int row = 0; row < rows(); ++row, y += rowHeight()) drawRow(row, y);
        return image;
    }

private:
    int rows() const {
        const int cells = static_cast<int>(m_sheet.cells.size());
        return (cells + m_sheet.columns - 1) / m_sheet.columns;
    }
    int rowHeight() const { return m_sheet.box.height() + m_textHeight + kGap; }
    int columnX(int column) const { return kGap + m_gutter + column * (m_columnWidth + kGap); }

    int headX() const { return m_sheet.lead ? kGap + m_columnWidth + kGap : kGap; }
    int headWidth() const { return m_width - kGap - headX(); }
    int headHeight() const {
        const int heading = heightOf(m_sheet.heading, headingFont(), headWidth());
        const int text = heightOf(m_sheet.text, textFont(), headWidth());
        int height = heading + (text > 0 ? kTextGap + text : 0);
        if (m_sheet.lead)
            height = std::max(height, m_sheet.box.height() + textHeightOf(*m_sheet.lead));
        return height;
    }
    int columnHeadingHeight() const {
        int height = 0;
        for (const QString& heading : m_sheet.columnHeadings)
            height = std::max(height, heightOf(heading, titleFont(), m_columnWidth));
        return height > 0 ? height + kTextGap : 0;
    }
    int height() const {
        return kGap + headHeight() + kGap + columnHeadingHeight() + rows() * rowHeight();
    }

    int textHeightOf(const SheetCell& cell) const {
        const int title = heightOf(cell.title, titleFont(), m_columnWidth);
        const int text = heightOf(cell.text, textFont(), m_columnWidth);
        // Without a picture the text has its place.
        if (cell.picture.isNull() && title == 0) return 0;
        return (title > 0 ? kTextGap + title : 0) + (text > 0 ? kTextGap + text : 0);
    }

    /// Returns the height that the text took.
    int drawText(const QPoint& corner, int width, const QString& text, const QFont& font,
                 const QColor& colour) {
        const int height = heightOf(text, font, width);
        m_painter->setPen(colour);
        m_painter->setFont(font);
        m_painter->drawText(QRect(corner, QSize(width, height)), kWrapped, text);
        return height;
    }

    int drawHead() {
        const QPoint corner(headX(), kGap);
        const int heading = drawText(corner, headWidth(), m_sheet.heading, headingFont(), kInk);
        drawText(corner + QPoint(0, heading + kTextGap), headWidth(), m_sheet.text, textFont(),
                 kFaintInk);
        if (m_sheet.lead) drawCell(QPoint(kGap, kGap), *m_sheet.lead);
        return kGap + headHeight() + kGap;
    }

    int drawColumnHeadings(int y) {
        for (int column = 0; column < m_sheet.columnHeadings.size(); ++column)
            drawText(QPoint(columnX(column), y), m_columnWidth, m_sheet.columnHeadings[column],
                     titleFont(), kInk);
        return y + columnHeadingHeight();
    }

    void drawRow(int row, int y) {
        if (row < m_sheet.rowHeadings.size())
            drawText(QPoint(kGap, y), m_gutter - kGap, m_sheet.rowHeadings[row], titleFont(), kInk);
        for (int column = 0; column < m_sheet.columns; ++column) {
            const auto index = static_cast<std::size_t>(row * m_sheet.columns + column);
            if (index >= m_sheet.cells.size()) return;
            drawCell(QPoint(columnX(column), y), m_sheet.cells[index]);
        }
    }

    void drawCell(const QPoint& corner, const SheetCell& cell) {
        const QRect frame(corner, m_sheet.box);
        QPoint below(corner.x(), frame.bottom() + 1 + kTextGap);
        if (cell.picture.isNull()) {
            m_painter->setPen(kFaintInk);
            m_painter->drawRect(frame.adjusted(0, 0, -1, -1));
            m_painter->setFont(textFont());
            m_painter->drawText(frame.adjusted(8, 8, -8, -8), kWrapped, cell.text);
        } else {
            const QImage shown = scaledForSheet(cell.picture, m_sheet.box);
            QRect place(QPoint(0, 0), shown.size());
            place.moveCenter(frame.center());
            m_painter->fillRect(frame, Qt::black);
            m_painter->drawImage(place.topLeft(), shown);
        }
        if (!cell.title.isEmpty())
            below.ry() += drawText(below, m_columnWidth, cell.title, titleFont(), kInk) + kTextGap;
        if (!cell.picture.isNull())
            drawText(below, m_columnWidth, cell.text, textFont(), kFaintInk);
    }

    const ContactSheet& m_sheet;
    QPainter* m_painter = nullptr;
    int m_columnWidth;
    int m_gutter = 0;  ///< of the headings of rows, with the gap after them
    int m_width;
    int m_textHeight;
};

}  // namespace

QImage drawContactSheet(const ContactSheet& sheet) {
    return Drawing(sheet).draw();
}

double sheetScale(const QSize& picture, const QSize& box) {
    const double fit = std::min(static_cast<double>(box.width()) / picture.width(),
                                static_cast<double>(box.height()) / picture.height());
    return fit < 1 ? fit : std::floor(fit);
}

QImage scaledForSheet(const QImage& picture, const QSize& box) {
    const double scale = sheetScale(picture.size(), box);
    if (scale < 1) return picture.scaled(box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (scale == 1) return picture;
    return picture.scaled(picture.size() * static_cast<int>(scale));
}

QString scaleText(const QSize& picture, const QSize& box) {
    const double scale = sheetScale(picture, box);
    const QString size =
        QStringLiteral("%1 × %2 pixels").arg(picture.width()).arg(picture.height());
    if (scale == 1) return QStringLiteral("%1, shown as they are").arg(size);
    if (scale > 1)
        return QStringLiteral("%1, each shown as %2 × %2").arg(size).arg(static_cast<int>(scale));
    const double percent = 100 * scale;
    return QStringLiteral("%1, shown at %2 %").arg(size).arg(percent, 0, 'f', percent < 10 ? 1 : 0);
}

SheetPlan planSheet(int cells, const QSize& picture, int columns) {
    const auto boxFor = [&](int across) {
        const int rows = (cells + across - 1) / across;
        const int labels = 60;
        const QSize room((kScreen.width() - kGap) / across - kGap,
                         kScreen.height() / rows - kGap - labels);
        // However many there are: smaller pictures would show nothing.
        const QSize most = room.expandedTo(QSize(kLeastColumn, kLeastColumn));
        const double fit = std::min(static_cast<double>(most.width()) / picture.width(),
                                    static_cast<double>(most.height()) / picture.height());
        const int side = std::max(picture.width(), picture.height());
        const double scale = fit < 1 ? fit : std::max(1, kSmall / side);
        return QSize(std::max(1, static_cast<int>(std::lround(picture.width() * scale))),
                     std::max(1, static_cast<int>(std::lround(picture.height() * scale))));
    };
    if (columns > 0) return {columns, boxFor(columns)};
    SheetPlan best = {1, boxFor(1)};
    for (int across = 2; across <= cells; ++across) {
        const QSize box = boxFor(across);
        // Of equal ones the widest that fits: a row is read at a glance.
        const bool fits = across * (std::max(box.width(), kLeastColumn) + kGap) <= kScreen.width();
        if (box.width() > best.box.width() || (fits && box.width() == best.box.width()))
            best = {across, box};
    }
    const int rows = (cells + best.columns - 1) / best.columns;
    return {(cells + rows - 1) / rows, best.box};
}

}  // namespace document
