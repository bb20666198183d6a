#include "host/media/SamplePicture.h"

#include <QPainter>
#include <cmath>
#include <random>

namespace media {

namespace {

const QSize kSize(640, 480);
const QRect kText(392, 8, 240, 192);
const QRect kRainbow(392, 208, 240, 104);
const QRect kSpecks(8, 328, 200, 144);
const QRect kStar(216, 328, 168, 144);
const QRect kStripes(392, 320, 240, 152);

/// Discs that touch or overlap a little, all about equally bright.
void drawDiscs(QPainter& painter) {
    struct Disc {
        double x, y, radius;
        QColor colour;
    };
    const Disc discs[] = {
        {70, 80, 42, {255, 170, 60}},    {140, 62, 34, {120, 220, 90}},
        {96, 150, 36, {90, 200, 240}},   {250, 70, 44, {240, 130, 190}},
        {322, 104, 38, {235, 215, 80}},  {262, 150, 34, {150, 190, 255}},
        {70, 250, 40, {200, 160, 255}},  {146, 250, 40, {255, 150, 130}},
        {222, 262, 40, {110, 225, 190}}, {300, 250, 42, {230, 190, 150}},
        {345, 190, 24, {190, 225, 110}},
    };
    painter.setPen(Qt::NoPen);
    for (const Disc& disc : discs) {
        painter.setBrush(disc.colour);
        painter.drawEllipse(QPointF(disc.x, disc.y), disc.radius, disc.radius);
    }
}

/// Lines of text on paper whose light falls off towards a corner.
void drawText(QPainter& painter) {
    QRadialGradient light(kText.topLeft() + QPointF(50, 40), 260);
    light.setColorAt(0, QColor(250, 244, 226));
    light.setColorAt(1, QColor(58, 48, 44));
    painter.fillRect(kText, light);
    QFont font(QStringLiteral("DejaVu Serif"));
    font.setPixelSize(17);
    font.setStyleHint(QFont::Serif);
    painter.setFont(font);
    painter.setPen(QColor(40, 30, 36, 200));
    const char* const lines[] = {"A page in uneven", "light: one single", "threshold loses",
                                 "the dark corner,", "a local one reads", "every last word.",
                                 "0123456789 + - ="};
    int baseline = kText.top() + 28;
    for (const char* line : lines) {
        painter.drawText(kText.left() + 22, baseline, QString::fromLatin1(line));
        baseline += 25;
    }
}

/// All hues from left to right; full colour above, paler below.
void drawRainbow(QImage& image) {
    for (int y = kRainbow.top(); y <= kRainbow.bottom(); ++y)
        for (int x = kRainbow.left(); x <= kRainbow.right(); ++x) {
            const double hue = double(x - kRainbow.left()) / kRainbow.width();
            const double down = double(y - kRainbow.top()) / kRainbow.height();
            image.setPixelColor(x, y, QColor::fromHsvF(hue, 1 - 0.85 * down, 0.95));
        }
}

QColor between(const QColor& a, const QColor& b, double share) {
    const auto mix = [share](int from, int to) { return qRound(from + share * (to - from)); };
    return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

/// Rays that grow finer towards the middle, a little out of focus: how far in they can be told
/// apart shows the sharpness.
void drawStar(QImage& image) {
    const QPointF centre = QRectF(kStar).center();
    const int rays = 36;
    const double radius = 68, softness = 1.6;
    for (int y = kStar.top(); y <= kStar.bottom(); ++y)
        for (int x = kStar.left(); x <= kStar.right(); ++x) {
            const double dx = x - centre.x(), dy = y - centre.y();
            const double r = std::hypot(dx, dy);
            const double toEdge = r * std::sin(rays * std::atan2(dy, dx)) / rays;
            const double ray = 0.5 + 0.5 * std::tanh(toEdge / softness);
            const double disc = 0.5 - 0.5 * std::tanh((r - radius) / softness);
            image.setPixelColor(x, y, between({30, 60, 110}, {235, 235, 200}, ray * disc));
        }
}

/// Blobs with small holes in them and small specks around them.
void drawSpecks(QPainter& painter, std::mt19937& random) {
    const auto anywhere = [&random](const QRect& in) {
        const int x = in.left() + static_cast<int>(random() % static_cast<unsigned>(in.width()));
        const int y = in.top() + static_cast<int>(random() % static_cast<unsigned>(in.height()));
        return QPointF(x, y);
    };
    painter.fillRect(kSpecks, QColor(26, 30, 26));
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(226, 224, 200));
    painter.drawRoundedRect(QRect(kSpecks.left() + 18, kSpecks.top() + 26, 72, 92), 18, 18);
    painter.drawRoundedRect(QRect(kSpecks.left() + 106, kSpecks.top() + 34, 76, 84), 30, 30);
    painter.drawRect(QRect(kSpecks.left() + 86, kSpecks.top() + 70, 24, 3));  // a thin bridge
    const QRect inside = kSpecks.adjusted(4, 4, -5, -5);
    for (int i = 0; i < 70; ++i) {
        painter.setBrush(i % 2 ? QColor(226, 224, 200) : QColor(26, 30, 26));
        painter.drawEllipse(anywhere(inside), 1.6, 1.6);
    }
}

/// Stripes that grow finer and fainter to the left.
void drawStripes(QImage& image) {
    for (int x = kStripes.left(); x <= kStripes.right(); ++x) {
        const double across = double(kStripes.right() - x) / kStripes.width();
        const double wave = std::sin(across * (20 + 90 * across));
        const double contrast = 0.5 - 0.42 * across;
        for (int y = kStripes.top(); y <= kStripes.bottom(); ++y) {
            const double down = double(y - kStripes.top()) / kStripes.height();
            const double level = 0.5 + contrast * wave;
            image.setPixelColor(
                x, y,
                QColor::fromRgbF(level, level * (1 - 0.4 * down), level * (0.5 + 0.5 * down)));
        }
    }
}

/// Film grain over everything that is not black.
void addGrain(QImage& image, std::mt19937& random) {
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor pixel = image.pixelColor(x, y);
            const int grain = static_cast<int>(random() % 11) - 5;
            if (pixel.value() < 20) continue;
            const auto grainy = [grain](int sample) { return qBound(0, sample + grain, 255); };
            image.setPixelColor(
                x, y, QColor(grainy(pixel.red()), grainy(pixel.green()), grainy(pixel.blue())));
        }
}

}  // namespace

QImage samplePicture() {
    std::mt19937 random(20);  // a fixed seed: this generator's numbers are the same everywhere
    QImage image(kSize, QImage::Format_RGB888);
    image.fill(Qt::black);
    drawRainbow(image);
    drawStripes(image);
    drawStar(image);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    drawDiscs(painter);
    drawText(painter);
    drawSpecks(painter, random);
    painter.end();
    addGrain(image, random);
    return image;
}

}  // namespace media
