#pragma once
#include <QSqlDatabase>
#include <QString>

// The catalogue's three tables. A new catalogue gets them with the two id_generator rows (ID 0
// for id types 1 and 10); an existing file is checked and never altered.
namespace CatalogueSchema {

constexpr int kConnectionIdType = 1;
constexpr int kHistoryIdType = 10;

void create(QSqlDatabase &db);

// Throws VantryError naming what is wrong: not a database, a missing table or column, a missing
// id_generator row.
void validate(QSqlDatabase &db, const QString &fileName);

} // namespace CatalogueSchema
