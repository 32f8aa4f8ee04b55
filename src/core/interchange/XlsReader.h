#pragma once
#include "core/interchange/WorkbookReader.h"

// Reads .xls workbooks (BIFF2 to BIFF8) through FreeXL. FreeXL reads a file by its path, keeps
// the file open until the reader goes, and gives each cell as a number, a text or an ISO date;
// it reads booleans as the numbers 1 and 0 and does not read formulas' results.
class XlsReader : public WorkbookReader
{
public:
    // path is the file FreeXL opens; file names the workbook in errors (they differ for a copy).
    explicit XlsReader(const QString &path, const QString &file = {});
    ~XlsReader() override;

    QStringList sheetNames() const override { return m_names; }
    WorkbookSheet readSheet(int index, const Progress &progress = {}) override;

private:
    // Closes the workbook and throws: used while opening, where no destructor will run.
    [[noreturn]] void fail(const QString &what);

    QString m_file;
    const void *m_handle = nullptr;
    QStringList m_names;
};
