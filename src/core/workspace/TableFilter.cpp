#include "core/workspace/TableFilter.h"

namespace TableFilter {

bool wildcardMatch(const QString &mask, const QString &text)
{
    // Greedy matching with one backtrack point for the last "*": linear in practice.
    int m = 0, t = 0, starM = -1, starT = 0;
    while (t < text.size()) {
        if (m < mask.size() && (mask[m] == QLatin1Char('?') || mask[m] == text[t])) {
            ++m;
            ++t;
        } else if (m < mask.size() && mask[m] == QLatin1Char('*')) {
            starM = m++;
            starT = t;
        } else if (starM >= 0) {
            m = starM + 1;
            t = ++starT;
        } else {
            return false;
        }
    }
    while (m < mask.size() && mask[m] == QLatin1Char('*'))
        ++m;
    return m == mask.size();
}

QStringList filter(const QStringList &names, const QString &searchText)
{
    const QString mask = (QLatin1Char('*') + searchText + QLatin1Char('*')).toUpper();
    QStringList shown;
    for (const QString &name : names) {
        if (wildcardMatch(mask, name.toUpper()))
            shown << name;
    }
    return shown;
}

} // namespace TableFilter
