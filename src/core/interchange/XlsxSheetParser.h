#pragma once
#include "core/interchange/WorkbookValueText.h"

#include <QByteArray>
#include <QStringList>
#include <QVector>

class WorkbookSheetBuilder;
class XlsxXmlScanner;

// Reads the cells of one .xlsx worksheet part into a sheet, as it streams: the cell's type ("t")
// and format ("s") decide its text; formulas give their cached value.
class XlsxSheetParser
{
public:
    XlsxSheetParser(const QStringList &sharedStrings, const QVector<SerialKind> &styleKinds, bool date1904)
        : m_sharedStrings(sharedStrings), m_styleKinds(styleKinds), m_date1904(date1904)
    {
    }

    // Reads up to the end of <sheetData>. Returns an error text for a cell it cannot place or
    // read, or an empty text (XML errors stay in xml).
    QString parse(XlsxXmlScanner &xml, WorkbookSheetBuilder &sheet) const;

private:
    enum class CellType { Number, SharedString, Boolean, IsoDate, Text };
    QString cellText(CellType type, int style, const QByteArray &value, bool &ok) const;

    const QStringList &m_sharedStrings;
    const QVector<SerialKind> &m_styleKinds;
    bool m_date1904;
};
