#include "gui/components/ConnectionTypeIcons.h"

#include "gui/components/BadgeIcon.h"
#include "core/connections/ConnectionTypes.h"

#include <QHash>

namespace {

struct Badge
{
    const char *tag;
    const char *color;
};

// One badge per entry of the connection dialog's type list, in its order.
const Badge kBadges[] = {
    {"Or", "#c74634"}, {"MS", "#a91d22"}, {"OD", "#6b6b6b"}, {"My", "#00758f"}, {"Pg", "#336791"},
    {"Fb", "#e0701b"}, {"OL", "#5c2d91"}, {"SL", "#0f80cc"}, {"CE", "#7a1c1f"},
};

} // namespace

namespace ConnectionTypeIcons {

QIcon forIndex(int dialogIndex)
{
    static QHash<int, QIcon> cache;
    if (dialogIndex < 0 || dialogIndex >= int(std::size(kBadges))) {
        static const QIcon unknown =
            BadgeIcon::draw(BadgeIcon::Shape::RoundedSquare, 32, QColor(0x90, 0x90, 0x90), QStringLiteral("?"));
        return unknown;
    }
    auto it = cache.find(dialogIndex);
    if (it == cache.end()) {
        const Badge &b = kBadges[dialogIndex];
        it = cache.insert(dialogIndex, BadgeIcon::draw(BadgeIcon::Shape::RoundedSquare, 32, QColor(QLatin1String(b.color)),
                                                       QString::fromLatin1(b.tag)));
    }
    return *it;
}

QIcon forCode(int connectionTypeCode)
{
    return forIndex(ConnectionTypes::indexOfCode(connectionTypeCode));
}

QString nameForCode(int connectionTypeCode)
{
    const int index = ConnectionTypes::indexOfCode(connectionTypeCode);
    return index < 0 ? QString() : ConnectionTypes::entryText(index);
}

} // namespace ConnectionTypeIcons
