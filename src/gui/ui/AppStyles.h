#pragma once
#include <QColor>
#include <QPalette>
#include <QString>

// The application styles, in the order the component-style table counts them.
enum TAppStyle {
    tsOffice2003Blue, tsOffice2003Silver, tsOffice2003Olive, tsOffice2003Classic, tsOffice2007Luna,
    tsOffice2007Obsidian, tsWindowsXP, tsWhidbey, tsCustom, tsOffice2007Silver, tsWindowsVista,
    tsWindows7, tsTerminal, tsOffice2010Blue, tsOffice2010Silver, tsOffice2010Black,
    tsDesktop,  // follows the desktop's light or dark colour scheme
};
constexpr int AppStyleCount = tsDesktop + 1;

// The style numbers of the five component stylers: menus, page controls, panels, the status
// bar and toolbars.
struct ComponentStyles
{
    int menu, pageControl, panel, statusBar, toolbar;
    bool operator==(const ComponentStyles &o) const
    {
        return menu == o.menu && pageControl == o.pageControl && panel == o.panel && statusBar == o.statusBar
               && toolbar == o.toolbar;
    }
};

namespace AppStyles {

// The fixed fallbacks, then the table by application style (styles without a row keep them).
ComponentStyles componentStyles(TAppStyle style);

// The look of a style: a palette in which every text colour is readable on its background, and a
// style sheet for menus, tabs, toolbars and the status bar drawn from that palette.
// desktopDark says which scheme tsDesktop follows.
QPalette palette(TAppStyle style, bool desktopDark);
QString styleSheet(TAppStyle style, bool desktopDark);
// The grid title colour of a style; invalid when the style leaves the titles alone.
QColor gridTitleColor(TAppStyle style);

// WCAG contrast ratio of two colours (1 to 21).
double contrast(const QColor &a, const QColor &b);

} // namespace AppStyles
