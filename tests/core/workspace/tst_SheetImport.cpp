// How a sheet row lands in a new result row: the sheet name a typed choice stands for, the k-th
// visible field taking sheet column k + 1, empty cells as NULL, and texts converted to the
// column's type as typed text in the grid is.
#include "FilledTable.h"
#include "core/base/VantryError.h"
#include "core/workspace/SheetImport.h"

#include <QtTest>

class TestSheetImport : public QObject
{
    Q_OBJECT

private slots:
    void sheetNameDropsOneQuoteAtEachEnd_data()
    {
        QTest::addColumn<QString>("chosen");
        QTest::addColumn<QString>("name");
        QTest::newRow("plain") << "Sheet 1" << "Sheet 1";
        QTest::newRow("quoted") << "\"Sheet 1\"" << "Sheet 1";
        QTest::newRow("leading only") << "\"Sheet 1" << "Sheet 1";
        QTest::newRow("trailing only") << "Sheet 1\"" << "Sheet 1";
        QTest::newRow("doubled") << "\"\"Q\"\"" << "\"Q\"";
        QTest::newRow("inner kept") << "a\"b" << "a\"b";
        QTest::newRow("one quote") << "\"" << "";
    }
    void sheetNameDropsOneQuoteAtEachEnd()
    {
        QFETCH(QString, chosen);
        QFETCH(QString, name);
        QCOMPARE(SheetImport::sheetNameOf(chosen), name);
    }

    void visibleFieldsTakeColumnsFromTwo()
    {
        // Fetched columns whose storage the first row decides: integer, text, real, integer.
        auto table = filledTable({{"id", "integer"}, {"name", "text"}, {"price", "real"}, {"qty", "integer"}},
                                 {{1, "a", 1.5, 7}});
        WorkbookSheet sheet;
        sheet.setCell(1, 1, QStringLiteral("never loaded"));
        sheet.setCell(1, 2, QStringLiteral("42"));
        sheet.setCell(1, 3, QStringLiteral("2.25"));
        sheet.setCell(1, 4, QStringLiteral("x"));
        // Row 2: empty cells, and a text that is no number for an integer column.
        sheet.setCell(2, 2, QStringLiteral("seven"));

        // name is hidden: id, price and qty take columns 2, 3 and 4.
        const QVector<int> visible{0, 2, 3};
        const qint64 first = table->insertRow();
        SheetImport::fillRow(*table, first, visible, sheet, 1);
        QCOMPARE(table->value(first, 0), QVariant(qint64(42)));
        QVERIFY(table->isNull(first, 1));
        QCOMPARE(table->value(first, 2), QVariant(2.25));
        QCOMPARE(table->value(first, 3), QVariant(QStringLiteral("x")));  // left for the database to refuse

        const qint64 second = table->insertRow();
        SheetImport::fillRow(*table, second, visible, sheet, 2);
        QCOMPARE(table->value(second, 0), QVariant(QStringLiteral("seven")));
        QVERIFY(table->isNull(second, 2));
        QVERIFY(table->isNull(second, 3));
        QCOMPARE(table->rowState(second), ResultTable::RowState::Inserted);
    }

    void readOnlyResultRefusesTheRow()
    {
        auto table = filledTable({{"id", "integer"}}, {{1}});
        const qint64 row = table->insertRow();
        table->setReadOnly(true);
        WorkbookSheet sheet;
        sheet.setCell(1, 2, QStringLiteral("5"));
        QVERIFY_THROWS_EXCEPTION(VantryError, SheetImport::fillRow(*table, row, {0}, sheet, 1));
    }
};

QTEST_MAIN(TestSheetImport)
#include "tst_SheetImport.moc"
