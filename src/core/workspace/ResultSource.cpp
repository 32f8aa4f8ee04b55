#include "core/workspace/ResultSource.h"

#include <QSet>

namespace {

struct Token
{
    enum Kind { Word, Quoted, Number, String, Symbol, End } kind;
    QString text;
    int depth; // parenthesis depth at which the token stands
};

QList<Token> tokenize(const QString &sql)
{
    QList<Token> tokens;
    int depth = 0;
    const int n = int(sql.size());
    int i = 0;
    while (i < n) {
        const QChar c = sql[i];
        if (c.isSpace()) {
            ++i;
        } else if (c == QLatin1Char('-') && i + 1 < n && sql[i + 1] == QLatin1Char('-')) {
            while (i < n && sql[i] != QLatin1Char('\n'))
                ++i;
        } else if (c == QLatin1Char('/') && i + 1 < n && sql[i + 1] == QLatin1Char('*')) {
            const int end = int(sql.indexOf(QLatin1String("*/"), i + 2));
            i = end < 0 ? n : end + 2;
        } else if (c.isLetter() || c == QLatin1Char('_')) {
            const int start = i;
            while (i < n && (sql[i].isLetterOrNumber() || sql[i] == QLatin1Char('_') || sql[i] == QLatin1Char('$')))
                ++i;
            tokens.append({Token::Word, sql.mid(start, i - start), depth});
        } else if (c.isDigit()) {
            const int start = i;
            while (i < n && (sql[i].isLetterOrNumber() || sql[i] == QLatin1Char('.')))
                ++i;
            tokens.append({Token::Number, sql.mid(start, i - start), depth});
        } else if (c == QLatin1Char('"') || c == QLatin1Char('`') || c == QLatin1Char('[')
                   || c == QLatin1Char('\'')) {
            const QChar close = c == QLatin1Char('[') ? QLatin1Char(']') : c;
            const int start = i++;
            for (; i < n; ++i) {
                if (sql[i] == close) {
                    if (i + 1 < n && sql[i + 1] == close && close != QLatin1Char(']')) {
                        ++i; // doubled quote inside the name or string
                        continue;
                    }
                    break;
                }
            }
            i = std::min(i + 1, n);
            tokens.append({c == QLatin1Char('\'') ? Token::String : Token::Quoted,
                           sql.mid(start, i - start), depth});
        } else {
            if (c == QLatin1Char(')'))
                --depth;
            tokens.append({Token::Symbol, QString(c), depth});
            if (c == QLatin1Char('('))
                ++depth;
            ++i;
        }
    }
    tokens.append({Token::End, QString(), 0});
    return tokens;
}

bool isWord(const Token &token, const char *word)
{
    return token.kind == Token::Word && token.text.compare(QLatin1String(word), Qt::CaseInsensitive) == 0;
}

bool isName(const Token &token)
{
    return token.kind == Token::Word || token.kind == Token::Quoted;
}

bool isSymbol(const Token &token, char symbol)
{
    return token.kind == Token::Symbol && token.text == QLatin1Char(symbol);
}

// Words that end the table reference or make the result something else than table rows.
const QSet<QString> &clauseWords()
{
    static const QSet<QString> words{
        QStringLiteral("WHERE"), QStringLiteral("ORDER"), QStringLiteral("LIMIT"),
        QStringLiteral("OFFSET"), QStringLiteral("FETCH"), QStringLiteral("FOR"),
        QStringLiteral("GROUP"), QStringLiteral("HAVING"), QStringLiteral("UNION"),
        QStringLiteral("INTERSECT"), QStringLiteral("EXCEPT"), QStringLiteral("JOIN"),
        QStringLiteral("INNER"), QStringLiteral("LEFT"), QStringLiteral("RIGHT"),
        QStringLiteral("FULL"), QStringLiteral("CROSS"), QStringLiteral("NATURAL"),
        QStringLiteral("OUTER"), QStringLiteral("WINDOW"), QStringLiteral("ROWS"),
        QStringLiteral("PLAN"), QStringLiteral("WITH"), QStringLiteral("INTO")};
    return words;
}

ResultSource readOnly(const QString &reason)
{
    ResultSource source;
    source.reason = reason;
    return source;
}

} // namespace

ResultSource ResultSource::analyse(const QString &statement)
{
    const QList<Token> tokens = tokenize(statement);
    int i = 0;
    if (!isWord(tokens[i], "SELECT"))
        return readOnly(QStringLiteral("The statement is not a SELECT"));
    ++i;
    if (isWord(tokens[i], "DISTINCT"))
        return readOnly(QStringLiteral("The result is DISTINCT rows"));
    if (isWord(tokens[i], "ALL"))
        ++i;

    ResultSource source;
    // Select list: "*" or plain, possibly qualified, column names separated by commas.
    for (;;) {
        if (isSymbol(tokens[i], '*')) {
            source.fields << QStringLiteral("*");
            ++i;
        } else if (isName(tokens[i])) {
            QString name = tokens[i++].text;
            while (isSymbol(tokens[i], '.') && (isName(tokens[i + 1]) || isSymbol(tokens[i + 1], '*'))) {
                name = tokens[i + 1].text;
                i += 2;
            }
            if (isSymbol(tokens[i], '('))
                return readOnly(QStringLiteral("The result has computed columns"));
            if (clauseWords().contains(name.toUpper()) || name.compare(QLatin1String("FROM"), Qt::CaseInsensitive) == 0)
                return readOnly(QStringLiteral("The statement has no column list"));
            source.fields << name;
        } else {
            return readOnly(QStringLiteral("The result has computed columns"));
        }
        if (isSymbol(tokens[i], ',')) {
            ++i;
            continue;
        }
        break;
    }
    if (!isWord(tokens[i], "FROM"))
        return readOnly(isWord(tokens[i], "AS") || isName(tokens[i])
                            ? QStringLiteral("The result renames columns")
                            : tokens[i].kind == Token::End
                                  ? QStringLiteral("The result has no base table")
                                  : QStringLiteral("The result has computed columns"));
    ++i;
    if (!isName(tokens[i]))
        return readOnly(QStringLiteral("The result does not read from one base table"));
    const int tableStart = i;
    QString table = tokens[i++].text;
    while (isSymbol(tokens[i], '.') && isName(tokens[i + 1])) {
        table += QLatin1Char('.') + tokens[i + 1].text;
        i += 2;
    }
    Q_UNUSED(tableStart);
    // Optional alias.
    if (isWord(tokens[i], "AS"))
        ++i;
    if (isName(tokens[i]) && !clauseWords().contains(tokens[i].text.toUpper()))
        ++i;
    for (; tokens[i].kind != Token::End; ++i) {
        const Token &token = tokens[i];
        if (token.depth > 0)
            continue;
        if (isSymbol(token, ','))
            return readOnly(QStringLiteral("The result joins several tables"));
        if (isSymbol(token, ';'))
            break;
        if (token.kind != Token::Word)
            continue;
        const QString word = token.text.toUpper();
        if (word == QLatin1String("JOIN") || word == QLatin1String("NATURAL") || word == QLatin1String("CROSS"))
            return readOnly(QStringLiteral("The result joins several tables"));
        if (word == QLatin1String("GROUP") || word == QLatin1String("HAVING"))
            return readOnly(QStringLiteral("The result is grouped"));
        if (word == QLatin1String("UNION") || word == QLatin1String("INTERSECT") || word == QLatin1String("EXCEPT"))
            return readOnly(QStringLiteral("The result combines several queries"));
        if (word == QLatin1String("INTO"))
            return readOnly(QStringLiteral("The statement is not a plain query"));
    }
    if (i > tableStart && tokens[i].kind != Token::End) {
        // Something after a ";": a second statement.
        for (int j = i + 1; tokens[j].kind != Token::End; ++j)
            if (!isSymbol(tokens[j], ';'))
                return readOnly(QStringLiteral("The text holds more than one statement"));
    }
    source.writable = true;
    source.table = table;
    return source;
}
