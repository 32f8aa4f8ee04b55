#include "components/ConnectionTypeIcons.h"

#include <QHash>
#include <QPainter>
#include <QPixmap>

namespace {

struct Badge
{
    int code;
    const char *tag;
    const char *color;
    const char *name;
};

// In the order of the connection dialog's type list.
const Badge kBadges[] = {
    {331, "Or", "#c74634", "Oracle Database"},
    {321, "MS", "#a91d22", "Microsoft SQL Server"},
    {341, "OD", "#6b6b6b", "ODBC"},
    {343, "My", "#00758f", "MySQL"},
    {345, "Pg", "#336791", "PostgreSQL"},
    {347, "Fb", "#e0701b", "Interbase/Firebird"},
    {339, "OL", "#5c2d91", "OleDB(ADO)"},
    {349, "SL", "#0f80cc", "SQLite"},
    {323, "CE", "#7a1c1f", "Microsoft SQL Server CE"},
};

QIcon draw(const char *tag, const QColor &color)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(color);
    p.setPen(color.darker(130));
    p.drawRoundedRect(QRectF(1.5, 1.5, 29, 29), 6, 6);
    QFont f(QStringLiteral("DejaVu Sans"));
    f.setBold(true);
    f.setPixelSize(14);
    p.setFont(f);
    p.setPen(Qt::white);
    p.drawText(pixmap.rect(), Qt::AlignCenter, QString::fromLatin1(tag));
    return QIcon(pixmap);
}

const Badge *badgeForCode(int code)
{
    for (const Badge &b : kBadges) {
        if (b.code == code)
            return &b;
    }
    return nullptr;
}

} // namespace

namespace ConnectionTypeIcons {

QIcon forIndex(int dialogIndex)
{
    static QHash<int, QIcon> cache;
    if (dialogIndex < 0 || dialogIndex >= int(std::size(kBadges)))
        return forCode(0);
    auto it = cache.find(dialogIndex);
    if (it == cache.end())
        it = cache.insert(dialogIndex, draw(kBadges[dialogIndex].tag, QColor(QLatin1String(kBadges[dialogIndex].color))));
    return *it;
}

QIcon forCode(int connectionTypeCode)
{
    for (int i = 0; i < int(std::size(kBadges)); ++i) {
        if (kBadges[i].code == connectionTypeCode)
            return forIndex(i);
    }
    static const QIcon unknown = draw("?", QColor(0x90, 0x90, 0x90));
    return unknown;
}

QString nameForCode(int connectionTypeCode)
{
    const Badge *b = badgeForCode(connectionTypeCode);
    return b ? QString::fromLatin1(b->name) : QString();
}

} // namespace ConnectionTypeIcons
