#pragma once
// Turns the tokens of a WHERE, HAVING or ON condition into a condition group: split at the
// outermost OR, then at the outermost AND (AND binds tighter), with a parenthesized run of
// conditions becoming a nested group and parentheses around one condition dropped. The AND of
// BETWEEN ... AND ... and anything inside CASE ... END stay in their condition.

#include "core/querybuilder/QueryModel.h"

namespace ConditionSplitter {

// Thrown when AND or OR has nothing on one side.
struct EmptyCondition
{
};

// Thrown for a CASE at the top of a condition that no END closes: its ANDs could not be told apart.
struct UnclosedCase
{
};

// The dialect's words that end a condition besides the clause words: MINUS as a set operator,
// and the row-limit words it reads (before a value).
struct DialectWords
{
    bool minus = false;
    bool rows = false;
    bool firstSkip = false;
    bool top = false;
};

ConditionGroup split(Expr condition, const DialectWords &words);

} // namespace ConditionSplitter
