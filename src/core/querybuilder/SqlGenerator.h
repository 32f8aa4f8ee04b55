#pragma once
// Writes a query model as SQL text of one dialect, laid out by the generator options.
//
//   SqlGenerator generator({SqlDialect::MsSqlServer, "SQL Server 2005"}, options);
//   QString text = generator.generate(query);
//
// Names are quoted the dialect's way ("", [] or ``) when the model marks them quoted or the
// options ask for every name to be quoted. A row limit is written in the form the query holds
// when the dialect reads it, else in the dialect's own form where the meaning allows (TOP n of a
// single SELECT becomes LIMIT n, FIRST n becomes TOP n, and so on); a limit that has no
// equivalent (an offset with TOP, ROWS m TO n) stays as written.
//
// generate(parse(text)) parses back to the same model, and generating it again gives the same
// text.

#include "core/querybuilder/QueryModel.h"
#include "core/querybuilder/SqlFormat.h"

#include <QPair>

class SqlGenerator
{
public:
    explicit SqlGenerator(DialectChoice dialect = {}, GeneratorOptions options = {});

    QString generate(const Query &query) const;
    // Single-line texts of the pieces, as the builder window shows them in its grids.
    QString expression(const Expr &expr) const;
    QString conditions(const ConditionGroup &group) const;
    QString identifier(const Identifier &name) const;

private:
    QString query(const Query &q, const SqlFormat &f) const;
    QString part(const SelectPart &p, const RowLimit &head, const SqlFormat &f) const;
    QString from(const SelectPart &p, const SqlFormat &f) const;
    QString object(const SourceObject &o, const SqlFormat &f) const;
    QPair<QString, QString> link(const Link &l) const;
    QString group(const ConditionGroup &g, int mode, int pad, int indent, int level) const;
    QString limitText(const RowLimit &l) const;
    QString wrap(const QString &text) const;
    QString indentRest(const QString &text, int pad) const;

    DialectChoice m_dialect;
    GeneratorOptions m_options;
};
