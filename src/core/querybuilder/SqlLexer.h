#pragma once
// Splits SQL text into tokens for the query-builder parser, following one dialect's quoting,
// string and comment rules. Comments and white space are dropped; every token keeps its place in
// the text (offset, 1-based line and column) for error messages.

#include "core/base/VantryError.h"
#include "core/querybuilder/SqlDialect.h"

#include <QString>
#include <QVector>

struct SqlToken
{
    enum Kind {
        Word,        // identifier or keyword as written: name, SELECT, count
        QuotedName,  // "name", [name], `name`; text is the name without quotes
        String,      // a string literal as written, quotes and prefix included: 'it''s', N'x'
        Number,      // 12, 1.5e3, .5, 0x1F
        Parameter,   // ?, :name, :1, @name, $1
        Operator,    // + - * / = <> <= || :: and the like
        Comma,
        Dot,
        LParen,
        RParen,
        Semicolon,
        End          // after the last token
    };
    Kind kind = End;
    QString text;
    int offset = 0;
    int length = 0; // of the token as written
    int line = 1;
    int column = 1;

    bool isWord(const char *upper) const;
};

Q_DECLARE_TYPEINFO(SqlToken, Q_RELOCATABLE_TYPE);

// A failure to read SQL text, with the place it happened (1-based line and column). message()
// is the reason followed by "(line L, column C)"; reason() is the reason alone.
class SqlParseError : public VantryError
{
public:
    SqlParseError(const QString &what, int offset, int line, int column);
    QString reason() const { return m_reason; }
    int offset() const { return m_offset; }
    int line() const { return m_line; }
    int column() const { return m_column; }

private:
    QString m_reason;
    int m_offset, m_line, m_column;
};

namespace SqlLexer {

// All tokens of the text, ending with one End token. Throws SqlParseError for an unterminated
// string, quoted name or comment, or a character that starts no token.
QVector<SqlToken> tokenize(const QString &text, SqlDialect dialect);

} // namespace SqlLexer
