#include "gui/components/BadgeIcon.h"

#include <QPainter>
#include <QPixmap>

namespace BadgeIcon {

QIcon draw(Shape shape, int size, const QColor &color, const QString &tag)
{
    QPixmap pixmap(size, size);
    pixmap.fill(Qt::transparent);
    QPainter p(&pixmap);
    p.setRenderHint(QPainter::Antialiasing);
    p.setBrush(color);
    p.setPen(color.darker(135));
    const QRectF box(1.5, 1.5, size - 3, size - 3);
    if (shape == Shape::Circle)
        p.drawEllipse(box);
    else
        p.drawRoundedRect(box, size / 5.0, size / 5.0);
    QFont font(QStringLiteral("DejaVu Sans"));
    font.setBold(true);
    font.setPixelSize(qMax(8, size * 7 / 16));
    p.setFont(font);
    p.setPen(Qt::white);
    p.drawText(pixmap.rect(), Qt::AlignCenter, tag);
    return QIcon(pixmap);
}

} // namespace BadgeIcon
