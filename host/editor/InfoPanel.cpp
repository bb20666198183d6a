#include "host/editor/InfoPanel.h"

#include <QFontDatabase>
#include <QGridLayout>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>
#include <algorithm>
#include <cmath>

#include "host/editor/Theme.h"

namespace editor {

/// Filled curves for the picture, a thin line for the one before it. Heights are square roots, so
/// that a peak of black does not flatten the rest.
class HistogramView : public QWidget {
public:
    explicit HistogramView(EditorState& state, QWidget* parent) : QWidget(parent), m_state(state) {
        setMinimumHeight(72);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
        setToolTip(InfoPanel::tr("Levels 0 to 255; the line is the picture before the filters"));
        setAccessibleName(InfoPanel::tr("Histogram"));
        QObject::connect(&state, &EditorState::previewChanged, this, [this] {
            const Preview& preview = *m_state.preview();
            if (preview.afterLevels.channels > 0 || !preview.after) {
                m_before = preview.beforeLevels;
                m_after = preview.afterLevels;
                update();
            }
        });
    }
    QSize sizeHint() const override { return {260, 96}; }

protected:
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), palette().color(QPalette::Base));
        painter.setRenderHint(QPainter::Antialiasing);
        const QColor grey = palette().color(QPalette::PlaceholderText);
        painter.setPen(QPen(palette().color(QPalette::Mid), 1));
        for (int quarter = 1; quarter < 4; ++quarter)
            painter.drawLine(QLineF(width() * quarter / 4.0, 0, width() * quarter / 4.0, height()));
        const bool dark = isDarkTheme();
        const QColor colours[3] = {dark ? QColor(0xff, 0x55, 0x55) : QColor(0xd0, 0x20, 0x20),
                                   dark ? QColor(0x55, 0xe0, 0x60) : QColor(0x10, 0x90, 0x20),
                                   dark ? QColor(0x60, 0x90, 0xff) : QColor(0x20, 0x40, 0xd0)};
        const double tallest = std::max(peak(m_after), peak(m_before));
        for (int c = 0; c < m_after.channels; ++c) {
            QColor fill = m_after.channels == 1 ? grey : colours[c];
            QPainterPath shape = curve(m_after, c, tallest);
            shape.lineTo(width(), height());
            shape.lineTo(0, height());
            fill.setAlpha(m_after.channels == 1 ? 170 : 110);
            painter.setPen(Qt::NoPen);
            painter.setBrush(fill);
            painter.drawPath(shape);
        }
        painter.setBrush(Qt::NoBrush);
        for (int c = 0; c < m_before.channels; ++c) {
            QColor line =
                m_before.channels == 1 ? palette().color(QPalette::WindowText) : colours[c];
            line.setAlpha(180);
            painter.setPen(QPen(line, 1));
            painter.drawPath(curve(m_before, c, tallest));
        }
    }

private:
    static double peak(const LevelCounts& levels) {
        std::uint32_t most = 1;
        for (int c = 0; c < levels.channels; ++c)
            most =
                std::max(most, *std::max_element(levels.counts[c].begin(), levels.counts[c].end()));
        return std::sqrt(static_cast<double>(most));
    }
    QPainterPath curve(const LevelCounts& levels, int channel, double tallest) const {
        QPainterPath path;
        for (int level = 0; level < 256; ++level) {
            const double share = std::sqrt(static_cast<double>(levels.counts[channel][level]));
            const QPointF point(width() * (level + 0.5) / 256,
                                height() - 1 - share / tallest * (height() - 4));
            if (level == 0) path.moveTo(0, point.y());
            path.lineTo(point);
        }
        path.lineTo(width(), path.currentPosition().y());
        return path;
    }

    EditorState& m_state;
    LevelCounts m_before, m_after;
};

InfoPanel::InfoPanel(EditorState& state, QWidget* parent) : QWidget(parent), m_state(state) {
    setObjectName(QStringLiteral("infoPanel"));
    m_histogram = new HistogramView(state, this);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(m_histogram, 1);

    auto* grid = new QGridLayout;
    grid->setHorizontalSpacing(12);
    grid->setVerticalSpacing(2);
    m_position = new QLabel(this);
    m_position->setForegroundRole(QPalette::PlaceholderText);
    grid->addWidget(m_position, 0, 0);
    const QFont digits = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    const QString sides[2] = {tr("Before"), tr("After")};
    for (int side = 0; side < 2; ++side) {
        auto* title = new QLabel(sides[side], this);
        title->setForegroundRole(QPalette::PlaceholderText);
        title->setAlignment(Qt::AlignRight);
        grid->addWidget(title, 0, side + 1);
    }
    const char* const spaces[3] = {"RGB", "YUV", "HLS"};
    for (int space = 0; space < 3; ++space) {
        grid->addWidget(new QLabel(QLatin1String(spaces[space]), this), space + 1, 0);
        for (int side = 0; side < 2; ++side) {
            auto* value = new QLabel(this);
            value->setFont(digits);
            value->setAlignment(Qt::AlignRight);
            value->setObjectName(QLatin1String(spaces[space]) + QString::number(side));
            value->setAccessibleName(QLatin1String(spaces[space]) + QLatin1Char(' ') + sides[side]);
            grid->addWidget(value, space + 1, side + 1);
            m_values[space][side] = value;
        }
    }
    grid->setColumnStretch(1, 1);
    grid->setColumnStretch(2, 1);
    layout->addLayout(grid);
    connect(&state, &EditorState::probeChanged, this, &InfoPanel::showProbe);
    connect(&state, &EditorState::previewChanged, this, &InfoPanel::showProbe);
    showProbe();
}

void InfoPanel::showProbe() {
    const Preview& preview = *m_state.preview();
    const QPoint pixel = m_state.probe();
    const Picture pictures[2] = {preview.before, preview.after};
    bool isInside = false;
    for (int side = 0; side < 2; ++side) {
        PixelValue value;
        if (pictures[side])
            value = pixelAt(*pictures[side], pixel.x() / preview.reduction,
                            pixel.y() / preview.reduction);
        if (pixel.x() < 0 || pixel.y() < 0) value.isValid = false;
        isInside = isInside || value.isValid;
        const std::array<int, 3> triples[3] = {value.rgb, value.yuv, value.hls};
        for (int space = 0; space < 3; ++space)
            m_values[space][side]->setText(value.isValid ? QStringLiteral("%1 %2 %3")
                                                               .arg(triples[space][0], 3)
                                                               .arg(triples[space][1], 3)
                                                               .arg(triples[space][2], 3)
                                                         : QStringLiteral("–"));
    }
    m_position->setText(isInside ? QStringLiteral("%1, %2").arg(pixel.x()).arg(pixel.y())
                                 : tr("Pixel"));
}

}  // namespace editor
