#pragma once
// The nine connection types the connection dialog offers, in the order of its type box, with the
// data-source kind each stands for and the code stored in the catalogue column CONNECTION_TYPE.

#include "core/connections/vtrIL.h"

#include <QString>

namespace ConnectionTypes {

struct Entry
{
    const char *text;     // the type box's entry text
    TDataSourceType type; // stored inside the record
    int code;             // stored in CONNECTION_TYPE
};

// The code of every type outside the nine. It is the ODBC code too: that sharing is intended.
constexpr int kFallbackCode = 341;

int count();                        // 9
const Entry &entry(int index);      // index 0..8; throws VantryError otherwise
QString entryText(int index);       // "Oracle Database", ...
TDataSourceType typeOfIndex(int index);
int indexOfType(TDataSourceType type); // -1 when the dialog doesn't offer the type
int codeOfType(TDataSourceType type);  // kFallbackCode for every type outside the nine
int indexOfCode(int code);             // -1 for an unknown code; 341 is the ODBC entry
TDataSourceType typeOfCode(int code);  // dsNone for an unknown code; 341 gives dsODBC

} // namespace ConnectionTypes
