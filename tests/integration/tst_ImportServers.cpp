// A workbook sheet written by openpyxl imported through the wizard into a SQLite table and into
// the PostgreSQL test server: every sheet row arrives as one table row, with its numbers, texts,
// dates and empty cells (NULL), while a row the database refuses (a duplicate key) reports the
// database's error in its status column and the rows after it still post.
#include "ResultPanelHarness.h"
#include "TestServers.h"
#include "XlsxSheets.h"
#include "gui/app/UserMessages.h"
#include "gui/components/DBGridEh1.h"
#include "gui/components/ResultGridModel.h"
#include "gui/connections/FileNameEdit.h"
#include "gui/interchange/DatasetImportWizardUn.h"
#include "gui/interchange/SheetPreviewModel.h"

#include <QComboBox>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QtTest>

namespace {

const QString kTable = QStringLiteral("issue19w_import");
constexpr int kRows = 60;
constexpr int kDuplicateRow = 3;  // its id is the one the table already holds

// The sheet row r as the test writes it: column 1 is never loaded, then id, name, amount, qty, day.
QJsonArray sheetRow(int r)
{
    if (r == kDuplicateRow)
        return {QStringLiteral("dup"), 1, QStringLiteral("Again"), 1, 1, QJsonValue()};
    QJsonArray row{QStringLiteral("row %1").arg(r), 100 + r, QStringLiteral("Name %1 ä").arg(r)};
    // Every fourth row leaves amount, qty and day empty: they arrive as NULL.
    if (r % 4 == 0)
        return row;
    row.append(r * 1.25);
    row.append(r * 10);
    row.append(QJsonObject{{QStringLiteral("date"), QDate(2024, 1, 1).addDays(r).toString(Qt::ISODate)}});
    return row;
}

// What the table should hold for sheet row r, as the check query prints it.
QString expectedRow(int r)
{
    if (r % 4 == 0)
        return QStringLiteral("%1|Name %2 ä|NULL|NULL|NULL").arg(100 + r).arg(r);
    return QStringLiteral("%1|Name %2 ä|%3|%4|%5")
        .arg(100 + r)
        .arg(r)
        .arg(QString::number(r * 1.25))
        .arg(r * 10)
        .arg(QDate(2024, 1, 1).addDays(r).toString(Qt::ISODate));
}

} // namespace

class TestImportServers : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    QString m_book;

    static QStringList rows(const QSqlDatabase &db, const QString &sql)
    {
        QSqlQuery query(db);
        if (!query.exec(sql))
            qWarning() << query.lastError().text();
        QStringList out;
        while (query.next()) {
            QStringList fields;
            for (int i = 0; i < query.record().count(); ++i) {
                const QVariant v = query.value(i);
                fields << (query.isNull(i) ? QStringLiteral("NULL")
                           : i == 2        ? QString::number(v.toDouble())
                                           : v.toString());
            }
            out << fields.join(QLatin1Char('|'));
        }
        return out;
    }

private slots:
    void initTestCase()
    {
        VANTRY_REQUIRE_TEST_SERVERS();
        m_book = m_dir.filePath(QStringLiteral("import.xlsx"));
        QJsonArray sheet;
        for (int r = 1; r <= kRows; ++r)
            sheet.append(sheetRow(r));
        QVERIFY(writeXlsxSheets(m_book, {xlsxSheet(QStringLiteral("Data"), sheet)}));
        UserMessages::setHandler([](UserMessages::Kind, const QString &text) { qWarning() << "message box:" << text; });
    }

    void sheetArrivesRowForRow_data()
    {
        QTest::addColumn<QString>("server");
        QTest::newRow("sqlite") << "sqlite";
        QTest::newRow("postgres") << "postgres";
    }
    void sheetArrivesRowForRow()
    {
        QFETCH(QString, server);
        const bool pg = server == QLatin1String("postgres");
        const QString file = m_dir.filePath(QStringLiteral("import.db"));
        QSqlDatabase db;
        if (pg) {
            db = TestServers::openServer(server, QStringLiteral("import-pg"));
        } else {
            QFile::remove(file);
            db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("import-sqlite"));
            db.setDatabaseName(file);
            QVERIFY(db.open());
        }
        QSqlQuery setup(db);
        setup.exec(QStringLiteral("drop table if exists ") + kTable);
        QVERIFY2(setup.exec(QStringLiteral("create table %1 (id integer primary key, name varchar(40) not null, "
                                           "amount numeric(10,2), qty integer, day date)").arg(kTable)),
                 qPrintable(setup.lastError().text()));
        QVERIFY(setup.exec(QStringLiteral("insert into %1 (id, name) values (1, 'Existing')").arg(kTable)));

        ResultPanelHarness harness(file);
        harness.run->openTable(pg ? TestServers::postgres() : TestServers::sqlite(file),
                               QStringLiteral("select * from ") + kTable, {});
        QVERIFY(harness.waitIdle());
        QVERIFY(harness.panel->isResultOpen());

        TDatasetImportWizardFrm wizard(harness.panel.get());
        wizard.show();
        wizard.nextClick();
        wizard.findChild<TFileNameEdit *>(QStringLiteral("fe"))->setText(m_book);
        wizard.nextClick();
        QTRY_VERIFY(!wizard.isBusy());
        wizard.findChild<QComboBox *>(QStringLiteral("cbSheet"))->setEditText(QStringLiteral("Data"));
        wizard.nextClick();
        QTRY_VERIFY(!wizard.isBusy());
        QCOMPARE(wizard.currentPage(), int(TDatasetImportWizardFrm::ReadyPage));
        QCOMPARE(wizard.sheet()->rowCount(), kRows);
        wizard.StartBtnClick();
        QTRY_VERIFY_WITH_TIMEOUT(!wizard.isBusy(), 60000);

        QCOMPARE(wizard.postedRows(), kRows - 1);
        QCOMPARE(wizard.failedRows(), 1);
        const QString refused = wizard.preview()->status(kDuplicateRow);
        QVERIFY2(!refused.isEmpty() && refused != QLatin1String("OK"), qPrintable(refused));
        QVERIFY2(refused.contains(pg ? QStringLiteral("duplicate key") : QStringLiteral("UNIQUE"), Qt::CaseInsensitive),
                 qPrintable(refused));
        for (int r = 1; r <= kRows; ++r)
            if (r != kDuplicateRow)
                QCOMPARE(wizard.preview()->status(r), QString("OK"));

        QStringList expected{QStringLiteral("1|Existing|NULL|NULL|NULL")};
        for (int r = 1; r <= kRows; ++r)
            if (r != kDuplicateRow)
                expected << expectedRow(r);
        const QString day = pg ? QStringLiteral("to_char(day, 'YYYY-MM-DD')") : QStringLiteral("date(day)");
        QCOMPARE(rows(db, QStringLiteral("select id, name, amount, qty, %1 from %2 order by id").arg(day, kTable)), expected);
        // The grid shows the rows that arrived, and not the refused one.
        QCOMPARE(harness.panel->grid()->gridModel()->rowCount(), kRows);

        if (pg)
            setup.exec(QStringLiteral("drop table ") + kTable);
        setup = QSqlQuery();
        db = QSqlDatabase();
        QSqlDatabase::removeDatabase(pg ? QStringLiteral("import-pg") : QStringLiteral("import-sqlite"));
    }
};

QTEST_MAIN(TestImportServers)
#include "tst_ImportServers.moc"
