#include "core/interchange/XlsxReader.h"

#include "core/interchange/WorkbookPackage.h"
#include "core/interchange/WorkbookSheetBuilder.h"
#include "core/interchange/XlsxSheetParser.h"
#include "core/interchange/XlsxXmlScanner.h"

namespace {

// A sheet part streams, so its cap only bounds the time a hostile file can take; the cells it may
// hold are bounded by the sheet builder.
constexpr qint64 kMaxSheetPart = qint64(4) * 1024 * 1024 * 1024;

} // namespace

XlsxReader::XlsxReader(std::unique_ptr<WorkbookPackage> package, const QString &workbookPart)
    : m_package(std::move(package))
{
    m_info = readXlsxWorkbook(*m_package, workbookPart);
    m_styleKinds = readXlsxStyles(*m_package, m_info.stylesPart);
}

XlsxReader::~XlsxReader() = default;

WorkbookSheet XlsxReader::readSheet(int index, const Progress &progress)
{
    if (index < 0 || index >= m_info.names.size())
        throwWorkbookError(m_package->file(), QStringLiteral("it has no sheet number %1").arg(index + 1));
    if (!m_sharedStringsRead) {
        m_sharedStrings = readXlsxSharedStrings(*m_package, m_info.sharedStringsPart);
        m_sharedStringsRead = true;
    }
    const QString &name = m_info.names[index];
    const QString &part = m_info.sheetParts[index];
    if (part.isEmpty() || !m_package->hasPart(part))
        throwWorkbookError(m_package->file(), QStringLiteral("the part of the sheet \"%1\" is missing").arg(name));

    WorkbookSheetBuilder sheet(m_package->file(), name, progress);
    auto device = m_package->openPart(part, kMaxSheetPart);
    // Sheets are by far the largest parts: they go through a scanner made for them, several times
    // faster than a general XML reader.
    XlsxXmlScanner xml(device.get());
    const QString cellError = XlsxSheetParser(m_sharedStrings, m_styleKinds, m_info.date1904).parse(xml, sheet);
    if (!cellError.isEmpty())
        throwWorkbookError(m_package->file(), QStringLiteral("the sheet \"%1\" is damaged: %2").arg(name, cellError));
    if (xml.hasError() || !WorkbookPackage::partFailure(device.get()).isEmpty())
        throwXlsxXmlError(*m_package, part, xml.lineNumber(), xml.errorString(), device.get());
    return sheet.take();
}
