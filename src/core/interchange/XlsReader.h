#pragma once
#include "core/interchange/WorkbookReader.h"
#include "core/interchange/XlsWorkbookGlobals.h"

// Reads .xls workbooks of Excel 97 to 2003 (BIFF8) and of Excel 5 and 95 (BIFF5) from the file's
// bytes. The workbook stream is taken out of the compound file and the file's bytes let go; the
// globals are read at once, and each sheet's records are read from where the globals say they
// start. Numbers in date and time formats become ISO text, booleans TRUE and FALSE, formulas their
// cached value.
class XlsReader : public WorkbookReader
{
public:
    // bytes is the whole file; file names the workbook in errors.
    XlsReader(const QByteArray &bytes, const QString &file);

    QStringList sheetNames() const override { return m_names; }
    WorkbookSheet readSheet(int index, const Progress &progress = {}) override;

private:
    QString m_file;
    QByteArray m_stream;
    XlsWorkbookGlobals m_globals;
    QStringList m_names;
};
