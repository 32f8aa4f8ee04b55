#pragma once
// Reads a SELECT statement of one dialect into the query model.
//
//   SqlParser::Result r = SqlParser::parse(text, SqlDialect::PostgreSql);
//   if (!r.isSelect) ...   // INSERT, UPDATE, DDL, EXEC...: nothing parsed, keep the text
//
// What it reads: WITH [RECURSIVE]; unions (UNION [ALL|DISTINCT], EXCEPT, INTERSECT, and MINUS
// where the dialect has it) with parenthesized parts; DISTINCT; the dialect's row-limit forms
// (TOP, FIRST/SKIP, LIMIT/OFFSET, ROWS/TO, OFFSET/FETCH FIRST); tables, views, table functions and
// derived tables with aliases; inner, left, right, full, cross and natural joins with ON or USING,
// left-nested join parentheses as Access writes them; WHERE and HAVING split into condition
// groups; GROUP BY; ORDER BY with directions and NULLS FIRST/LAST. Expressions are kept as tokens,
// so window functions, CASE, casts and vendor operators pass through unchanged; subqueries in them
// are parsed into their own queries.
//
// Anything else -- a clause the builder has no place for (FOR UPDATE, INTO, joins nested on their
// right side) or text that is not SQL -- raises SqlParseError with the line and column.

#include "core/querybuilder/QueryModel.h"
#include "core/querybuilder/SqlLexer.h"

namespace SqlParser {

struct Result
{
    bool isSelect = true; // false: the statement is not a SELECT and `query` is empty
    Query query;          // empty for empty text
};

Result parse(const QString &text, SqlDialect dialect);

// One expression (a select item, a sort key) or one condition (a WHERE or ON text), as the
// builder window takes them from its grids. Throws SqlParseError.
Expr parseExpression(const QString &text, SqlDialect dialect);
ConditionGroup parseCondition(const QString &text, SqlDialect dialect);

// Whether a word ends a condition in every dialect where it stands outside parentheses (FROM,
// ORDER, JOIN, UNION...). MINUS and the row-limit words do so only in some dialects.
bool endsCondition(const QString &word);

// Whether a word cannot stand as a bare name or alias (it would read as part of the syntax).
bool isReservedWord(const QString &word);

} // namespace SqlParser
