#pragma once
#include <QString>
#include <QVector>
#include <functional>

class ResultTable;

// The open, editable dataset an import appends its rows to: the workspace's result. Rows are
// appended and written one at a time, each on its own; the caller waits for one row's outcome
// before it asks for the next.
class DatasetImportTarget
{
public:
    virtual ~DatasetImportTarget() = default;

    // The result columns the user sees, in field order; hidden fields are left out.
    virtual QVector<int> visibleFields() const = 0;
    // Appends a new row, lets `fill` set its values and writes it to the database. `done` runs on
    // the window's thread with an empty text when the row was written, or the cause of the
    // failure; a row that could not be written is taken out of the result again.
    using Fill = std::function<void(ResultTable &table, qint64 row)>;
    virtual void appendRow(const Fill &fill, std::function<void(const QString &error)> done) = 0;
};
