#pragma once
#include <QString>
#include <QVariant>
#include <string>
#include <string_view>

// The rows an export writes, in the order the user sees them, without any widget in between.
// Implementations must be safe to read from a worker thread while nothing changes the rows.
class ExportSource
{
public:
    virtual ~ExportSource() = default;

    virtual int columnCount() const = 0;
    virtual QString columnName(int col) const = 0;
    virtual qint64 rowCount() const = 0;

    virtual bool isNull(qint64 row, int col) const = 0;
    // The cell as UTF-8 text, as the grid shows it (numbers in their shortest exact form, dates in
    // ISO form). The view may point into scratch, which the caller keeps until the next call.
    virtual std::string_view text(qint64 row, int col, std::string &scratch) const = 0;
    // The cell with its type (integers, doubles, bools, dates, times, texts, bytes); NULL is an
    // invalid or null QVariant.
    virtual QVariant value(qint64 row, int col) const = 0;
};
