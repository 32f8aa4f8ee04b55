#include "core/app/TextSearchRules.h"

namespace TextSearchRules {

void promote(QStringList &items, const QString &text)
{
    if (text.isEmpty())
        return;
    for (qsizetype i = 0; i < items.size(); ++i) {
        if (items.at(i).compare(text, Qt::CaseInsensitive) == 0) {
            items.removeAt(i);
            break;
        }
    }
    items.prepend(text);
}

QString joinHistory(const QStringList &items)
{
    return items.mid(0, MaxHistory).join(QStringLiteral("\r\n"));
}

QStringList splitHistory(const QString &history)
{
    if (history.isEmpty())
        return {};
    return history.split(QStringLiteral("\r\n"));
}

Replaced replaceAll(const QString &text, const QString &find, const QString &replacement, qsizetype from,
                    qsizetype to, Qt::CaseSensitivity cs)
{
    Replaced out;
    from = qBound<qsizetype>(0, from, text.size());
    to = qBound<qsizetype>(from, to, text.size());
    if (find.isEmpty()) {
        out.text = text;
        return out;
    }
    out.text.reserve(text.size());
    out.text.append(QStringView(text).left(from));
    qsizetype pos = from;
    for (;;) {
        const qsizetype hit = text.indexOf(find, pos, cs);
        if (hit < 0 || hit + find.size() > to)
            break;
        out.text.append(QStringView(text).mid(pos, hit - pos));
        out.text.append(replacement);
        out.lastEnd = out.text.size();
        ++out.count;
        pos = hit + find.size();
    }
    out.text.append(QStringView(text).mid(pos));
    return out;
}

} // namespace TextSearchRules
