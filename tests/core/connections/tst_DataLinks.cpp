// Data link files and the OLE DB strings around them: the UTF-16 file with its "[oledb]" header,
// the "FILE NAME=" rules of the connection string editor, the data link dialog's string, and
// the ADO path's reading of a "File Name=" string.
#include "core/base/VantryError.h"
#include "core/connections/AdoToOdbc.h"
#include "core/connections/DataLinkFile.h"
#include "core/connections/DataLinkProperties.h"

#include "ErrorOf.h"
#include "TempHome.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>
#include <QtTest>

namespace {

QByteArray bytesOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class tst_DataLinks : public QObject
{
    Q_OBJECT

private slots:
    void fileIsUtf16WithItsHeader()
    {
        TempHome home;
        const QString path = QDir(DataLinkFile::folder()).filePath("Sales.udl");
        QVERIFY(path.startsWith(home.path() + "/Data Links/"));
        const QString text = QStringLiteral("Provider=MSDASQL.1;Extended Properties=\"DSN=Verkäufe\"");
        DataLinkFile::write(path, text);
        const QByteArray bytes = bytesOf(path);
        QVERIFY(bytes.startsWith(QByteArray("\xFF\xFE[\0o\0l\0e\0d\0b\0]\0\r\0\n\0", 20)));
        QVERIFY(bytes.endsWith(QByteArray(QStringEncoder(QStringConverter::Utf16LE).encode(text + "\r\n"))));
        QCOMPARE(DataLinkFile::read(path), text);
        QCOMPARE(DataLinkFile::fileNames(), QStringList({"Sales.udl"}));
        QVERIFY(errorOf([] { DataLinkFile::read("/no/such/dir/a.udl"); })
                    .startsWith("The data link file /no/such/dir/a.udl cannot be read: "));
    }

    void otherEncodingsAndBadFilesRead_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QString>("expected");
        QTest::addColumn<bool>("fails");
        const QString body = QStringLiteral("[OLEDB]\r\n; comment\r\n\r\nProvider=SQLOLEDB.1;Data Source=s\r\n");
        QTest::newRow("utf-16 be") << QByteArray("\xFE\xFF", 2) + QStringEncoder(QStringConverter::Utf16BE).encode(body)
                                   << "Provider=SQLOLEDB.1;Data Source=s" << false;
        QTest::newRow("utf-16 le without mark") << QByteArray(QStringEncoder(QStringConverter::Utf16LE).encode(body))
                                               << "Provider=SQLOLEDB.1;Data Source=s" << false;
        QTest::newRow("utf-8") << body.toUtf8() << "Provider=SQLOLEDB.1;Data Source=s" << false;
        QTest::newRow("header only") << QByteArray("[oledb]\n; nothing\n") << "" << false;
        QTest::newRow("no header") << QByteArray("Provider=SQLOLEDB.1\n") << "" << true;
    }
    void otherEncodingsAndBadFilesRead()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(QString, expected);
        QFETCH(bool, fails);
        QString read;
        const QString error = errorOf([&] { read = DataLinkFile::parse(bytes, "x.udl"); });
        QCOMPARE(!error.isEmpty(), fails);
        if (fails)
            QCOMPARE(error, QStringLiteral("x.udl is not a data link file: it has no \"[oledb]\" header."));
        else
            QCOMPARE(read, expected);
    }

    void fileNameStringsRoundTrip_data()
    {
        QTest::addColumn<QString>("current");
        QTest::addColumn<bool>("useDataLink");
        QTest::addColumn<QString>("shown");
        QTest::addColumn<QString>("result");
        QTest::newRow("in the link folder") << "FILE NAME=/links/Sales.udl" << true << "Sales.udl"
                                            << "FILE NAME=/links/Sales.udl";
        QTest::newRow("elsewhere") << "FILE NAME=/home/ann/Sales.udl" << true << "/home/ann/Sales.udl"
                                   << "FILE NAME=/home/ann/Sales.udl";
        QTest::newRow("below the link folder") << "FILE NAME=/links/old/Sales.udl" << true << "/links/old/Sales.udl"
                                               << "FILE NAME=/links/old/Sales.udl";
        QTest::newRow("without folder") << "FILE NAME=Sales.udl" << true << "Sales.udl" << "FILE NAME=/links/Sales.udl";
        QTest::newRow("other case") << "File Name=/links/Sales.udl" << true << "Sales.udl" << "FILE NAME=/links/Sales.udl";
        QTest::newRow("empty name") << "FILE NAME=" << true << "" << "";
        QTest::newRow("a string") << "Provider=SQLOLEDB.1;Data Source=s" << false << "Provider=SQLOLEDB.1;Data Source=s"
                                  << "";
    }
    void fileNameStringsRoundTrip()
    {
        QFETCH(QString, current);
        QFETCH(bool, useDataLink);
        QFETCH(QString, shown);
        QFETCH(QString, result);
        const auto choice = DataLinkFile::editorChoice(current, "/links/");
        QCOMPARE(choice.useDataLink, useDataLink);
        QCOMPARE(choice.text, shown);
        if (useDataLink)
            QCOMPARE(DataLinkFile::fileNameString(choice.text, "/links"), result);
    }

    void dataLinkPropertiesMakeTheString()
    {
        DataLinkProperties p;
        p.provider = "MSDASQL.1";
        p.userId = "ann";
        p.password = "pa;ss\"word";
        p.extendedProperties = "DRIVER={SQLite3};Database=/data/a.db";
        QCOMPARE(p.connectionString(),
                 QStringLiteral("Provider=MSDASQL.1;Password=\"pa;ss\"\"word\";Persist Security Info=True;User ID=ann;"
                                "Extended Properties=\"DRIVER={SQLite3};Database=/data/a.db\""));
        const DataLinkProperties back = DataLinkProperties::fromConnectionString(p.connectionString());
        QCOMPARE(back.password, p.password);
        QCOMPARE(back.extendedProperties, p.extendedProperties);
        QVERIFY(back.others.isEmpty());
        QCOMPARE(back.connectionString(), p.connectionString());
        // Values opening with a bracket the reader knows, unbalanced, survive the round trip.
        for (const QString &odd : {QStringLiteral("{SQLite3"), QStringLiteral("'x"), QStringLiteral("\"y")}) {
            DataLinkProperties q;
            q.provider = odd;
            q.others << AdoToOdbc::Pair{QStringLiteral("Mode"), odd};
            const DataLinkProperties read = DataLinkProperties::fromConnectionString(q.connectionString());
            QCOMPARE(read.provider, odd);
            QCOMPARE(read.others.size(), 1);
            QCOMPARE(read.others.first().value, odd);
        }
        // What the ADO path makes of it: the extended properties as they stand.
        QCOMPARE(AdoToOdbc::translate(p.connectionString()), p.extendedProperties);
    }

    void dataLinkPropertiesKeepWhatTheyDontShow()
    {
        const DataLinkProperties p = DataLinkProperties::fromConnectionString(
            "Provider=SQLOLEDB.1;Server=db1;Database=sales;UID=ann;PWD=x;Connect Timeout=5;Persist Security Info=False");
        QCOMPARE(p.dataSource, QStringLiteral("db1"));
        QCOMPARE(p.initialCatalog, QStringLiteral("sales"));
        QCOMPARE(p.userId, QStringLiteral("ann"));
        QCOMPARE(p.password, QStringLiteral("x"));
        QCOMPARE(p.others.size(), 1);
        QCOMPARE(p.connectionString(), QStringLiteral("Provider=SQLOLEDB.1;Password=x;Persist Security Info=True;User ID=ann;"
                                                      "Initial Catalog=sales;Data Source=db1;Connect Timeout=5"));
    }

    void adoPathReadsFileNameStrings()
    {
        TempHome home;
        const QString odbc = QStringLiteral("DRIVER={SQLite3};Database=/data/a.db");
        DataLinkFile::write(QDir(DataLinkFile::folder()).filePath("a.udl"),
                            "Provider=MSDASQL.1;Extended Properties=\"" + odbc + "\"");
        QCOMPARE(AdoToOdbc::translate(DataLinkFile::fileNameString("a.udl")), odbc);
        QCOMPARE(AdoToOdbc::translate("File Name=a.udl"), odbc);
        // Pieces beside the file name win over the file's own.
        QCOMPARE(AdoToOdbc::translate("File Name=a.udl;Extended Properties=\"DSN=Other\""), QStringLiteral("DSN=Other"));

        const QString loop = QDir(DataLinkFile::folder()).filePath("loop.udl");
        DataLinkFile::write(loop, "File Name=" + loop);
        QCOMPARE(errorOf([&] { AdoToOdbc::translate("File Name=" + loop); }),
                 "The data link file " + loop + " names another data link file.");
        QVERIFY(errorOf([] { AdoToOdbc::translate("File Name=missing.udl"); }).startsWith("The data link file "));
    }
};

QTEST_GUILESS_MAIN(tst_DataLinks)
#include "tst_DataLinks.moc"
