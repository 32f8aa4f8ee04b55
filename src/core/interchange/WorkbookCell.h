#pragma once
#include <QString>
#include <QVariant>

// One value as a workbook cell: numbers stay numbers, dates become the spreadsheet's day numbers
// (days since 1899-12-30, the fraction being the time of day) shown with a date format, NULL
// and empty texts become empty cells. Dates before 1 March 1900 have no correct day number in spreadsheets
// (their 1900 leap-year slip) and are written as ISO text instead.
struct WorkbookCell
{
    enum Kind { Empty, Number, Bool, Date, DateTime, Time, Text };
    Kind kind = Empty;
    double number = 0;  // Number, Date, DateTime, Time
    bool flag = false;  // Bool
    QString text;       // Text

    static WorkbookCell from(const QVariant &value);
};

// The number formats the date kinds are shown with.
inline const char *workbookDateFormat(WorkbookCell::Kind kind)
{
    switch (kind) {
    case WorkbookCell::Date: return "yyyy-mm-dd";
    case WorkbookCell::DateTime: return "yyyy-mm-dd hh:mm:ss";
    default: return "hh:mm:ss";
    }
}
