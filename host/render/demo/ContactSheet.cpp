#include "host/render/demo/ContactSheet.h"

#include <QPainter>

namespace render {

namespace {

const int kColumns = 4;
const QSize kPicture(400, 300);
const int kTextHeight = 76;
const int kGap = 24;
const int kHeadingHeight = 64;

const QColor kPaper(245, 245, 242);
const QColor kInk(32, 34, 38);
const QColor kFaintInk(92, 96, 104);

QFont sans(int pixels, QFont::Weight weight = QFont::Normal) {
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setPixelSize(pixels);
    font.setWeight(weight);
    return font;
}

void drawCell(QPainter& painter, const QPoint& corner, const SheetCell& cell) {
    const QRect frame(corner, kPicture);
    // A detail is enlarged dot by dot, so that every pixel can be seen.
    const bool enlarges = cell.picture.width() < kPicture.width();
    const QImage shown =
        cell.picture.scaled(kPicture, Qt::KeepAspectRatio,
                            enlarges ? Qt::FastTransformation : Qt::SmoothTransformation);
    QRect place(QPoint(0, 0), shown.size());
    place.moveCenter(frame.center());
    painter.fillRect(frame, Qt::black);
    painter.drawImage(place.topLeft(), shown);

    QRect line(frame.left(), frame.bottom() + 7, frame.width(), 21);
    painter.setPen(kInk);
    painter.setFont(sans(16, QFont::Bold));
    painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter, cell.title);
    const QRect rest(line.left(), line.bottom() + 3, line.width(), kTextHeight - 30);
    painter.setPen(kFaintInk);
    painter.setFont(sans(13));
    painter.drawText(rest, Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, cell.text);
}

}  // namespace

QImage contactSheet(const QString& heading, const std::vector<SheetCell>& cells) {
    const int rows = (static_cast<int>(cells.size()) + kColumns - 1) / kColumns;
    const int rowHeight = kPicture.height() + kTextHeight + kGap;
    QImage sheet(kColumns * (kPicture.width() + kGap) + kGap, kHeadingHeight + rows * rowHeight,
                 QImage::Format_RGB32);
    sheet.fill(kPaper);
    QPainter painter(&sheet);
    painter.setRenderHint(QPainter::TextAntialiasing);
    painter.setPen(kInk);
    painter.setFont(sans(24, QFont::Bold));
    painter.drawText(QRect(kGap, 0, sheet.width() - 2 * kGap, kHeadingHeight),
                     Qt::AlignLeft | Qt::AlignVCenter, heading);
    for (int i = 0; i < static_cast<int>(cells.size()); ++i) {
        const QPoint corner(kGap + i % kColumns * (kPicture.width() + kGap),
                            kHeadingHeight + i / kColumns * rowHeight);
        drawCell(painter, corner, cells[static_cast<std::size_t>(i)]);
    }
    return sheet;
}

}  // namespace render
