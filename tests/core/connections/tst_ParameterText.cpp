// The parameter text of a connection record: the stored format every saved connection depends on.
#include "core/base/VantryError.h"
#include "core/connections/vtrtools.h"

#include "ErrorOf.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QtTest>

namespace {

// Characters that stress the escaping: the separators, every escaped control character, the
// escape letters themselves, and text outside ASCII (including a surrogate pair).
const QString kAlphabet = QStringLiteral("ab nlc0\\,;=\"'\r\n\t\a\b\f\v\x1b") + QChar(0)
                          + QStringLiteral("éß€ж中") + QString::fromUtf8("\xF0\x9D\x84\x9E");

QString randomString(QRandomGenerator &g, bool allowEmpty = true)
{
    const int length = int(g.bounded(allowEmpty ? 0 : 1, 12));
    QString s;
    while (s.size() < length) {
        const int i = int(g.bounded(int(kAlphabet.size())));
        s += kAlphabet.at(i);
        if (kAlphabet.at(i).isHighSurrogate())
            s += kAlphabet.at(i + 1); // keep the pair whole
        else if (kAlphabet.at(i).isLowSurrogate())
            s.chop(1);
    }
    return s;
}

TReaderConnection randomRecord(QRandomGenerator &g)
{
    auto b = [&g] { return g.bounded(2) == 1; };
    auto u = [&g] { return quint32(g.generate()); };
    auto i = [&g] { return qint32(g.generate()); };
    auto s = [&g] { return randomString(g); };
    TReaderConnection r;
    r.Description = s();
    r.ConnectionID = i();
    r.ConnectionType = TDataSourceType(g.bounded(kDataSourceTypeCount));
    r.UseTablesMask = b();
    r.TablesMask = s();
    r.UseFilesMask = b();
    r.FilesMask = s();
    r.SourceFile = s();
    r.Directory = s();
    r.SearchInSubdirectories = b();
    r.FileEncoding = TVtrFileEncoding(g.bounded(7));
    r.Delimited = b();
    r.Delimiter = s();
    r.LineTerminator = randomString(g, false); // an empty one reads back as "{CR}+{LF}"
    r.Quote = s();
    r.HeaderLines = u();
    r.FooterLines = u();
    r.OdbcDsnName = s();
    r.Server = s();
    r.DataBase = s();
    r.UserName = s();
    r.Password = s();
    r.IsTable = b();
    r.Table = s();
    r.Tables = s();
    r.SelectStatement = s();
    r.ShowSystemTables = b();
    r.DisableBulkFetch = b();
    r.CrossTable = b();
    r.FirstField = u();
    r.Blocks = u();
    r.BlockLength = u();
    r.RejectedFile = s();
    r.RDelimiter = s();
    r.RQuote = s();
    r.ExcelVersion = TExcelVersion(g.bounded(2));
    r.AccessVersion = TAccessVersion(g.bounded(2));
    r.SQL_SEPARATOR = s();
    r.SqlBefore = s();
    r.SqlAfter = s();
    r.Port = i();
    r.ReadAllTables = b();
    r.ReadAllData = b();
    r.NoOfTablesToRead = u();
    r.NoOfRecordsToRead = u();
    r.TLS = i();
    r.TimeOut = i();
    r.XMLTableTag = s();
    r.XMLRecordTag = s();
    r.XMLTransformationType = TXMLTransformationType(g.bounded(3));
    r.XMLTransformation = s();
    r.SSLCACert = s();
    r.SSLCert = s();
    r.SSLKey = s();
    r.LoginRequired = b();
    r.Passive = b();
    r.UseHostCommand = b();
    r.AutoLogin = b();
    r.UseUnicode = b();
    r.Compress = b();
    r.OraConnectAs = ToraConnectAs(g.bounded(3));
    return r;
}

// The text of a default record with some items replaced.
QString textWithItems(const QMap<int, QString> &items)
{
    TReaderConnection r;
    r.LineTerminator = QStringLiteral("{CR}+{LF}");
    QStringList parts = ReaderConnectionToStr(r).mid(3).split(QLatin1Char(','));
    for (auto it = items.begin(); it != items.end(); ++it)
        parts[it.key()] = it.value();
    return QStringLiteral("OP=") + parts.join(QLatin1Char(','));
}

} // namespace

class tst_ParameterText : public QObject
{
    Q_OBJECT

    QTemporaryDir m_home;
    QString rejectedDefault() const
    {
        return QLatin1Char('"') + m_home.path() + QStringLiteral("/Rejected Records File.tab\"");
    }

private slots:
    void initTestCase()
    {
        QVERIFY(m_home.isValid());
        qputenv("VANTRY_HOME", m_home.path().toUtf8());
    }

    void fixedRecordGivesFixedText()
    {
        TReaderConnection r;
        r.ConnectionType = dsMySql;
        r.Server = QStringLiteral("db.example.com");
        r.DataBase = QStringLiteral("shop");
        r.UserName = QStringLiteral("alice");
        r.Password = QStringLiteral("p,w\\d\r\n");
        r.Description = QStringLiteral("Orders, live");
        r.ConnectionID = -5;
        r.HeaderLines = 2;
        r.LineTerminator = QStringLiteral("{CR}+{LF}");
        r.Port = 3306;
        r.ReadAllTables = true;
        r.ReadAllData = true;
        r.TLS = 1;
        r.UseUnicode = true;
        r.Compress = true;
        r.OraConnectAs = ocaSYSDBA;
        r.RecordNo = 77; // run-time only: not written

        const QString expected = QStringLiteral(
            "OP=9,0,,,,0,,,2,0,,db.example.com,shop,alice,p\\cw\\\\d\\n\\l,0,,,,0,"
            "Orders\\c live,-5,0,,0,0,0,0,,,{CR}+{LF},0,0,,,,0,0,3306,-1,-1,0,0,,1,,,0,0,,"
            "0,0,0,0,-1,-1,,,,0,1");
        const QString text = ReaderConnectionToStr(r);
        QCOMPARE(text, expected);
        QCOMPARE(text.count(QLatin1Char(',')), kParameterItemCount - 1);

        TReaderConnection back = ReaderConnectionFromStr(text);
        r.RecordNo = 0;
        QVERIFY(back == r); // item 43 is present and empty, so RejectedFile stays empty
    }

    void randomRecordsSurviveTextAndPacking()
    {
        QRandomGenerator g(4711);
        for (int n = 0; n < 400; ++n) {
            const TReaderConnection r = randomRecord(g);
            const QString text = ReaderConnectionToStr(r);
            QVERIFY(text.startsWith(QLatin1String("OP=")));
            QCOMPARE(text.count(QLatin1Char(',')), kParameterItemCount - 1);
            for (QChar c : {QChar(13), QChar(10), QChar(0), QChar(9)})
                QVERIFY2(!text.contains(c), qPrintable(QStringLiteral("record %1").arg(n)));

            TReaderConnection back;
            back.RecordNo = -1; // fields the text doesn't hold are left alone
            StrToReaderConnection(text, back);
            QCOMPARE(back.RecordNo, -1);
            back.RecordNo = 0;
            QVERIFY2(back == r, qPrintable(QStringLiteral("record %1: %2").arg(n).arg(text)));

            QCOMPARE(UnpackParameters(PackParameters(text)), text);
        }
    }

    void escapes_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("escaped");
        // Carriage return is "\n" and line feed "\l": reversed on purpose.
        QTest::newRow("CR") << QStringLiteral("\r") << QStringLiteral("\\n");
        QTest::newRow("LF") << QStringLiteral("\n") << QStringLiteral("\\l");
        QTest::newRow("NUL") << QString(QChar(0)) << QStringLiteral("\\0");
        QTest::newRow("bell") << QStringLiteral("\a") << QStringLiteral("\\a");
        QTest::newRow("backspace") << QStringLiteral("\b") << QStringLiteral("\\b");
        QTest::newRow("escape") << QStringLiteral("\x1b") << QStringLiteral("\\e");
        QTest::newRow("tab") << QStringLiteral("\t") << QStringLiteral("\\t");
        QTest::newRow("form feed") << QStringLiteral("\f") << QStringLiteral("\\f");
        QTest::newRow("vertical tab") << QStringLiteral("\v") << QStringLiteral("\\v");
        QTest::newRow("backslash") << QStringLiteral("\\") << QStringLiteral("\\\\");
        QTest::newRow("comma") << QStringLiteral(",") << QStringLiteral("\\c");
        QTest::newRow("mixed") << QStringLiteral("a,b\r\nc\\n") << QStringLiteral("a\\cb\\n\\lc\\\\n");
        QTest::newRow("untouched") << QStringLiteral("é;=\"' x") << QStringLiteral("é;=\"' x");
    }
    void escapes()
    {
        QFETCH(QString, value);
        QFETCH(QString, escaped);
        QCOMPARE(EscapeParamValue(value), escaped);
        QCOMPARE(UnescapeParamValue(escaped), value);
    }

    void unknownEscapesAreKept()
    {
        QCOMPARE(UnescapeParamValue(QStringLiteral("a\\xb")), QStringLiteral("a\\xb"));
        QCOMPARE(UnescapeParamValue(QStringLiteral("end\\")), QStringLiteral("end\\"));
        QCOMPARE(UnescapeParamValue(QStringLiteral("\\\\n")), QStringLiteral("\\n"));
    }

    void shortTextKeepsDefaults()
    {
        TReaderConnection expected;
        expected.ConnectionType = dsMySql;
        expected.ReadAllTables = true;
        expected.ReadAllData = true;
        expected.RejectedFile = rejectedDefault();
        expected.LineTerminator = QStringLiteral("{CR}+{LF}");

        QVERIFY(ReaderConnectionFromStr(QStringLiteral("OP=9,0")) == expected);
        // The prefix is optional.
        QVERIFY(ReaderConnectionFromStr(QStringLiteral("9,0")) == expected);
    }

    void emptyTextLeavesRecordApartFromDefaults()
    {
        for (const QString &text : {QString(), QStringLiteral("OP=")}) {
            TReaderConnection r;
            r.Server = QStringLiteral("kept");
            r.ConnectionType = dsOracle;
            StrToReaderConnection(text, r);
            QCOMPARE(r.Server, QStringLiteral("kept"));
            QCOMPARE(r.ConnectionType, dsOracle);
            QVERIFY(r.ReadAllTables && r.ReadAllData);
            QCOMPARE(r.RejectedFile, rejectedDefault());
            QCOMPARE(r.LineTerminator, QStringLiteral("{CR}+{LF}"));
        }
    }

    void defaultsAreOverwrittenByStoredItems()
    {
        const TReaderConnection r = ReaderConnectionFromStr(
            textWithItems({{39, "0"}, {40, "0"}, {43, "\\\\srv\\\\rej.tab"}, {30, "\\l"}}));
        QVERIFY(!r.ReadAllTables);
        QVERIFY(!r.ReadAllData);
        QCOMPARE(r.RejectedFile, QStringLiteral("\\srv\\rej.tab"));
        QCOMPARE(r.LineTerminator, QStringLiteral("\n"));
        QCOMPARE(ReaderConnectionFromStr(textWithItems({{30, ""}})).LineTerminator,
                 QStringLiteral("{CR}+{LF}"));
    }

    void extraItemsAreIgnored()
    {
        const TReaderConnection r = ReaderConnectionFromStr(textWithItems({{60, "2"}}) + ",junk,x");
        QCOMPARE(r.OraConnectAs, ocaSYSOPER);
    }

    void booleans_data()
    {
        QTest::addColumn<QString>("item");
        QTest::addColumn<bool>("showSystemTables"); // item 19, the usual rule
        QTest::addColumn<bool>("strict");           // items 54 and 55: only "-1" is true
        QTest::newRow("-1") << "-1" << true << true;
        QTest::newRow("0") << "0" << false << false;
        QTest::newRow("True") << "True" << true << false;
        QTest::newRow("true") << "true" << true << false;
        QTest::newRow("TRUE") << "TRUE" << true << false;
        QTest::newRow("False") << "False" << false << false;
        QTest::newRow("fALSE") << "fALSE" << false << false;
        QTest::newRow("1") << "1" << true << false;
        QTest::newRow("2") << "2" << true << false;
    }
    void booleans()
    {
        QFETCH(QString, item);
        QFETCH(bool, showSystemTables);
        QFETCH(bool, strict);
        const TReaderConnection r =
            ReaderConnectionFromStr(textWithItems({{19, item}, {54, item}, {55, item}}));
        QCOMPARE(r.ShowSystemTables, showSystemTables);
        QCOMPARE(r.UseUnicode, strict);
        QCOMPARE(r.Compress, strict);
    }

    void strictBooleansNeverFail()
    {
        const TReaderConnection r = ReaderConnectionFromStr(textWithItems({{54, "yes"}, {55, ""}}));
        QVERIFY(!r.UseUnicode);
        QVERIFY(!r.Compress);
    }

    void unreadableItems_data()
    {
        QTest::addColumn<int>("position");
        QTest::addColumn<QString>("item");
        QTest::addColumn<QString>("field");
        QTest::addColumn<QString>("expected");
        QTest::newRow("letters in unsigned") << 8 << "abc" << "HeaderLines" << "whole number from 0 to 4294967295";
        QTest::newRow("negative unsigned") << 9 << "-1" << "FooterLines" << "whole number from 0 to";
        QTest::newRow("too big for int") << 38 << "99999999999" << "Port" << "whole number from -2147483648";
        QTest::newRow("blank in number") << 21 << " 7" << "ConnectionID" << "whole number";
        QTest::newRow("empty number") << 59 << "" << "TimeOut" << "whole number";
        QTest::newRow("type out of range") << 0 << "28" << "ConnectionType" << "whole number from 0 to 27";
        QTest::newRow("lower-case prefix") << 0 << "op=9" << "ConnectionType" << "whole number from 0 to 27";
        QTest::newRow("encoding out of range") << 37 << "7" << "FileEncoding" << "from 0 to 6";
        QTest::newRow("word for boolean") << 19 << "yes" << "ShowSystemTables" << "a boolean";
        QTest::newRow("empty boolean") << 1 << "" << "UseTablesMask" << "a boolean";
    }
    void unreadableItems()
    {
        QFETCH(int, position);
        QFETCH(QString, item);
        QFETCH(QString, field);
        QFETCH(QString, expected);
        QMap<int, QString> items{{position, item}};
        if (position > 0)
            items.insert(0, QStringLiteral("9"));
        QString text = textWithItems(items);
        if (item.startsWith(QLatin1String("op=")))
            text = text.mid(3);
        TReaderConnection r;
        const QString message = errorOf([&] { StrToReaderConnection(text, r); });
        QVERIFY2(message.contains(QStringLiteral("item %1 (%2)").arg(position).arg(field)), qPrintable(message));
        QVERIFY2(message.contains(QLatin1Char('"') + item + QLatin1Char('"')), qPrintable(message));
        QVERIFY2(message.contains(expected), qPrintable(message));
        // Items before the bad one were read.
        if (position > 0)
            QCOMPARE(r.ConnectionType, dsMySql);
    }

    void longBadItemIsShortenedInMessage()
    {
        const QString error = errorOf([] { ReaderConnectionFromStr(QString(5000, QLatin1Char('x'))); });
        QVERIFY(!error.isEmpty() && error.size() < 300);
    }

    void pathMacros()
    {
        qputenv("VANTRY_COMMON_DOCUMENTS", "/srv/shared docs");
        QCOMPARE(ExpandPathMacros(QStringLiteral("<CommonDocumentsDir>/a.db;<CommonDocumentsDir>")),
                 QStringLiteral("/srv/shared docs/a.db;/srv/shared docs"));
        QCOMPARE(ExpandPathMacros(QStringLiteral("<commondocumentsdir>/a.db")),
                 QStringLiteral("<commondocumentsdir>/a.db"));

        const QString macro = QStringLiteral("<CommonDocumentsDir>/x");
        TReaderConnection r;
        for (QString *f : {&r.SourceFile, &r.Directory, &r.Server, &r.DataBase, &r.UserName,
                           &r.Password, &r.SelectStatement, &r.Description, &r.TablesMask,
                           &r.SSLKey, &r.RejectedFile})
            *f = macro;
        ExpandConnectionPathMacros(r);
        for (const QString &f : {r.SourceFile, r.Directory, r.Server, r.DataBase, r.UserName,
                                 r.Password, r.SelectStatement})
            QCOMPARE(f, QStringLiteral("/srv/shared docs/x"));
        for (const QString &f : {r.Description, r.TablesMask, r.SSLKey, r.RejectedFile})
            QCOMPARE(f, macro);
        qunsetenv("VANTRY_COMMON_DOCUMENTS");
    }
};

QTEST_GUILESS_MAIN(tst_ParameterText)
#include "tst_ParameterText.moc"
