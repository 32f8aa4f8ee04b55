// The sample database a new catalogue points at: real SQLite tables with consistent relations.
#include "core/app/SampleDatabase.h"
#include "core/connections/vtrtools.h"

#include <QCryptographicHash>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Runs f on a connection to file, removed again afterwards.
template <typename F>
void withDatabase(const QString &file, F f)
{
    const QString name = QStringLiteral("tst-sample-") + QString::number(quintptr(&f));
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(file);
        QVERIFY(db.open());
        f(db);
        db.close();
    }
    QSqlDatabase::removeDatabase(name);
}

qint64 scalar(QSqlDatabase &db, const QString &sql)
{
    QSqlQuery q(db);
    if (!q.exec(sql) || !q.next())
        return -1;
    return q.value(0).toLongLong();
}

} // namespace

class tst_SampleDatabase : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

private slots:
    void initTestCase()
    {
        QVERIFY(m_dir.isValid());
        qputenv("VANTRY_HOME", m_dir.path().toUtf8());
    }

    void tablesAndRelations()
    {
        const QString file = m_dir.filePath(QStringLiteral("new folder/sample.sqlite"));
        SampleDatabase::create(file);
        QVERIFY(QFileInfo::exists(file));
        QVERIFY(!QFileInfo::exists(file + QStringLiteral(".part")));
        QVERIFY(QSqlDatabase::connectionNames().isEmpty());

        withDatabase(file, [](QSqlDatabase &db) {
            QStringList tables = db.tables();
            tables.sort();
            QCOMPARE(tables, (QStringList{"CUSTOMERS", "OLD_ORDERS", "ORDERS", "ORDER_ITEMS", "PRODUCTS"}));
            qint64 total = 0;
            for (const QString &t : tables) {
                const qint64 rows = scalar(db, QStringLiteral("SELECT COUNT(*) FROM ") + t);
                QVERIFY2(rows >= 20, qPrintable(t));
                total += rows;
            }
            QVERIFY2(total >= 300 && total <= 1500, qPrintable(QString::number(total)));
            // Every reference points at an existing row.
            QCOMPARE(scalar(db, "SELECT COUNT(*) FROM ORDERS o LEFT JOIN CUSTOMERS c USING (CUSTOMER_ID) WHERE c.CUSTOMER_ID IS NULL"), 0);
            QCOMPARE(scalar(db, "SELECT COUNT(*) FROM OLD_ORDERS o LEFT JOIN CUSTOMERS c USING (CUSTOMER_ID) WHERE c.CUSTOMER_ID IS NULL"), 0);
            QCOMPARE(scalar(db, "SELECT COUNT(*) FROM ORDER_ITEMS i LEFT JOIN ORDERS o USING (ORDER_ID) WHERE o.ORDER_ID IS NULL"), 0);
            QCOMPARE(scalar(db, "SELECT COUNT(*) FROM ORDER_ITEMS i LEFT JOIN PRODUCTS p USING (PRODUCT_ID) WHERE p.PRODUCT_ID IS NULL"), 0);
            QCOMPARE(scalar(db, "SELECT COUNT(*) FROM ORDERS WHERE ORDER_ID NOT IN (SELECT ORDER_ID FROM ORDER_ITEMS)"), 0);
            // Order totals agree with their items (to the cent).
            QCOMPARE(scalar(db, "SELECT COUNT(*) FROM ORDERS o WHERE ABS(o.TOTAL - (SELECT SUM(QUANTITY * UNIT_PRICE * (1 - DISCOUNT)) "
                                "FROM ORDER_ITEMS i WHERE i.ORDER_ID = o.ORDER_ID)) > 0.006"), 0);
            QCOMPARE(scalar(db, "SELECT COUNT(*) FROM ORDERS o JOIN OLD_ORDERS p USING (ORDER_ID)"), 0);
        });
    }

    void sameContentEveryTime()
    {
        auto digest = [](const QString &file) {
            QCryptographicHash hash(QCryptographicHash::Sha256);
            withDatabase(file, [&hash](QSqlDatabase &db) {
                for (const char *t : {"CUSTOMERS", "PRODUCTS", "ORDERS", "ORDER_ITEMS", "OLD_ORDERS"}) {
                    QSqlQuery q(db);
                    QVERIFY(q.exec(QStringLiteral("SELECT * FROM %1 ORDER BY 1, 2").arg(QLatin1String(t))));
                    while (q.next())
                        for (int c = 0; c < q.record().count(); ++c)
                            hash.addData(q.value(c).toString().toUtf8() + '|');
                }
            });
            return hash.result();
        };
        const QString a = m_dir.filePath(QStringLiteral("a.sqlite"));
        const QString b = m_dir.filePath(QStringLiteral("b.sqlite"));
        SampleDatabase::create(a);
        SampleDatabase::create(b);
        QCOMPARE(digest(a), digest(b));
        SampleDatabase::create(a); // an existing file is replaced
        QCOMPARE(digest(a), digest(b));
    }

    void storedConnection()
    {
        const QString file = m_dir.filePath(QStringLiteral("Sample, with comma.sqlite"));
        const TReaderConnection r =
            ReaderConnectionFromStr(UnpackParameters(SampleDatabase::packedParameters(file)));
        QCOMPARE(r.ConnectionType, dsSqLite);
        QCOMPARE(r.DataBase, file);
        QCOMPARE(r.SourceFile, file);
        QVERIFY(r.Server.isEmpty());
    }
};

QTEST_GUILESS_MAIN(tst_SampleDatabase)
#include "tst_SampleDatabase.moc"
