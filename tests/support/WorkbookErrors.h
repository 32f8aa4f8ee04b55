#pragma once
// Opens a workbook and reads every sheet, expecting a refusal whose message names the file and
// contains `part`.
#include "core/base/VantryError.h"
#include "core/interchange/WorkbookReader.h"

#include <QtTest>

inline void expectWorkbookError(const QString &path, const QString &part)
{
    try {
        auto book = WorkbookReader::open(path);
        for (int i = 0; i < book->sheetNames().size(); ++i)
            book->readSheet(i);
        QFAIL(qPrintable(QStringLiteral("no error for %1").arg(path)));
    } catch (const VantryError &error) {
        QVERIFY2(error.message().contains(path), qPrintable(error.message()));
        QVERIFY2(error.message().contains(part), qPrintable(error.message()));
    }
}
