// The Excel source lists a workbook's sheets as its tables, in workbook order, from the record's
// source file (or its database name when the source file is empty); an unreadable workbook
// raises an error that names it.

#include "core/connections/impDMun.h"
#include "core/connections/vtrIL.h"

#include "ErrorOf.h"
#include "PythonWriter.h"

#include <QTemporaryDir>
#include <QtTest>

class tst_WorkbookSheetTables : public QObject
{
    Q_OBJECT

private slots:
    void sheetsAreTheTables()
    {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("book.xlsx"));
        QVERIFY(runPythonWriter(QStringLiteral("import sys, openpyxl\n"
                                               "wb = openpyxl.Workbook(); wb.active.title = 'Orders'\n"
                                               "wb.create_sheet('Order Lines'); wb.create_sheet('Customers')\n"
                                               "wb.save(sys.argv[1])\n"),
                                {path}));
        TimpDM dm;
        TReaderConnection rc;
        rc.ConnectionType = dsExcel;
        rc.SourceFile = path;
        QStringList tables{QStringLiteral("stale")};
        dm.GetTablesListR(rc, tables, true, true);
        QCOMPARE(tables, (QStringList{"Orders", "Order Lines", "Customers"}));

        rc.SourceFile.clear();
        rc.DataBase = path;
        tables.clear();
        dm.GetTablesListR(rc, tables, true, true);
        QCOMPARE(tables.size(), 3);

        rc.DataBase = dir.filePath(QStringLiteral("missing.xlsx"));
        const QString error = errorOf([&] { dm.GetTablesListR(rc, tables, true, true); });
        QVERIFY2(error.contains(rc.DataBase), qPrintable(error));
    }
};

QTEST_GUILESS_MAIN(tst_WorkbookSheetTables)
#include "tst_WorkbookSheetTables.moc"
