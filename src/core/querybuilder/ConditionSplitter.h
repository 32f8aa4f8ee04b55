#pragma once
// Turns the tokens of a WHERE, HAVING or ON condition into a condition group: split at the
// outermost OR, then at the outermost AND (AND binds tighter), with a parenthesized run of
// conditions becoming a nested group and parentheses around one condition dropped. The AND of
// BETWEEN ... AND ... and anything inside CASE ... END stay in their condition.

#include "querybuilder/QueryModel.h"

namespace ConditionSplitter {

// Thrown when AND or OR has nothing on one side.
struct EmptyCondition
{
};

// minusEndsCondition: the dialect reads MINUS as a set operator.
ConditionGroup split(Expr condition, bool minusEndsCondition);

} // namespace ConditionSplitter
