#pragma once
#include <QString>
#include <QStringList>

// The parts of the program-wide text search and replace that need no editor: the recent-texts
// history of the search and replace dialogs, and replacing every occurrence in a text.
namespace TextSearchRules {

// The history keeps at most this many texts, newest first.
constexpr int MaxHistory = 10;

// Puts text at the top of items: an entry equal to it (in any letter case) moves there, a new
// one is inserted there. An empty text leaves the list as it is.
void promote(QStringList &items, const QString &text);

// The history as the shared state keeps it: the first MaxHistory items joined with CR LF.
QString joinHistory(const QStringList &items);
QStringList splitHistory(const QString &history);

struct Replaced
{
    QString text;
    int count = 0;
    qsizetype lastEnd = -1;  // where the last replacement ends in the new text
};

// Replaces every occurrence of `find` in text[from, to) by `replacement`, scanning forwards;
// the text outside the range stays as it is. An empty `find` replaces nothing.
Replaced replaceAll(const QString &text, const QString &find, const QString &replacement, qsizetype from,
                    qsizetype to, Qt::CaseSensitivity cs);

} // namespace TextSearchRules
