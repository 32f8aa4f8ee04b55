#include "core/base/BulkArray.h"
#include "core/workspace/ResultColumn.h"

#include <QtTest>
#include <string>

// Result columns of millions of values, past the size where their storage leaves the heap for
// reserved address space: values stay exact through growth, through the memory handed back when
// the fetch ends, and through later batches appended to a finished column.
class TestLargeColumns : public QObject
{
    Q_OBJECT

    static std::string textOf(qint64 row)
    {
        // Lengths vary from 0 to 40 bytes, with a zero byte inside, so texts straddle blocks.
        std::string text = std::to_string(row * 7919);
        text.append(size_t(row % 31), char('a' + row % 26));
        if (row % 5 == 0)
            text.insert(text.begin() + 1, '\0');
        return row % 97 == 0 ? std::string() : text;
    }

private slots:
    void arrayKeepsValuesThroughGrowthShrinkAndMoves()
    {
        constexpr quint64 Count = 3'000'000;
        BulkArray<quint64> values;
        for (quint64 i = 0; i < Count; ++i)
            values.push_back(i * 0x9E3779B97F4A7C15ull);
        values.shrinkToFit();
        QVERIFY(values.memoryBytes() < Count * 8 + 8192);
        // Grows again after its spare memory was handed back, as a later batch of rows does.
        for (quint64 i = Count; i < Count + 500'000; ++i)
            values.push_back(i * 0x9E3779B97F4A7C15ull);
        BulkArray<quint64> moved = std::move(values);
        QCOMPARE(values.size(), size_t(0));
        BulkArray<quint64> assigned;
        assigned.push_back(1);
        assigned = std::move(moved);
        QCOMPARE(assigned.size(), size_t(Count + 500'000));
        for (quint64 i = 0; i < assigned.size(); ++i)
            if (assigned[size_t(i)] != i * 0x9E3779B97F4A7C15ull)
                QFAIL(qPrintable(QStringLiteral("value %1 changed").arg(i)));
    }

    void textColumnAcrossBatchesAndHugeValues()
    {
        constexpr qint64 Rows = 600'000;
        const std::string huge(9 * 1024 * 1024, 'h'); // larger than any text block
        ResultColumn column(QStringLiteral("t"), QStringLiteral("text"), QMetaType::UnknownType);
        auto fill = [&](ResultColumn &target, qint64 from, qint64 to) {
            for (qint64 row = from; row < to; ++row) {
                if (row % 11 == 3)
                    target.appendNull();
                else if (row == 250'000)
                    target.appendText(huge.data(), huge.size());
                else {
                    const std::string text = textOf(row);
                    target.appendText(text.data(), text.size());
                }
            }
        };
        fill(column, 0, Rows / 2);
        column.finish();
        ResultColumn batch(QStringLiteral("t"), QStringLiteral("text"), QMetaType::UnknownType);
        fill(batch, Rows / 2, Rows);
        column.appendColumn(std::move(batch));
        fill(column, Rows, Rows + 1000); // into the finished column's own last block
        column.finish();
        QCOMPARE(column.rowCount(), Rows + 1000);
        for (qint64 row = 0; row < Rows + 1000; ++row) {
            const bool null = row % 11 == 3;
            if (column.isNull(row) != null)
                QFAIL(qPrintable(QStringLiteral("row %1: NULL mark wrong").arg(row)));
            const std::string expected = null ? std::string() : row == 250'000 ? huge : textOf(row);
            if (column.bytesAt(row) != expected)
                QFAIL(qPrintable(QStringLiteral("row %1: text changed").arg(row)));
        }
    }

    void numbersWidenedToTextAfterGrowth()
    {
        // A SQLite column of a million integers that then receives a text: every number is
        // rewritten as text in new storage, and stays readable as the number it was.
        constexpr qint64 Rows = 1'000'000;
        ResultColumn column(QStringLiteral("m"), QString(), QMetaType::UnknownType);
        auto number = [](qint64 row) { return (row - 500'000) * 9'000'000'000'000LL; };
        for (qint64 row = 0; row < Rows; ++row)
            column.appendInt(number(row));
        column.appendText("end", 3);
        column.finish();
        QVERIFY(column.hasMixedKinds());
        for (qint64 row = 0; row < Rows; ++row) {
            const QVariant value = column.value(row);
            if (value.metaType().id() != QMetaType::LongLong || value.toLongLong() != number(row))
                QFAIL(qPrintable(QStringLiteral("row %1: %2").arg(row).arg(value.toString())));
        }
        QCOMPARE(column.value(Rows).toString(), QStringLiteral("end"));
    }
};

QTEST_GUILESS_MAIN(TestLargeColumns)
#include "tst_LargeColumns.moc"
