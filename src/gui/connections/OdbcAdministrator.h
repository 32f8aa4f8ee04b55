#pragma once

class QWidget;

// Starts the ODBC data source administrator: the first of ODBCManageDataSourcesQ5 and
// ODBCManageDataSourcesQ4 found on PATH, without waiting for it. When neither is installed, the
// user's ODBC data source file ($ODBCINI, else ~/.odbc.ini, created empty when missing) opens in
// a text editor window.
namespace OdbcAdministrator {

void start(QWidget *parent);

} // namespace OdbcAdministrator
