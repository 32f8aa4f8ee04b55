#pragma once
#include <QString>
#include <string_view>

// What the grid needs to know about a column's type beyond its stored values: whether a value of
// it can help locate a row with "=", and whether it is an exact decimal kept as text that must
// still sort and filter as a number.
namespace ValueTypes {

// False for types without equality on their engine (json, xml, the geometric types, large
// objects), and for values the grid holds less exactly than the database (Firebird's times and
// scaled numbers on the generic path), which would find no row. typeName is the name the fetch
// gave the column: a database type name, "oid N" for a PostgreSQL type the fetch does not name,
// or a Qt type name on the generic path.
bool canLocate(const QString &driverName, const QString &typeName);

// True for NUMERIC and DECIMAL columns.
bool isDecimal(const QString &typeName);

// Three-way comparison of two decimal texts ("-12.50", "3", "1e5" is not expected) by value,
// to any number of digits. "NaN" sorts after every number, as PostgreSQL sorts it.
int compareDecimal(std::string_view a, std::string_view b);

// True when the text reads as a decimal number compareDecimal() understands.
bool isDecimalText(std::string_view text);

} // namespace ValueTypes
