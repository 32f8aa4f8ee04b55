#include "gui/ui/AppStyles.h"

#include <cmath>

namespace AppStyles {

namespace {

struct Look
{
    const char *window;
    const char *button;
    const char *highlight;
    const char *gridTitle;  // empty: the style leaves grid titles alone
    bool dark;
};

// One look per application style, in the order of TAppStyle.
const Look kLooks[AppStyleCount] = {
    {"#dbe6f4", "#c3d9f5", "#3d7bd4", "#a9c8f0", false},  // Office 2003 Blue
    {"#e4e4ec", "#d4d4e0", "#6f6f8f", "", false},         // Office 2003 Silver
    {"#ecedd8", "#d9dcb5", "#7c8a3c", "", false},         // Office 2003 Olive
    {"#ece9d8", "#d4d0c8", "#0a246a", "", false},         // Office 2003 Classic
    {"#d6e3f3", "#bfd5f0", "#2f6cc0", "#b7d0f2", false},  // Office 2007 Luna
    {"#4a4f57", "#5c626b", "#e1a33a", "", true},          // Office 2007 Obsidian
    {"#ece9d8", "#e0ddc8", "#316ac5", "", false},         // Windows XP
    {"#f0efe6", "#e5e3d3", "#4a7fc1", "", false},         // Whidbey
    {"#f0f0f0", "#e1e1e1", "#0078d7", "", false},         // Custom
    {"#eef0f3", "#dfe3e8", "#6d7b8d", "", false},         // Office 2007 Silver
    {"#eef3f8", "#dfe8f1", "#3399ff", "", false},         // Windows Vista
    {"#f0f0f0", "#e5e5e5", "#3399ff", "", false},         // Windows 7
    {"#101010", "#1c1c1c", "#2e8b57", "", true},          // Terminal
    {"#dde8f5", "#c9dbf1", "#2b6cc4", "#c6dcf5", false},  // Office 2010 Blue
    {"#eceff2", "#dde2e7", "#5c6b7c", "", false},         // Office 2010 Silver
    {"#3a3a3a", "#4b4b4b", "#d39b2a", "#5a5a5a", true},   // Office 2010 Black
    {"#efefef", "#e0e0e0", "#2a82da", "", false},         // Desktop (light; dark below)
};
const Look kDesktopDark = {"#2b2b2b", "#3a3a3a", "#2a82da", "", true};

const Look &lookOf(TAppStyle style, bool desktopDark)
{
    if (style == tsDesktop && desktopDark)
        return kDesktopDark;
    return kLooks[style >= 0 && style < AppStyleCount ? style : 0];
}

// Black or white, whichever reads better on the background; one of them always reaches 4.5:1.
QColor readableOn(const QColor &background)
{
    return contrast(Qt::black, background) >= contrast(Qt::white, background) ? QColor(Qt::black) : QColor(Qt::white);
}

double luminance(const QColor &c)
{
    auto channel = [](double v) { return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); };
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}

} // namespace

double contrast(const QColor &a, const QColor &b)
{
    const double la = luminance(a), lb = luminance(b);
    return (std::max(la, lb) + 0.05) / (std::min(la, lb) + 0.05);
}

ComponentStyles componentStyles(TAppStyle style)
{
    // Rows by application style position; positions 3 (Office 2003 Classic) and 8 (Custom) have
    // none and keep the fallbacks, as does the desktop style.
    static const ComponentStyles table[] = {
        {0, 0, 4, 0, 0},       {1, 1, 6, 1, 1},       {2, 2, 5, 2, 2},       {6, 8, 12, 8, 8},
        {4, 4, 8, 4, 4},       {5, 5, 9, 5, 5},       {3, 6, 0, 6, 6},       {9, 7, 10, 7, 7},
        {6, 8, 12, 8, 8},      {7, 9, 13, 9, 9},      {8, 10, 14, 10, 11},   {10, 11, 15, 11, 12},
        {11, 12, 16, 12, 13},  {12, 13, 17, 13, 14},  {13, 14, 18, 14, 15},  {14, 15, 19, 15, 16},
    };
    const ComponentStyles fallback{6, 8, 12, 8, 8};
    if (style < 0 || style >= int(std::size(table)))
        return fallback;
    return table[style];
}

QPalette palette(TAppStyle style, bool desktopDark)
{
    const Look &l = lookOf(style, desktopDark);
    const QColor window(QLatin1String(l.window));
    const QColor button(QLatin1String(l.button));
    const QColor highlight(QLatin1String(l.highlight));
    const QColor base = l.dark ? button.darker(170) : QColor(Qt::white);
    const QColor alternate = window.lighter(l.dark ? 120 : 104);
    QPalette p;
    p.setColor(QPalette::Window, window);
    p.setColor(QPalette::WindowText, readableOn(window));
    p.setColor(QPalette::Button, button);
    p.setColor(QPalette::ButtonText, readableOn(button));
    p.setColor(QPalette::Base, base);
    p.setColor(QPalette::AlternateBase, alternate);
    p.setColor(QPalette::Text, readableOn(base));
    p.setColor(QPalette::Highlight, highlight);
    p.setColor(QPalette::HighlightedText, readableOn(highlight));
    p.setColor(QPalette::ToolTipBase, QColor(0xff, 0xff, 0xe1));
    p.setColor(QPalette::ToolTipText, Qt::black);
    p.setColor(QPalette::PlaceholderText, l.dark ? QColor(0xcc, 0xcc, 0xcc) : QColor(0x60, 0x60, 0x60));
    p.setColor(QPalette::BrightText, l.dark ? QColor(Qt::white) : QColor(Qt::black));
    p.setColor(QPalette::Link, l.dark ? QColor(0x8a, 0xb4, 0xf8) : QColor(0x0b, 0x57, 0xd0));
    p.setColor(QPalette::Disabled, QPalette::WindowText, l.dark ? QColor(0x90, 0x90, 0x90) : QColor(0x80, 0x80, 0x80));
    p.setColor(QPalette::Disabled, QPalette::ButtonText, l.dark ? QColor(0x90, 0x90, 0x90) : QColor(0x80, 0x80, 0x80));
    p.setColor(QPalette::Disabled, QPalette::Text, l.dark ? QColor(0x90, 0x90, 0x90) : QColor(0x80, 0x80, 0x80));
    return p;
}

QString styleSheet(TAppStyle style, bool desktopDark)
{
    const QPalette p = palette(style, desktopDark);
    auto c = [&p](QPalette::ColorRole role) { return p.color(role).name(); };
    return QStringLiteral("QToolBar { background: %1; border: none; }"
                          "QStatusBar { background: %1; color: %2; }"
                          "QMenuBar { background: %1; color: %2; }"
                          "QMenu { background: %3; color: %4; }"
                          "QMenu::item:selected { background: %5; color: %6; }"
                          "QTabBar::tab:selected { background: %3; color: %4; }")
        .arg(c(QPalette::Button), c(QPalette::ButtonText), c(QPalette::Window), c(QPalette::WindowText),
             c(QPalette::Highlight), c(QPalette::HighlightedText));
}

QColor gridTitleColor(TAppStyle style)
{
    const char *c = lookOf(style, false).gridTitle;
    return *c ? QColor(QLatin1String(c)) : QColor();
}

} // namespace AppStyles
