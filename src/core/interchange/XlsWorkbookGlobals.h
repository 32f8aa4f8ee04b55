#pragma once
#include "core/interchange/WorkbookValueText.h"

#include <QStringDecoder>
#include <QStringList>
#include <QVector>

// One worksheet of an .xls workbook: its name and where its records start in the workbook stream.
struct XlsSheetEntry
{
    QString name;
    quint32 offset = 0;
};

// What the workbook globals at the start of an .xls workbook stream say about reading its sheets.
struct XlsWorkbookGlobals
{
    bool biff8 = true;            // BIFF8 (Excel 97 to 2003) rather than BIFF5 (Excel 5 and 95)
    bool date1904 = false;        // days count from 1904-01-01 rather than 1900-01-01
    QVector<XlsSheetEntry> sheets;  // worksheets only (no charts or macro sheets), in workbook order
    QVector<SerialKind> xfKinds;  // how each cell format shows a number: plain, date or time
    QStringList sharedStrings;    // the texts that BIFF8 cells refer to by index
    QStringDecoder decoder;       // BIFF5 keeps texts in 8 bits of the workbook's code page
};

// Reads the globals: the records from the stream's start to the first EOF. Throws VantryError
// naming the file for a stream that is damaged, protected by a password or of another version.
void readXlsWorkbookGlobals(const QByteArray &stream, const QString &file, XlsWorkbookGlobals &globals);
