#include "host/kernel/EntryIcons.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>

namespace {

// The glyphs are drawn on a field of 16 x 16.
QPainterPath outline(EntryGlyph glyph) {
    QPainterPath path;
    switch (glyph) {
        case EntryGlyph::Keyframe:
            path.addPolygon(QPolygonF({{8, 2.5}, {13.5, 8}, {8, 13.5}, {2.5, 8}, {8, 2.5}}));
            break;
        case EntryGlyph::Up:
            path.moveTo(3.5, 10.5);
            path.lineTo(8, 6);
            path.lineTo(12.5, 10.5);
            break;
        case EntryGlyph::Down:
            path.moveTo(3.5, 6);
            path.lineTo(8, 10.5);
            path.lineTo(12.5, 6);
            break;
        case EntryGlyph::Remove:
            path.moveTo(4, 4);
            path.lineTo(12, 12);
            path.moveTo(12, 4);
            path.lineTo(4, 12);
            break;
    }
    return path;
}

class GlyphEngine : public QIconEngine {
public:
    explicit GlyphEngine(EntryGlyph glyph) : m_glyph(glyph) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const QPalette palette = QGuiApplication::palette();
        const auto group = mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active;
        const bool isLit = m_glyph == EntryGlyph::Keyframe && state == QIcon::On;
        const QColor& colour =
            palette.color(group, isLit ? QPalette::Highlight : QPalette::ButtonText);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / 16.0, rect.height() / 16.0);
        painter->setPen(QPen(colour, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->setBrush(isLit ? QBrush(colour) : QBrush(Qt::NoBrush));
        painter->drawPath(outline(m_glyph));
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new GlyphEngine(m_glyph); }

private:
    EntryGlyph m_glyph;
};

}  // namespace

QIcon entryIcon(EntryGlyph glyph) {
    return QIcon(new GlyphEngine(glyph));
}
