#include "host/kernel/GlyphIcon.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>

namespace {

class GlyphEngine : public QIconEngine {
public:
    explicit GlyphEngine(const GlyphDrawing& drawing) : m_drawing(drawing) {}

    void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode,
               QIcon::State state) override {
        const bool isLit = m_drawing.lit != GlyphDrawing::Never && state == QIcon::On;
        const QColor colour = colourFor(mode, isLit);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.topLeft());
        painter->scale(rect.width() / 16.0, rect.height() / 16.0);
        painter->setPen(
            QPen(colour, m_drawing.lineWidth, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter->setBrush(isLit && m_drawing.isFilledWhenLit ? QBrush(colour)
                                                             : QBrush(Qt::NoBrush));
        painter->drawPath(m_drawing.lines);
        painter->setPen(Qt::NoPen);
        painter->setBrush(colour);
        painter->drawPath(m_drawing.areas);
        painter->restore();
    }

    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine* clone() const override { return new GlyphEngine(m_drawing); }

private:
    QColor colourFor(QIcon::Mode mode, bool isLit) const {
        if (m_drawing.colour.isValid()) return m_drawing.colour;
        const bool isFaint =
            mode == QIcon::Disabled || (m_drawing.lit == GlyphDrawing::WhenOnElseFaint && !isLit);
        return QGuiApplication::palette().color(isFaint ? QPalette::Disabled : QPalette::Active,
                                                isLit ? QPalette::Highlight : QPalette::ButtonText);
    }

    GlyphDrawing m_drawing;
};

}  // namespace

QIcon glyphIcon(const GlyphDrawing& drawing) {
    return QIcon(new GlyphEngine(drawing));
}
