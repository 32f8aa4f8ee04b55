#pragma once
#include <QString>

class QSqlError;

// How a driver error reads to the user.

// For a statement: the database's own message when there is one (without Qt's generic "Unable to
// execute statement" behind it), else whatever the driver said.
QString sqlErrorText(const QSqlError &error);

// For connecting and other driver calls: the driver's summary of what it was doing, then the
// database's text ("Unable to open database: ..."); either alone when the other is empty or repeats it.
QString describeSqlError(const QSqlError &error);
