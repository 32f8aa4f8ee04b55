#pragma once
#include "core/interchange/WorkbookValueText.h"

#include <QStringList>
#include <QVector>

class QIODevice;
class QXmlStreamReader;
class WorkbookPackage;

// What an .xlsx workbook part says: its sheets in workbook order with the parts that hold them,
// its date system, and where its shared strings and styles are.
struct XlsxWorkbookInfo
{
    QStringList names;
    QStringList sheetParts;  // empty where a sheet's relationship is missing
    bool date1904 = false;
    QString sharedStringsPart;
    QString stylesPart;
};

XlsxWorkbookInfo readXlsxWorkbook(const WorkbookPackage &package, const QString &workbookPart);
// For each cell format (the cells' "s" index), whether its number format shows dates or times.
QVector<SerialKind> readXlsxStyles(const WorkbookPackage &package, const QString &stylesPart);
QStringList readXlsxSharedStrings(const WorkbookPackage &package, const QString &part);

// The text of a string item (<si>, <is>) the reader stands on: its <t> texts, the runs' included
// and the phonetic guides left out. Leaves the reader on the item's end.
QString readXlsxRichText(QXmlStreamReader &xml);
// Characters the XML cannot carry are written as "_xHHHH_"; this turns them back.
QString decodeXlsxEscapes(const QString &text);
// Throws the workbook error for an XML part the reader failed on.
[[noreturn]] void throwXlsxXmlError(const WorkbookPackage &package, const QString &part, const QXmlStreamReader &xml,
                                    const QIODevice *device = nullptr);
// The same for a reader that failed with this error on this line.
[[noreturn]] void throwXlsxXmlError(const WorkbookPackage &package, const QString &part, qint64 line, const QString &error,
                                    const QIODevice *device);
