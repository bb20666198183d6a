#include "host/kernel/EntryIcons.h"

#include <QPolygonF>

#include "host/kernel/GlyphIcon.h"

namespace {

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

}  // namespace

QIcon entryIcon(EntryGlyph glyph) {
    GlyphDrawing drawing;
    drawing.lines = outline(glyph);
    drawing.lineWidth = 1.6;
    if (glyph == EntryGlyph::Keyframe) drawing.lit = GlyphDrawing::WhenOn;
    drawing.isFilledWhenLit = true;
    return glyphIcon(drawing);
}
