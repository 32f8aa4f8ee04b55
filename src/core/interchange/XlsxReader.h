#pragma once
#include "core/interchange/WorkbookReader.h"
#include "core/interchange/XlsxParts.h"

class WorkbookPackage;

// Reads .xlsx and .xlsm workbooks: a ZIP package of XML parts. The workbook part, its
// relationships and the styles are read when it opens; the shared strings on the first sheet read;
// each sheet streams as it is read.
class XlsxReader : public WorkbookReader
{
public:
    XlsxReader(std::unique_ptr<WorkbookPackage> package, const QString &workbookPart);
    ~XlsxReader() override;

    QStringList sheetNames() const override { return m_info.names; }
    WorkbookSheet readSheet(int index, const Progress &progress = {}) override;

private:
    std::unique_ptr<WorkbookPackage> m_package;
    XlsxWorkbookInfo m_info;
    QVector<SerialKind> m_styleKinds;
    QStringList m_sharedStrings;
    bool m_sharedStringsRead = false;
};
