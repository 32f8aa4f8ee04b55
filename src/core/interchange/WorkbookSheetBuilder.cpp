#include "core/interchange/WorkbookSheetBuilder.h"

#include "core/base/VantryError.h"

#include <QDir>
#include <QLocale>

void throwWorkbookError(const QString &file, const QString &cause)
{
    throw VantryError(QStringLiteral("Cannot read the workbook \"%1\": %2").arg(QDir::toNativeSeparators(file), cause));
}

WorkbookSheetBuilder::WorkbookSheetBuilder(const QString &file, const QString &sheetName,
                                           const WorkbookReader::Progress &progress)
    : m_file(file), m_progress(progress)
{
    m_sheet.name = sheetName;
}

void WorkbookSheetBuilder::tooLarge(const QString &what) const
{
    throwWorkbookError(m_file, QStringLiteral("the sheet \"%1\" %2").arg(m_sheet.name, what));
}

void WorkbookSheetBuilder::setCell(int row, int column, const QString &text)
{
    if (row < 1 || row > kMaxRows)
        tooLarge(QStringLiteral("has a cell in row %1, outside rows 1 to %2").arg(row).arg(kMaxRows));
    if (column < 1 || column > kMaxColumns)
        tooLarge(QStringLiteral("has a cell in column %1, outside columns 1 to %2").arg(column).arg(kMaxColumns));
    if (text.isEmpty())
        return;
    // A row stores every cell up to its last used one, and each row between counts once.
    qint64 added = 0;
    if (size_t(row) > m_rowLength.size())
        added += qint64(row) - qint64(m_rowLength.size());
    const int length = size_t(row) <= m_rowLength.size() ? m_rowLength[size_t(row) - 1] : 0;
    if (column > length)
        added += column - length;
    if (m_storedCells + added > kMaxStoredCells)
        tooLarge(QStringLiteral("holds more than %1 cells, too many to load into memory")
                     .arg(QLocale(QLocale::English).toString(kMaxStoredCells)));
    m_storedCells += added;
    if (size_t(row) > m_rowLength.size())
        m_rowLength.resize(size_t(row), 0);
    if (column > length)
        m_rowLength[size_t(row) - 1] = column;
    m_sheet.setCell(row, column, text);
}

void WorkbookSheetBuilder::reachRow(int row)
{
    // Progress is told every 1,000 rows: often enough for a bar, rarely enough to cost nothing.
    if (!m_progress || row < m_reportedRow + 1000)
        return;
    m_reportedRow = row;
    if (!m_progress(row))
        throw VantryError(QStringLiteral("Cancelled"));
}
