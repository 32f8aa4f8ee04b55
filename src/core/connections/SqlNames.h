#pragma once
// Table names as the table list shows them: qualified with catalogue and schema where the source
// has them, each part quoted when it holds a blank or is a reserved word.

#include <QSet>
#include <QString>
#include <QStringList>

namespace SqlNames {

// How a part that needs quoting is quoted.
enum class QuoteStyle {
    DoubleQuotes, // "order lines"  (standard SQL)
    Brackets,     // [order lines]  (the caller's bracket style)
    BackQuotes    // `order lines`  (MySQL and MariaDB)
};

// The reserved words of the process: the built-in list plus the words of
// "sql_reserved_words.txt" (beside the executable, else in the data folder) when present.
// Read once, on first use; all in upper case.
const QSet<QString> &reservedWords();

// The built-in minimal list (upper case).
QSet<QString> builtInReservedWords();

// Words of a reserved-word file: separated by line breaks, blanks, commas or semicolons; lines
// starting with "#" or "--" are comments. Returned in upper case; a missing file gives none.
QSet<QString> readReservedWordFile(const QString &fileName);

// True when the part holds a blank (any white space) or is a reserved word (ignoring case).
bool needsQuotes(const QString &part, const QSet<QString> &words);

// The part, quoted when needsQuotes() says so. A quote character inside is doubled.
QString quotePart(const QString &part, QuoteStyle style, const QSet<QString> &words = reservedWords());

// catalog "." schema "." table with both, schema "." table with a schema only, else the table
// alone; each part through quotePart().
QString qualifiedName(const QString &catalog, const QString &schema, const QString &table, QuoteStyle style,
                      const QSet<QString> &words = reservedWords());

} // namespace SqlNames
