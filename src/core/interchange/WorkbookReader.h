#pragma once
// A spreadsheet workbook read as text: its sheets in workbook order, and each sheet's cells as
// the text a user would type to get that value back (numbers in their shortest exact form,
// dates as ISO text, booleans as TRUE/FALSE, formulas as their cached value).
//
//   auto book = WorkbookReader::open("/data/prices.xlsx");   // throws VantryError
//   int index = book->sheetIndex("Sheet1");                     // -1 when there is none
//   WorkbookSheet sheet = book->readSheet(index);
//   QString text = sheet.cellText(1, 1);                        // row 1, column 1
//
// A reader is used by one thread at a time; reading may run on a worker thread.

#include <QString>
#include <QStringList>
#include <QVector>

#include <functional>
#include <memory>

// The cells of one sheet, rows and columns counted from 1. Row and column counts span the used
// range from A1, so an empty first row or column still counts.
class WorkbookSheet
{
public:
    QString name;

    int rowCount() const { return int(m_rows.size()); }
    int columnCount() const { return m_columnCount; }
    // Empty outside the used range and for empty cells.
    QString cellText(int row, int column) const
    {
        if (row < 1 || row > m_rows.size())
            return {};
        const QStringList &cells = m_rows[row - 1];
        return column >= 1 && column <= cells.size() ? cells[column - 1] : QString();
    }

    // Readers fill the sheet cell by cell, in any order.
    void setCell(int row, int column, const QString &text)
    {
        if (row < 1 || column < 1)
            return;
        if (m_rows.size() < row)
            m_rows.resize(row);
        QStringList &cells = m_rows[row - 1];
        if (cells.size() < column) {
            // Rows of a sheet are mostly as wide as those before them: one allocation a row.
            if (cells.isEmpty())
                cells.reserve(qMax(column, m_columnCount));
            cells.resize(column);
        }
        cells[column - 1] = text;
        if (column > m_columnCount)
            m_columnCount = column;
    }

private:
    QVector<QStringList> m_rows;
    int m_columnCount = 0;
};

class WorkbookReader
{
public:
    // Told how far reading has come (rows read so far); returning false cancels the read, which
    // then throws VantryError("Cancelled").
    using Progress = std::function<bool(int rowsRead)>;

    virtual ~WorkbookReader() = default;

    // Opens a .xls, .xlsx, .xlsm or .xlsb file, chosen by its contents where they tell and by its
    // extension otherwise. A missing, unreadable or damaged file throws VantryError naming the
    // file and what is wrong.
    static std::unique_ptr<WorkbookReader> open(const QString &path);

    // The sheet names in workbook order.
    virtual QStringList sheetNames() const = 0;
    // The index (from 0) of the sheet with this name, or -1.
    int sheetIndex(const QString &name) const { return sheetNames().indexOf(name); }
    // Reads one sheet whole; throws VantryError for a damaged sheet or a cancelled read.
    virtual WorkbookSheet readSheet(int index, const Progress &progress = {}) = 0;
};
