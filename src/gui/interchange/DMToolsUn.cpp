#include "gui/interchange/DMToolsUn.h"

#include "gui/ui/AppStyles.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <QStyleFactory>

namespace {

// SetTheme's theme numbers 0 to 11.
const TAppStyle kThemes[] = {tsOffice2003Blue,  tsOffice2003Olive,   tsOffice2007Luna, tsOffice2007Obsidian,
                             tsOffice2010Blue,  tsOffice2010Silver,  tsOffice2010Black, tsWindowsXP,
                             tsWhidbey,         tsWindowsVista,      tsWindows7,       tsTerminal};

// The workspace's style list, entry by entry.
const TAppStyle kListStyles[] = {tsOffice2003Blue, tsOffice2003Silver, tsOffice2003Olive,   tsOffice2007Luna,
                                 tsOffice2007Obsidian, tsOffice2007Silver, tsOffice2010Blue, tsOffice2010Silver,
                                 tsOffice2010Black, tsWindowsXP,        tsWhidbey,         tsWindowsVista,
                                 tsWindows7,        tsTerminal,         tsDesktop};

// Whether the desktop the program started on uses a dark scheme: its own palette's window colour
// is dark, or the GTK theme asks for the dark variant.
bool desktopIsDark()
{
    if (qEnvironmentVariable("GTK_THEME").endsWith(QLatin1String(":dark"), Qt::CaseInsensitive))
        return true;
    if (!qobject_cast<QApplication *>(QCoreApplication::instance()))
        return false;
    return QApplication::style()->standardPalette().color(QPalette::Window).lightness() < 128
           || QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
}

} // namespace

TdmTools::TdmTools(QObject *parent)
    : QObject(parent), m_desktopDark(desktopIsDark())
{
    setObjectName(QStringLiteral("dmTools"));
}

const QStringList &TdmTools::styleNames()
{
    static const QStringList names = {
        QStringLiteral("Office 2003 Blue"),    QStringLiteral("Office 2003 Silver"), QStringLiteral("Office 2003 Olive"),
        QStringLiteral("Office 2007 Luna"),    QStringLiteral("Office 2007 Obsidian "), QStringLiteral("Office 2007 Silver"),
        QStringLiteral("Office 2010 Blue"),    QStringLiteral("Office 2010 Silver"), QStringLiteral("Office 2010 Black"),
        QStringLiteral("Windows XP"),          QStringLiteral("Whidbey"),            QStringLiteral("Windows Vista"),
        QStringLiteral("Windows 7"),           QStringLiteral("Terminal "),          QStringLiteral("Desktop"),
    };
    return names;
}

void TdmTools::setApplicationStyle(int index)
{
    if (index < 0 || index >= int(std::size(kListStyles)))
        index = 0;
    if (index == m_style)
        return;
    m_style = index;
    m_appStyle = kListStyles[index];
    aasChange();
}

void TdmTools::SetTheme(int theme)
{
    m_theme = theme;
    if (theme >= 0 && theme < int(std::size(kThemes)))
        m_appStyle = kThemes[theme];
    aasChange();
}

void TdmTools::aasChange()
{
    const TAppStyle style = TAppStyle(m_appStyle);
    m_components = AppStyles::componentStyles(style);
    if (qobject_cast<QApplication *>(QCoreApplication::instance())) {
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QApplication::setPalette(AppStyles::palette(style, m_desktopDark));
        qApp->setStyleSheet(AppStyles::styleSheet(style, m_desktopDark));
    }
    emit applicationStyleChanged(m_style);
}

QColor TdmTools::gridTitleColor() const
{
    return m_style < 0 ? QColor() : AppStyles::gridTitleColor(TAppStyle(m_appStyle));
}
