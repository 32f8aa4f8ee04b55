#pragma once
#include <QSqlDatabase>
#include <QString>
#include <QVariantList>

// Writes values into a statement in place of its "?" markers, in turn, as the driver's own
// literals: for statements that cannot take bound values (a fetch through a native client) or
// drivers that mangle them. A "?" inside an inserted literal is never taken for a marker.
QString withLiterals(const QSqlDatabase &db, QString sql, const QVariantList &values);
