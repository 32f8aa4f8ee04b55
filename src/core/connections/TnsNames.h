#pragma once
// The Oracle client's TNS names file and the aliases it defines.

#include <QString>
#include <QStringList>

namespace TnsNames {

// The tnsnames.ora in use: $TNS_ADMIN/tnsnames.ora when that file exists; else under
// $ORACLE_HOME the first that exists of network/admin, net8/admin, net80/admin and net81/admin.
// Empty when there is none.
QString locateFile();

// The aliases a tnsnames.ora text defines, in file order: the names before "=" at the outer level
// of parentheses ("a, b = (...)" defines both). "#" starts a comment up to the line end.
QStringList parseAliases(const QString &text);

// The aliases of locateFile(); none when there is no file.
QStringList aliases();

} // namespace TnsNames
