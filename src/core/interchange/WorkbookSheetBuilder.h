#pragma once
#include "core/interchange/WorkbookReader.h"

#include <vector>

// The error a reader throws: it names the workbook file and what is wrong with it.
[[noreturn]] void throwWorkbookError(const QString &file, const QString &cause);

// Fills a WorkbookSheet for a reader and keeps a hostile file from making it huge: rows and columns
// stay within a workbook's limits, and the cells a sheet stores (each row holds every cell up to
// its last used one) stay within a budget that fits in memory. Reports progress as rows advance.
class WorkbookSheetBuilder
{
public:
    static constexpr int kMaxRows = 1048576;
    static constexpr int kMaxColumns = 16384;
    static constexpr qint64 kMaxStoredCells = 20000000;

    WorkbookSheetBuilder(const QString &file, const QString &sheetName,
                         const WorkbookReader::Progress &progress);

    // Stores a cell (counted from 1); empty texts are left out. Throws past the limits.
    void setCell(int row, int column, const QString &text);
    // Tells progress that reading has reached this row (counted from 1); throws when cancelled.
    void reachRow(int row);

    WorkbookSheet take() { return std::move(m_sheet); }

private:
    [[noreturn]] void tooLarge(const QString &what) const;

    QString m_file;
    WorkbookReader::Progress m_progress;
    WorkbookSheet m_sheet;
    std::vector<int> m_rowLength;  // stored cells per row
    qint64 m_storedCells = 0;
    int m_reportedRow = 0;
};
