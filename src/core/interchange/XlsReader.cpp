#include "core/interchange/XlsReader.h"

#include "core/interchange/WorkbookSheetBuilder.h"
#include "core/interchange/WorkbookValueText.h"

#include <QFile>

#include <freexl.h>

namespace {

QString freexlCause(int code)
{
    switch (code) {
    case FREEXL_FILE_NOT_FOUND:
        return QStringLiteral("the file cannot be opened");
    case FREEXL_INSUFFICIENT_MEMORY:
        return QStringLiteral("there is not enough memory to read it");
    case FREEXL_INVALID_CFBF_HEADER:
    case FREEXL_CFBF_INVALID_SIGNATURE:
        return QStringLiteral("it is not an .xls workbook (the file is damaged or of another kind)");
    case FREEXL_BIFF_WORKBOOK_NOT_FOUND:
        return QStringLiteral("it holds no workbook stream (it is another kind of document)");
    case FREEXL_UNSUPPORTED_CHARSET:
    case FREEXL_INVALID_CHARACTER:
        return QStringLiteral("its text is in a character set that cannot be read");
    default:
        return QStringLiteral("it is damaged (FreeXL error %1)").arg(code);
    }
}

} // namespace

XlsReader::XlsReader(const QString &path, const QString &file) : m_file(file.isEmpty() ? path : file)
{
    const int opened = freexl_open(QFile::encodeName(path).constData(), &m_handle);
    if (opened != FREEXL_OK) {
        freexl_close(m_handle);  // a handle that failed to open still holds what it allocated
        m_handle = nullptr;
        throwWorkbookError(m_file, freexlCause(opened));
    }
    unsigned int info = 0;
    if (freexl_get_info(m_handle, FREEXL_BIFF_PASSWORD, &info) == FREEXL_OK && info == FREEXL_BIFF_OBFUSCATED)
        fail(QStringLiteral("it is protected by a password"));
    unsigned int count = 0;
    if (const int rc = freexl_get_info(m_handle, FREEXL_BIFF_SHEET_COUNT, &count); rc != FREEXL_OK)
        fail(freexlCause(rc));
    for (unsigned int i = 0; i < count && i < 65535; ++i) {
        const char *name = nullptr;
        if (const int rc = freexl_get_worksheet_name(m_handle, (unsigned short)i, &name); rc != FREEXL_OK)
            fail(freexlCause(rc));
        m_names.append(QString::fromUtf8(name ? name : ""));
    }
}

XlsReader::~XlsReader()
{
    if (m_handle)
        freexl_close(m_handle);
}

void XlsReader::fail(const QString &what)
{
    freexl_close(m_handle);
    m_handle = nullptr;
    throwWorkbookError(m_file, what);
}

WorkbookSheet XlsReader::readSheet(int index, const Progress &progress)
{
    if (index < 0 || index >= m_names.size() || !m_handle)
        throwWorkbookError(m_file, QStringLiteral("it has no sheet number %1").arg(index + 1));
    const QString &name = m_names[index];
    unsigned int rows = 0;
    unsigned short columns = 0;
    int rc = freexl_select_active_worksheet(m_handle, (unsigned short)index);
    if (rc == FREEXL_OK)
        rc = freexl_worksheet_dimensions(m_handle, &rows, &columns);
    if (rc != FREEXL_OK)
        throwWorkbookError(m_file, QStringLiteral("the sheet \"%1\" cannot be read: %2").arg(name, freexlCause(rc)));

    WorkbookSheetBuilder sheet(m_file, name, progress);
    for (unsigned int r = 0; r < rows; ++r) {
        sheet.reachRow(int(qMin(r + 1, 1u << 30)));
        for (unsigned int c = 0; c < columns; ++c) {
            FreeXL_CellValue value;
            rc = freexl_get_cell_value(m_handle, r, (unsigned short)c, &value);
            if (rc != FREEXL_OK)
                throwWorkbookError(m_file, QStringLiteral("the sheet \"%1\" is damaged in row %2, column %3: %4")
                                               .arg(name)
                                               .arg(r + 1)
                                               .arg(c + 1)
                                               .arg(freexlCause(rc)));
            QString text;
            switch (value.type) {
            case FREEXL_CELL_INT:
                text = QString::number(value.value.int_value);
                break;
            case FREEXL_CELL_DOUBLE:
                text = numberText(value.value.double_value);
                break;
            case FREEXL_CELL_TEXT:
            case FREEXL_CELL_SST_TEXT:
            case FREEXL_CELL_DATE:
            case FREEXL_CELL_DATETIME:
            case FREEXL_CELL_TIME:
                text = QString::fromUtf8(value.value.text_value ? value.value.text_value : "");
                break;
            default:
                continue;
            }
            sheet.setCell(int(qMin(r + 1, 1u << 30)), int(c + 1), text);
        }
    }
    return sheet.take();
}
