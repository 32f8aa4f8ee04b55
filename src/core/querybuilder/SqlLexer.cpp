#include "core/querybuilder/SqlLexer.h"

SqlParseError::SqlParseError(const QString &what, int offset, int line, int column)
    : VantryError(QStringLiteral("%1 (line %2, column %3)").arg(what).arg(line).arg(column)),
      m_reason(what), m_offset(offset), m_line(line), m_column(column)
{
}

bool SqlToken::isWord(const char *upper) const
{
    return kind == Word && text.compare(QLatin1String(upper), Qt::CaseInsensitive) == 0;
}

namespace {

bool isWordStart(QChar c)
{
    return c.isLetter() || c == '_';
}

bool isWordChar(QChar c)
{
    return c.isLetterOrNumber() || c == '_' || c == '$';
}

class Lexer
{
public:
    Lexer(const QString &text, SqlDialect dialect)
        : m_text(text), m_traits(SqlDialects::traits(dialect))
    {
    }

    QVector<SqlToken> run()
    {
        QVector<SqlToken> tokens;
        tokens.reserve(m_text.size() / 4 + 8); // SQL runs about four characters a token
        for (;;) {
            skipSpaceAndComments();
            SqlToken token;
            token.offset = m_pos;
            token.line = m_line;
            token.column = m_pos - m_lineStart + 1;
            if (m_pos >= m_text.size()) {
                tokens.append(std::move(token));
                return tokens;
            }
            token.kind = readToken(token);
            if (token.kind == SqlToken::QuotedName && m_name.isEmpty())
                fail(QStringLiteral("A quoted name is empty"), token.offset, token.line, token.column);
            token.text = token.kind == SqlToken::QuotedName ? m_name : shared(token.offset, m_pos - token.offset);
            token.length = m_pos - token.offset;
            tokens.append(std::move(token));
        }
    }

private:
    QChar at(int i) const { return i < m_text.size() ? m_text.at(i) : QChar(); }

    [[noreturn]] void fail(const QString &what, int offset, int line, int column) const
    {
        throw SqlParseError(what, offset, line, column);
    }

    void advance()
    {
        if (m_text.at(m_pos) == '\n') {
            ++m_line;
            m_lineStart = m_pos + 1;
        }
        ++m_pos;
    }

    void skipSpaceAndComments()
    {
        while (m_pos < m_text.size()) {
            const QChar c = m_text.at(m_pos);
            if (c.isSpace()) {
                advance();
            } else if ((c == '-' && at(m_pos + 1) == '-') || (c == '#' && m_traits.hashComments)) {
                while (m_pos < m_text.size() && m_text.at(m_pos) != '\n')
                    advance();
            } else if (c == '/' && at(m_pos + 1) == '*') {
                skipBlockComment();
            } else {
                return;
            }
        }
    }

    void skipBlockComment()
    {
        const int offset = m_pos, line = m_line, column = m_pos - m_lineStart + 1;
        int depth = 0;
        while (m_pos < m_text.size()) {
            if (m_text.at(m_pos) == '/' && at(m_pos + 1) == '*' && (depth == 0 || m_traits.nestedComments)) {
                ++depth;
                m_pos += 2;
            } else if (m_text.at(m_pos) == '*' && at(m_pos + 1) == '/') {
                m_pos += 2;
                if (--depth == 0)
                    return;
            } else {
                advance();
            }
        }
        fail(QStringLiteral("Unterminated comment"), offset, line, column);
    }

    // Reads a quoted run from m_pos (at the opening quote) to its closing quote; a doubled closing
    // quote stands for one. Returns the text between the quotes with doubled quotes undone.
    QString readQuoted(QChar close, bool backslash, const SqlToken &start, const char *what)
    {
        QString content;
        advance();
        while (m_pos < m_text.size()) {
            const QChar c = m_text.at(m_pos);
            if (backslash && c == '\\' && m_pos + 1 < m_text.size()) {
                content += c;
                advance();
                content += m_text.at(m_pos);
                advance();
            } else if (c == close) {
                advance();
                if (at(m_pos) != close)
                    return content;
                content += c;
                advance();
            } else {
                content += c;
                advance();
            }
        }
        fail(QStringLiteral("Unterminated %1").arg(QLatin1String(what)), start.offset, start.line, start.column);
    }

    bool readDollarQuote(const SqlToken &start)
    {
        int end = m_pos + 1;
        while (end < m_text.size() && (m_text.at(end).isLetterOrNumber() || m_text.at(end) == '_'))
            ++end;
        if (at(end) != '$' || (end > m_pos + 1 && m_text.at(m_pos + 1).isDigit()))
            return false;
        const QString tag = m_text.mid(m_pos, end - m_pos + 1);
        const int close = m_text.indexOf(tag, end + 1);
        if (close < 0)
            fail(QStringLiteral("Unterminated string"), start.offset, start.line, start.column);
        while (m_pos < close + tag.size())
            advance();
        return true;
    }

    SqlToken::Kind readToken(const SqlToken &start)
    {
        const QChar c = m_text.at(m_pos);
        const QChar next = at(m_pos + 1);
        if (c == '\'') {
            readQuoted('\'', m_traits.backslashEscapes, start, "string");
            return SqlToken::String;
        }
        if (c == '"') {
            m_name = readQuoted('"', !m_traits.doubleQuoteIdentifiers && m_traits.backslashEscapes, start,
                                m_traits.doubleQuoteIdentifiers ? "quoted name" : "string");
            return m_traits.doubleQuoteIdentifiers ? SqlToken::QuotedName : SqlToken::String;
        }
        if ((c == '[' && m_traits.bracketIdentifiers) || (c == '`' && m_traits.backtickIdentifiers)) {
            m_name = readQuoted(c == '[' ? QChar(']') : QChar('`'), false, start, "quoted name");
            return SqlToken::QuotedName;
        }
        if (isWordStart(c)) {
            // A one-letter prefix glued to a string: N'national', X'0A', B'01', E'escaped'.
            if (next == '\'' && QStringLiteral("NnXxBbEe").contains(c)) {
                advance();
                readQuoted('\'', c.toUpper() == 'E' || m_traits.backslashEscapes, start, "string");
                return SqlToken::String;
            }
            while (m_pos < m_text.size() && isWordChar(m_text.at(m_pos)))
                advance();
            return SqlToken::Word;
        }
        if (c.isDigit() || (c == '.' && next.isDigit())) {
            readNumber();
            return SqlToken::Number;
        }
        if (c == '$' && m_traits.dollarQuotes && readDollarQuote(start))
            return SqlToken::String;
        if (c == '?' || ((c == ':' || c == '@' || c == '$') && (isWordChar(next) || (c == '@' && next == '@')))) {
            advance();
            while (m_pos < m_text.size() && (isWordChar(m_text.at(m_pos)) || m_text.at(m_pos) == '@'))
                advance();
            return SqlToken::Parameter;
        }
        advance();
        switch (c.unicode()) {
        case ',': return SqlToken::Comma;
        case '.': return SqlToken::Dot;
        case '(': return SqlToken::LParen;
        case ')': return SqlToken::RParen;
        case ';': return SqlToken::Semicolon;
        default: break;
        }
        // Square brackets are array subscripts in PostgreSQL; elsewhere they quote names or are
        // not SQL at all.
        static const QString operatorChars = QStringLiteral("+-*/%=<>!~^&|:{}@#?");
        const bool subscript = (c == '[' || c == ']') && m_traits.dollarQuotes;
        if (!operatorChars.contains(c) && !subscript)
            fail(QStringLiteral("Unexpected character '%1'").arg(c), start.offset, start.line, start.column);
        // Two- and three-character operators.
        static const QStringList longer = {QStringLiteral("->>"), QStringLiteral("!~*"), QStringLiteral("<="),
                                           QStringLiteral(">="), QStringLiteral("<>"), QStringLiteral("!="),
                                           QStringLiteral("||"), QStringLiteral("::"), QStringLiteral("->"),
                                           QStringLiteral("<<"), QStringLiteral(">>"), QStringLiteral("!<"),
                                           QStringLiteral("!>"), QStringLiteral("@>"), QStringLiteral("<@"),
                                           QStringLiteral("&&"), QStringLiteral("~*"), QStringLiteral("!~"),
                                           QStringLiteral("^=")};
        for (const QString &op : longer) {
            if (QStringView(m_text).mid(start.offset, op.size()) == op) {
                m_pos = start.offset + int(op.size());
                break;
            }
        }
        return SqlToken::Operator;
    }

    void readNumber()
    {
        if (m_text.at(m_pos) == '0' && (at(m_pos + 1) == 'x' || at(m_pos + 1) == 'X') && isxdigit(at(m_pos + 2).toLatin1())) {
            m_pos += 2;
            while (m_pos < m_text.size() && isxdigit(m_text.at(m_pos).toLatin1()))
                ++m_pos;
            return;
        }
        while (m_pos < m_text.size() && m_text.at(m_pos).isDigit())
            ++m_pos;
        if (at(m_pos) == '.') {
            ++m_pos;
            while (m_pos < m_text.size() && m_text.at(m_pos).isDigit())
                ++m_pos;
        }
        if ((at(m_pos) == 'e' || at(m_pos) == 'E')
            && (at(m_pos + 1).isDigit() || ((at(m_pos + 1) == '+' || at(m_pos + 1) == '-') && at(m_pos + 2).isDigit()))) {
            m_pos += 2;
            while (m_pos < m_text.size() && m_text.at(m_pos).isDigit())
                ++m_pos;
        }
    }

    // The text of a token. One-character tokens (punctuation, operators, one-letter names) are
    // a good part of any statement: they share one string per character instead of each
    // allocating its own.
    QString shared(int offset, int length) const
    {
        static const QVector<QString> singles = [] {
            QVector<QString> all;
            for (int c = 0; c < 128; ++c)
                all.append(QString(QChar(c)));
            return all;
        }();
        if (length == 1 && m_text.at(offset).unicode() < 128)
            return singles.at(m_text.at(offset).unicode());
        return m_text.mid(offset, length);
    }

    const QString &m_text;
    const SqlDialects::Traits &m_traits;
    int m_pos = 0;
    int m_line = 1;
    int m_lineStart = 0;
    QString m_name;
};

} // namespace

namespace SqlLexer {

QVector<SqlToken> tokenize(const QString &text, SqlDialect dialect)
{
    return Lexer(text, dialect).run();
}

} // namespace SqlLexer
