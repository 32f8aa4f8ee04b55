#pragma once
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QString>
#include <QVariant>
#include <functional>
#include <initializer_list>

// Small helpers that run catalogue statements and turn every driver failure into a VantryError
// whose message carries the statement's purpose and the driver's text.
namespace SqlExec {

// Prepares and executes `sql` with positional `binds`; throws on failure. Returns the active query.
QSqlQuery run(QSqlDatabase &db, const QString &sql, std::initializer_list<QVariant> binds = {});

// Runs `work` inside BEGIN IMMEDIATE ... COMMIT (rolled back when `work` throws). The immediate
// lock makes SQLite serialise writers across processes.
void transaction(QSqlDatabase &db, const std::function<void()> &work);

} // namespace SqlExec
