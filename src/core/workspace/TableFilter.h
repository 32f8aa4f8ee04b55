#pragma once
#include <QString>
#include <QStringList>

// The table list's incremental search: the names that match "*" + search text + "*", upper-cased,
// where "*" stands for any run of characters and "?" for one (so wildcards typed in the search
// box work too). An empty search text passes every name.
namespace TableFilter {

bool wildcardMatch(const QString &mask, const QString &text);
QStringList filter(const QStringList &names, const QString &searchText);

} // namespace TableFilter
