#pragma once
#include "core/interchange/GridExport.h"

class QIODevice;

// The workbook export: field names in row 1, then every field of every row from row 2, numbers
// as numbers, dates as dates, NULL as an empty cell.
namespace WorkbookExport {

// Excel 97-2003 (.xls, BIFF8 in a compound file) into a seekable device. At most 65,536 rows
// including the title row and 256 columns; texts longer than MaxXlsText characters (a cell's limit) are cut.
void writeXls(const ExportSource &source, QIODevice &out, ExportProgress *progress);
constexpr int MaxXlsText = 32767;

// Office Open XML (.xlsx) to a file name, row by row in constant memory.
void writeXlsx(const ExportSource &source, const QString &fileName, ExportProgress *progress);

} // namespace WorkbookExport
