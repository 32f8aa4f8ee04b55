#include "core/interchange/WorkbookCell.h"
#include "core/interchange/WorkbookExport.h"

#include <xlsxwriter.h>

#include <QDir>
#include <memory>

namespace WorkbookExport {

namespace {

constexpr qint64 MaxRows = 1048576;
constexpr int MaxColumns = 16384;
constexpr int MaxText = 32767;

// Frees a workbook that is abandoned (cancel or failure) without assembling the file, which
// for a large sheet would take as long as the export itself. Freeing leaves the sheet's
// row-by-row temporary file open, so it is closed here first.
struct WorkbookDiscarder
{
    void operator()(lxw_workbook *book) const
    {
        lxw_worksheet *sheet;
        STAILQ_FOREACH(sheet, book->worksheets, list_pointers) {
            if (sheet->optimize_tmpfile) {
                fclose(sheet->optimize_tmpfile);
                sheet->optimize_tmpfile = nullptr;
            }
        }
        lxw_workbook_free(book);
    }
};

void check(lxw_error error, const QString &fileName)
{
    if (error != LXW_NO_ERROR)
        throw VantryError(QStringLiteral("Cannot write \"%1\": %2")
                              .arg(QDir::toNativeSeparators(fileName), QString::fromUtf8(lxw_strerror(error))));
}

void writeString(lxw_worksheet *sheet, lxw_row_t row, lxw_col_t col, const QString &text, const QString &fileName)
{
    // A workbook cell holds at most 32,767 characters.
    const QByteArray bytes = (text.size() > MaxText ? text.left(MaxText) : text).toUtf8();
    check(worksheet_write_string(sheet, row, col, bytes.constData(), nullptr), fileName);
}

} // namespace

void writeXlsx(const ExportSource &source, const QString &fileName, ExportProgress *progress)
{
    const qint64 rows = source.rowCount();
    const int cols = source.columnCount();
    if (rows + 1 > MaxRows)
        throw VantryError(QStringLiteral("The result has %1 rows; an .xlsx sheet holds at most %2 with the title row.")
                              .arg(rows).arg(MaxRows - 1));
    if (cols > MaxColumns)
        throw VantryError(QStringLiteral("The result has %1 columns; an .xlsx sheet holds at most %2.").arg(cols).arg(MaxColumns));

    lxw_workbook_options options = {};
    options.constant_memory = LXW_TRUE;
    const QByteArray name = QFile::encodeName(fileName);
    std::unique_ptr<lxw_workbook, WorkbookDiscarder> book(workbook_new_opt(name.constData(), &options));
    if (!book)
        throw VantryError(QStringLiteral("Cannot create the workbook \"%1\".").arg(QDir::toNativeSeparators(fileName)));
    lxw_worksheet *sheet = workbook_add_worksheet(book.get(), nullptr);
    lxw_format *formats[3];
    for (WorkbookCell::Kind kind : {WorkbookCell::Date, WorkbookCell::DateTime, WorkbookCell::Time}) {
        lxw_format *format = workbook_add_format(book.get());
        format_set_num_format(format, workbookDateFormat(kind));
        formats[kind - WorkbookCell::Date] = format;
    }

    for (int col = 0; col < cols; ++col)
        writeString(sheet, 0, lxw_col_t(col), source.columnName(col), fileName);
    for (qint64 row = 0; row < rows; ++row) {
        const auto r = lxw_row_t(row + 1);
        for (int col = 0; col < cols; ++col) {
            const WorkbookCell cell = WorkbookCell::from(source.value(row, col));
            const auto c = lxw_col_t(col);
            switch (cell.kind) {
            case WorkbookCell::Empty:
                break;
            case WorkbookCell::Number:
                check(worksheet_write_number(sheet, r, c, cell.number, nullptr), fileName);
                break;
            case WorkbookCell::Bool:
                check(worksheet_write_boolean(sheet, r, c, cell.flag, nullptr), fileName);
                break;
            case WorkbookCell::Date:
            case WorkbookCell::DateTime:
            case WorkbookCell::Time:
                check(worksheet_write_number(sheet, r, c, cell.number, formats[cell.kind - WorkbookCell::Date]), fileName);
                break;
            case WorkbookCell::Text:
                writeString(sheet, r, c, cell.text, fileName);
                break;
            }
        }
        if (progress && (row & 1023) == 0) {
            progress->rowsDone.store(row, std::memory_order_relaxed);
            if (progress->cancel.load(std::memory_order_relaxed))
                throw ExportCancelled();
        }
    }
    lxw_error error = workbook_close(book.release());
    check(error, fileName);
    if (progress)
        progress->rowsDone.store(rows);
}

} // namespace WorkbookExport
