#include "core/connections/SqlNames.h"

#include "core/base/DataFolder.h"

#include <QFile>
#include <QRegularExpression>

namespace SqlNames {

QSet<QString> builtInReservedWords()
{
    // The words a table name collides with most often; the file adds the rest.
    static const char *const words[] = {
        "ADD", "ALL", "ALTER", "AND", "ANY", "AS", "ASC", "BETWEEN", "BY", "CASE", "CHECK", "COLUMN",
        "CONSTRAINT", "CREATE", "CROSS", "CURRENT", "DATABASE", "DATE", "DEFAULT", "DELETE", "DESC",
        "DISTINCT", "DROP", "ELSE", "END", "EXISTS", "FOR", "FOREIGN", "FROM", "FULL", "GRANT", "GROUP",
        "HAVING", "IN", "INDEX", "INNER", "INSERT", "INTO", "IS", "JOIN", "KEY", "LEFT", "LIKE", "LIMIT",
        "NOT", "NULL", "OF", "ON", "OR", "ORDER", "OUTER", "PRIMARY", "REFERENCES", "RIGHT", "ROW",
        "ROWS", "SELECT", "SET", "TABLE", "THEN", "TO", "UNION", "UNIQUE", "UPDATE", "USER", "USING",
        "VALUES", "VIEW", "WHEN", "WHERE", "WITH"};
    QSet<QString> set;
    for (const char *word : words)
        set.insert(QString::fromLatin1(word));
    return set;
}

QSet<QString> readReservedWordFile(const QString &fileName)
{
    QSet<QString> words;
    QFile file(fileName);
    if (fileName.isEmpty() || !file.open(QIODevice::ReadOnly | QIODevice::Text))
        return words;
    static const QRegularExpression separators(QStringLiteral("[\\s,;]+"));
    const QStringList lines = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    for (const QString &line : lines) {
        const QString trimmed = line.trimmed();
        if (trimmed.startsWith(QLatin1Char('#')) || trimmed.startsWith(QLatin1String("--")))
            continue;
        for (const QString &word : trimmed.split(separators, Qt::SkipEmptyParts))
            words.insert(word.toUpper());
    }
    return words;
}

const QSet<QString> &reservedWords()
{
    static const QSet<QString> words = [] {
        QSet<QString> set = builtInReservedWords();
        set.unite(readReservedWordFile(DataFolder::findBesideExecutable(QStringLiteral("sql_reserved_words.txt"))));
        return set;
    }();
    return words;
}

bool needsQuotes(const QString &part, const QSet<QString> &words)
{
    for (const QChar c : part)
        if (c.isSpace())
            return true;
    return words.contains(part.toUpper());
}

QString quotePart(const QString &part, QuoteStyle style, const QSet<QString> &words)
{
    if (!needsQuotes(part, words))
        return part;
    switch (style) {
    case QuoteStyle::Brackets:
        return QLatin1Char('[') + QString(part).replace(QLatin1String("]"), QLatin1String("]]")) + QLatin1Char(']');
    case QuoteStyle::BackQuotes:
        return QLatin1Char('`') + QString(part).replace(QLatin1String("`"), QLatin1String("``")) + QLatin1Char('`');
    case QuoteStyle::DoubleQuotes:
        break;
    }
    return QLatin1Char('"') + QString(part).replace(QLatin1String("\""), QLatin1String("\"\"")) + QLatin1Char('"');
}

QString qualifiedName(const QString &catalog, const QString &schema, const QString &table, QuoteStyle style,
                      const QSet<QString> &words)
{
    const QString name = quotePart(table, style, words);
    if (schema.isEmpty())
        return name;
    const QString qualified = quotePart(schema, style, words) + QLatin1Char('.') + name;
    return catalog.isEmpty() ? qualified : quotePart(catalog, style, words) + QLatin1Char('.') + qualified;
}

} // namespace SqlNames
