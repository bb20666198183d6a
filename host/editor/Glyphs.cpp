#include "host/editor/Glyphs.h"

#include <QPainterPath>
#include <QVector>

#include "host/kernel/GlyphIcon.h"

namespace editor {

namespace {

void polyline(QPainterPath& path, const QVector<QPointF>& points) {
    path.moveTo(points.first());
    for (int i = 1; i < points.size(); ++i) path.lineTo(points[i]);
}

void diamond(QPainterPath& path, QPointF middle, double radius) {
    polyline(path, {middle + QPointF(0, -radius), middle + QPointF(radius, 0),
                    middle + QPointF(0, radius), middle + QPointF(-radius, 0),
                    middle + QPointF(0, -radius)});
}

void triangle(QPainterPath& path, double left, double right, double top, double bottom) {
    polyline(path, {{left, top}, {right, (top + bottom) / 2}, {left, bottom}, {left, top}});
}

GlyphDrawing drawing(Glyph glyph) {
    GlyphDrawing d;
    switch (glyph) {
        case Glyph::Eye:
            d.lines.moveTo(1.5, 8);
            d.lines.quadTo(8, 0.5, 14.5, 8);
            d.lines.quadTo(8, 15.5, 1.5, 8);
            d.areas.addEllipse(QPointF(8, 8), 2.2, 2.2);
            d.lit = GlyphDrawing::WhenOnElseFaint;
            break;
        case Glyph::Grip:
            for (const double y : {3.5, 8.0, 12.5})
                for (const double x : {5.5, 10.5}) d.areas.addEllipse(QPointF(x, y), 1.1, 1.1);
            break;
        case Glyph::More:
            for (const double x : {3.5, 8.0, 12.5}) d.areas.addEllipse(QPointF(x, 8), 1.4, 1.4);
            break;
        case Glyph::Expanded:
            polyline(d.lines, {{3.5, 6}, {8, 10.5}, {12.5, 6}});
            break;
        case Glyph::Collapsed:
            polyline(d.lines, {{6, 3.5}, {10.5, 8}, {6, 12.5}});
            break;
        case Glyph::Warning:
            polyline(d.lines, {{8, 2}, {14.5, 13.5}, {1.5, 13.5}, {8, 2}});
            polyline(d.lines, {{8, 6.5}, {8, 9.5}});
            d.areas.addEllipse(QPointF(8, 11.6), 0.9, 0.9);
            d.colour = QColor(0xe0, 0x90, 0x20);
            break;
        case Glyph::Play:
            triangle(d.areas, 4.5, 13, 2.5, 13.5);
            break;
        case Glyph::Pause:
            d.areas.addRect(4, 3, 3, 10);
            d.areas.addRect(9, 3, 3, 10);
            break;
        case Glyph::First:
            polyline(d.lines, {{3.5, 3.5}, {3.5, 12.5}});
            triangle(d.areas, 12.5, 5.5, 3.5, 12.5);
            break;
        case Glyph::Previous:
            triangle(d.areas, 11.5, 4.5, 3.5, 12.5);
            break;
        case Glyph::Next:
            triangle(d.areas, 4.5, 11.5, 3.5, 12.5);
            break;
        case Glyph::Last:
            polyline(d.lines, {{12.5, 3.5}, {12.5, 12.5}});
            triangle(d.areas, 3.5, 10.5, 3.5, 12.5);
            break;
        case Glyph::PreviousKey:
            polyline(d.lines, {{5, 4.5}, {1.5, 8}, {5, 11.5}});
            diamond(d.areas, {10.5, 8}, 4);
            break;
        case Glyph::NextKey:
            polyline(d.lines, {{11, 4.5}, {14.5, 8}, {11, 11.5}});
            diamond(d.areas, {5.5, 8}, 4);
            break;
        case Glyph::AddKey:
            diamond(d.lines, {6.5, 9}, 5);
            polyline(d.lines, {{13, 1.5}, {13, 6.5}});
            polyline(d.lines, {{10.5, 4}, {15.5, 4}});
            break;
        case Glyph::RemoveKey:
            diamond(d.lines, {6.5, 9}, 5);
            polyline(d.lines, {{10.5, 3.5}, {15.5, 3.5}});
            break;
        case Glyph::Fit:
            polyline(d.lines, {{2, 5.5}, {2, 2}, {5.5, 2}});
            polyline(d.lines, {{10.5, 2}, {14, 2}, {14, 5.5}});
            polyline(d.lines, {{14, 10.5}, {14, 14}, {10.5, 14}});
            polyline(d.lines, {{5.5, 14}, {2, 14}, {2, 10.5}});
            d.areas.addRect(5.5, 5.5, 5, 5);
            break;
        case Glyph::OneToOne:
            polyline(d.lines, {{2.5, 4.5}, {4.5, 3}, {4.5, 13}});
            polyline(d.lines, {{11, 4.5}, {13, 3}, {13, 13}});
            d.areas.addEllipse(QPointF(8.2, 6.2), 1, 1);
            d.areas.addEllipse(QPointF(8.2, 10.4), 1, 1);
            break;
        case Glyph::Single:
            d.lines.addRect(2, 3, 12, 10);
            break;
        case Glyph::Wipe:
            d.lines.addRect(2, 3, 12, 10);
            d.areas.addRect(2, 3, 6, 10);
            break;
        case Glyph::SideBySide:
            d.lines.addRect(1.5, 4, 5.5, 8);
            d.lines.addRect(9, 4, 5.5, 8);
            break;
        case Glyph::Difference:
            d.lines.addEllipse(QPointF(6, 8), 4.5, 4.5);
            d.lines.addEllipse(QPointF(10, 8), 4.5, 4.5);
            break;
        case Glyph::Objects:
            d.areas.addEllipse(QPointF(4.5, 5), 2.8, 2.8);
            d.areas.addEllipse(QPointF(11.5, 5.5), 2.2, 2.2);
            d.areas.addEllipse(QPointF(8.5, 11.5), 3, 3);
            break;
        case Glyph::Image:
            d.lines.addRect(1.5, 3, 13, 10);
            d.areas.addEllipse(QPointF(5.3, 6.4), 1.7, 1.7);
            d.areas.addEllipse(QPointF(10.7, 6.8), 1.3, 1.3);
            d.areas.addEllipse(QPointF(8.2, 10.2), 1.5, 1.5);
            break;
        case Glyph::Open:
            d.lines.addRect(1.5, 3, 13, 10);
            polyline(d.lines, {{1.5, 12}, {6, 7.5}, {9, 10.5}, {11, 8.5}, {14.5, 12}});
            d.areas.addEllipse(QPointF(11, 5.7), 1.2, 1.2);
            break;
        case Glyph::Folder:
            polyline(d.lines,
                     {{1.5, 13}, {1.5, 3}, {6, 3}, {7.5, 5}, {14.5, 5}, {14.5, 13}, {1.5, 13}});
            break;
        case Glyph::Project:
            polyline(d.lines, {{3, 1.5}, {10, 1.5}, {13, 4.5}, {13, 14.5}, {3, 14.5}, {3, 1.5}});
            polyline(d.lines, {{5.5, 6.5}, {10.5, 6.5}});
            polyline(d.lines, {{5.5, 9}, {10.5, 9}});
            polyline(d.lines, {{5.5, 11.5}, {8.5, 11.5}});
            break;
    }
    return d;
}

}  // namespace

QIcon glyphIcon(Glyph glyph) {
    return ::glyphIcon(drawing(glyph));
}

}  // namespace editor
