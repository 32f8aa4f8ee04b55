#include "core/querybuilder/QueryModel.h"

#include "core/querybuilder/SqlParser.h"

#include <QRegularExpression>

Identifier Identifier::of(const QString &name)
{
    static const QRegularExpression plain(QStringLiteral("^[A-Za-z_][A-Za-z0-9_$]*$"));
    return Identifier{name, !plain.match(name).hasMatch() || SqlParser::isReservedWord(name)};
}

bool ExprPart::operator==(const ExprPart &o) const
{
    return kind == o.kind && text == o.text && (kind != Subquery || (subqueryKind == o.subqueryKind && subquery == o.subquery));
}

QString Expr::aggregate() const
{
    if (parts.size() < 3 || parts.at(0).kind != ExprPart::Word || parts.at(1).kind != ExprPart::LParen
        || parts.last().kind != ExprPart::RParen)
        return QString();
    // The call's parenthesis must close at the end: COUNT(*) + 1 is no aggregate item.
    int depth = 0;
    for (int i = 1; i < parts.size(); ++i) {
        if (parts.at(i).kind == ExprPart::LParen)
            ++depth;
        else if (parts.at(i).kind == ExprPart::RParen && --depth == 0 && i != parts.size() - 1)
            return QString();
    }
    static const QStringList aggregates = {QStringLiteral("COUNT"), QStringLiteral("SUM"), QStringLiteral("AVG"),
                                           QStringLiteral("MIN"), QStringLiteral("MAX")};
    const QString name = parts.at(0).text.toUpper();
    return aggregates.contains(name) ? name : QString();
}

Expr Expr::fromText(const QString &text, SqlDialect dialect)
{
    return SqlParser::parseExpression(text, dialect);
}

QString SourceObject::referenceName() const
{
    if (!alias.isEmpty())
        return alias.name;
    return name.isEmpty() ? QString() : name.last().name;
}

bool SourceObject::operator==(const SourceObject &o) const
{
    return kind == o.kind && name == o.name && arguments == o.arguments && derived == o.derived && alias == o.alias
           && columnAliases == o.columnAliases && outer == o.outer;
}

bool Link::operator==(const Link &o) const
{
    return type == o.type && left == o.left && right == o.right && natural == o.natural
           && innerKeyword == o.innerKeyword && condition == o.condition && usingColumns == o.usingColumns;
}

bool RowLimit::operator==(const RowLimit &o) const
{
    return form == o.form && count == o.count && offset == o.offset && percent == o.percent && withTies == o.withTies
           && skipFirst == o.skipFirst;
}

bool SelectPart::operator==(const SelectPart &o) const
{
    return setOperator == o.setOperator && all == o.all && distinctKeyword == o.distinctKeyword && nested == o.nested
           && distinct == o.distinct && headLimit == o.headLimit && items == o.items && objects == o.objects
           && links == o.links && where == o.where && groupBy == o.groupBy && having == o.having;
}

bool Query::operator==(const Query &o) const
{
    return recursive == o.recursive && with == o.with && parts == o.parts && orderBy == o.orderBy && limit == o.limit;
}
