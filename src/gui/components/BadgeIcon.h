#pragma once
#include <QColor>
#include <QIcon>
#include <QString>

// A small coloured badge with a white tag drawn on it: the pictures of connection types (rounded
// squares) and of log statuses (circles).
namespace BadgeIcon {

enum class Shape { RoundedSquare, Circle };

QIcon draw(Shape shape, int size, const QColor &color, const QString &tag);

} // namespace BadgeIcon
