#include "host/editor/Theme.h"

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>

namespace editor {

namespace {

struct Colours {
    QRgb window, base, alternate, button, text, dimmed, highlight, link, border, toolTip;
};

constexpr Colours kDark = {0xff2b2c2e, 0xff1e1f21, 0xff343538, 0xff3a3b3e, 0xffe4e4e6,
                           0xff85868a, 0xff3f7fd0, 0xff7fb2f0, 0xff17181a, 0xff3a3b3e};
constexpr Colours kLight = {0xfff1f1f2, 0xffffffff, 0xfffafafb, 0xfff7f7f8, 0xff1d1e20,
                            0xff8c8d92, 0xff2f6fc4, 0xff1f5fb4, 0xffc4c5c9, 0xfffffff0};

QPalette paletteOf(const Colours& c) {
    QPalette palette;
    const auto set = [&](QPalette::ColorRole role, QRgb colour) {
        palette.setColor(role, QColor::fromRgb(colour));
    };
    set(QPalette::Window, c.window);
    set(QPalette::WindowText, c.text);
    set(QPalette::Base, c.base);
    set(QPalette::AlternateBase, c.alternate);
    set(QPalette::Text, c.text);
    set(QPalette::Button, c.button);
    set(QPalette::ButtonText, c.text);
    set(QPalette::BrightText, 0xffffffff);
    set(QPalette::ToolTipBase, c.toolTip);
    set(QPalette::ToolTipText, c.text);
    set(QPalette::PlaceholderText, c.dimmed);
    set(QPalette::Highlight, c.highlight);
    set(QPalette::HighlightedText, 0xffffffff);
    set(QPalette::Link, c.link);
    set(QPalette::LinkVisited, c.link);
    set(QPalette::Dark, c.border);
    set(QPalette::Mid, c.border);
    set(QPalette::Shadow, c.border);
    const QColor button = QColor::fromRgb(c.button);
    palette.setColor(QPalette::Light, button.lighter(125));
    palette.setColor(QPalette::Midlight, button.lighter(110));
    for (const auto role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, QColor::fromRgb(c.dimmed));
    palette.setColor(QPalette::Disabled, QPalette::Highlight, QColor::fromRgb(c.dimmed));
    return palette;
}

/// Buttons of dialogs say what they do; the toolkit's own icons would fit one of the themes only.
class EditorStyle : public QProxyStyle {
public:
    EditorStyle() : QProxyStyle(QStringLiteral("Fusion")) {}
    int styleHint(StyleHint hint, const QStyleOption* option, const QWidget* widget,
                  QStyleHintReturn* data) const override {
        return hint == SH_DialogButtonBox_ButtonsHaveIcons
                   ? 0
                   : QProxyStyle::styleHint(hint, option, widget, data);
    }
};

}  // namespace

void applyTheme(Theme theme) {
    // The style of the desktop would not take other colours than its own.
    static const QPalette desktop = QApplication::palette();
    QApplication::setStyle(new EditorStyle);
    QApplication::setPalette(theme == Theme::Dark    ? paletteOf(kDark)
                             : theme == Theme::Light ? paletteOf(kLight)
                                                     : desktop);
}

Theme themeOfName(const QString& name) {
    if (name == QLatin1String("light")) return Theme::Light;
    if (name == QLatin1String("dark")) return Theme::Dark;
    return Theme::System;
}

QString nameOfTheme(Theme theme) {
    return theme == Theme::Light  ? QStringLiteral("light")
           : theme == Theme::Dark ? QStringLiteral("dark")
                                  : QStringLiteral("system");
}

QColor pictureSurroundings() {
    return isDarkTheme() ? QColor(0x24, 0x24, 0x24) : QColor(0xd4, 0xd4, 0xd4);
}

bool isDarkTheme() {
    return QApplication::palette().color(QPalette::Window).lightness() < 128;
}

}  // namespace editor
