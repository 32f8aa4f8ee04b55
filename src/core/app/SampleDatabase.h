#pragma once
// The small SQLite database that a new catalogue points its first stored connection at, so that
// a first start shows real tables and rows.

#include <QByteArray>
#include <QString>

namespace SampleDatabase {

// Creates the database at sqliteFile (its folder is created when missing; an existing file is
// replaced): the related tables CUSTOMERS, PRODUCTS, ORDERS, ORDER_ITEMS and OLD_ORDERS with a
// few hundred rows. The content is generated in code and is the same on every call.
// Throws VantryError with the driver's message when the file can't be written.
void create(const QString &sqliteFile);

// "Sample (SQLite)": the stored connection's name.
QString connectionName();

// The CONNECTION_PARAMETERS value of the stored connection: a dsSqLite record named
// connectionName() with DataBase and SourceFile set to sqliteFile, as packed parameter text.
QByteArray packedParameters(const QString &sqliteFile);

} // namespace SampleDatabase
