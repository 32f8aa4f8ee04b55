#pragma once
// The readers behind WorkbookReader::open, reachable from bytes as well as from a file, so a
// fuzzer can feed them directly.

#include "core/interchange/WorkbookReader.h"

class QIODevice;

// An .xlsx, .xlsm or .xlsb package read from an open device; file names the workbook in errors.
std::unique_ptr<WorkbookReader> openWorkbookPackage(std::unique_ptr<QIODevice> device, const QString &file);
