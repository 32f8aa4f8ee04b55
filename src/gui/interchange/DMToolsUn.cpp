#include "interchange/DMToolsUn.h"

#include <QApplication>
#include <QPalette>
#include <QStyleFactory>

namespace {

struct StylePalette
{
    const char *window;
    const char *button;
    const char *highlight;
    const char *gridTitle;  // empty: the style leaves grid titles alone
    bool dark;
};

// One palette per entry of the style list, in its order.
const StylePalette kPalettes[] = {
    {"#dbe6f4", "#c3d9f5", "#3d7bd4", "#a9c8f0", false},  // Office 2003 Blue
    {"#e4e4ec", "#d4d4e0", "#6f6f8f", "", false},         // Office 2003 Silver
    {"#ecedd8", "#d9dcb5", "#7c8a3c", "", false},         // Office 2003 Olive
    {"#d6e3f3", "#bfd5f0", "#2f6cc0", "#b7d0f2", false},  // Office 2007 Luna
    {"#4a4f57", "#5c626b", "#e1a33a", "", true},          // Office 2007 Obsidian
    {"#eef0f3", "#dfe3e8", "#6d7b8d", "", false},         // Office 2007 Silver
    {"#dde8f5", "#c9dbf1", "#2b6cc4", "#c6dcf5", false},  // Office 2010 Blue
    {"#eceff2", "#dde2e7", "#5c6b7c", "", false},         // Office 2010 Silver
    {"#3a3a3a", "#4b4b4b", "#d39b2a", "#5a5a5a", true},   // Office 2010 Black
    {"#ece9d8", "#e0ddc8", "#316ac5", "", false},         // Windows XP
    {"#f0efe6", "#e5e3d3", "#4a7fc1", "", false},         // Whidbey
    {"#eef3f8", "#dfe8f1", "#3399ff", "", false},         // Windows Vista
    {"#f0f0f0", "#e5e5e5", "#3399ff", "", false},         // Windows 7
    {"#101010", "#1c1c1c", "#2e8b57", "", true},          // Terminal
};

} // namespace

TdmTools::TdmTools(QObject *parent)
    : QObject(parent)
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
        QStringLiteral("Windows 7"),           QStringLiteral("Terminal "),
    };
    return names;
}

void TdmTools::setApplicationStyle(int index)
{
    if (index < 0 || index >= int(std::size(kPalettes)))
        index = 0;
    if (index == m_style)
        return;
    m_style = index;
    if (qobject_cast<QApplication *>(QCoreApplication::instance())) {
        const StylePalette &p = kPalettes[index];
        QApplication::setStyle(QStyleFactory::create(QStringLiteral("Fusion")));
        QPalette palette;
        const QColor text = p.dark ? QColor(0xe8, 0xe8, 0xe8) : QColor(Qt::black);
        palette.setColor(QPalette::Window, QColor(QLatin1String(p.window)));
        palette.setColor(QPalette::Button, QColor(QLatin1String(p.button)));
        palette.setColor(QPalette::Highlight, QColor(QLatin1String(p.highlight)));
        palette.setColor(QPalette::HighlightedText, Qt::white);
        palette.setColor(QPalette::WindowText, text);
        palette.setColor(QPalette::ButtonText, text);
        palette.setColor(QPalette::Text, p.dark ? text : QColor(Qt::black));
        palette.setColor(QPalette::Base, p.dark ? QColor(QLatin1String(p.button)).darker(130) : QColor(Qt::white));
        palette.setColor(QPalette::AlternateBase, QColor(QLatin1String(p.window)).lighter(p.dark ? 120 : 104));
        palette.setColor(QPalette::ToolTipBase, QColor(0xff, 0xff, 0xe1));
        palette.setColor(QPalette::ToolTipText, Qt::black);
        QApplication::setPalette(palette);
    }
    emit applicationStyleChanged(index);
}

QColor TdmTools::gridTitleColor() const
{
    if (m_style < 0)
        return {};
    const char *c = kPalettes[m_style].gridTitle;
    return *c ? QColor(QLatin1String(c)) : QColor();
}
