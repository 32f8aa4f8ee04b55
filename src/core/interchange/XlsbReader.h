#pragma once
#include "core/interchange/WorkbookReader.h"
#include "core/interchange/XlsxParts.h"

class WorkbookPackage;

// Reads .xlsb workbooks: the same ZIP package and relationships as .xlsx, with parts made of
// BIFF12 records instead of XML. Each sheet streams its records as it is read.
class XlsbReader : public WorkbookReader
{
public:
    XlsbReader(std::unique_ptr<WorkbookPackage> package, const QString &workbookPart);
    ~XlsbReader() override;

    QStringList sheetNames() const override { return m_info.names; }
    WorkbookSheet readSheet(int index, const Progress &progress = {}) override;

private:
    void readWorkbook(const QString &workbookPart);
    void readStyles();
    void readSharedStrings();

    std::unique_ptr<WorkbookPackage> m_package;
    XlsxWorkbookInfo m_info;  // the package layout is the same as in .xlsx
    QVector<SerialKind> m_styleKinds;
    QStringList m_sharedStrings;
    bool m_sharedStringsRead = false;
};
