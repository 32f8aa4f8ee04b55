#include "core/interchange/WorkbookReader.h"
#include "core/interchange/WorkbookFormats.h"

#include "core/interchange/CompoundFile.h"
#include "core/interchange/WorkbookPackage.h"
#include "core/interchange/WorkbookSheetBuilder.h"
#include "core/interchange/XlsReader.h"
#include "core/interchange/XlsbReader.h"
#include "core/interchange/XlsxReader.h"

#include <QFile>
#include <QFileInfo>

namespace {

const QByteArray kZipSignature("PK\x03\x04", 4);

} // namespace

std::unique_ptr<WorkbookReader> openWorkbookPackage(std::unique_ptr<QIODevice> device, const QString &path)
{
    auto package = std::make_unique<WorkbookPackage>(std::move(device), path);
    const QString fallback = package->hasPart(QStringLiteral("xl/workbook.xml")) ? QStringLiteral("xl/workbook.xml")
                                                                                  : QStringLiteral("xl/workbook.bin");
    const QString workbook = package->packageTarget(QStringLiteral("/officeDocument"), fallback);
    if (!package->hasPart(workbook))
        throwWorkbookError(path, QStringLiteral("it is a ZIP file without a workbook part (not an Excel workbook)"));
    // The binary workbook keeps the package's layout with parts of records instead of XML.
    if (workbook.endsWith(QLatin1String(".bin"), Qt::CaseInsensitive))
        return std::make_unique<XlsbReader>(std::move(package), workbook);
    return std::make_unique<XlsxReader>(std::move(package), workbook);
}

std::unique_ptr<WorkbookReader> WorkbookReader::open(const QString &path)
{
    auto file = std::make_unique<QFile>(path);
    if (!QFileInfo(path).isFile() || !file->open(QIODevice::ReadOnly))
        throwWorkbookError(path, QFileInfo::exists(path) ? file->errorString() : QStringLiteral("the file does not exist"));
    const QByteArray head = file->peek(8);
    if (head.isEmpty())
        throwWorkbookError(path, QStringLiteral("the file is empty"));
    if (head.startsWith(kZipSignature))
        return openWorkbookPackage(std::move(file), path);
    // A compound document is an .xls workbook (or a password-protected package, which the reader
    // refuses by name). Its reader takes the file's bytes and keeps only the workbook stream.
    if (CompoundFile::hasSignature(head) || QFileInfo(path).suffix().compare(QLatin1String("xls"), Qt::CaseInsensitive) == 0) {
        const QByteArray bytes = file->readAll();
        if (bytes.size() != file->size())
            throwWorkbookError(path, file->errorString());
        return std::make_unique<XlsReader>(bytes, path);
    }
    throwWorkbookError(path, QStringLiteral("it is not an Excel workbook (.xls, .xlsx, .xlsm or .xlsb)"));
}
