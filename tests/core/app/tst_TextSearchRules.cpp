// The editor-free rules of the text search (recent texts, replace-all) and the text file codec
// the editors open and save with.
#include "core/app/TextSearchRules.h"
#include "core/base/VantryError.h"
#include "core/interchange/TextFileCodec.h"

#include "ErrorOf.h"

#include <QTemporaryDir>
#include <QtTest>

using namespace TextSearchRules;

class tst_TextSearchRules : public QObject
{
    Q_OBJECT

private slots:
    void promoteMovesOrInsertsAtTheTop()
    {
        QStringList items{QStringLiteral("a"), QStringLiteral("Select"), QStringLiteral("c")};
        promote(items, QStringLiteral("select"));  // an entry in another letter case moves up
        QCOMPARE(items, (QStringList{QStringLiteral("select"), QStringLiteral("a"), QStringLiteral("c")}));
        promote(items, QStringLiteral("new"));
        QCOMPARE(items.first(), QStringLiteral("new"));
        QCOMPARE(items.size(), 4);
        promote(items, QString());
        QCOMPARE(items.size(), 4);
    }

    void historyKeepsTenNewestJoinedWithCrLf()
    {
        QStringList items;
        for (int i = 1; i <= 11; ++i)
            promote(items, QString::number(i));
        const QStringList kept = splitHistory(joinHistory(items));
        QCOMPARE(kept.size(), MaxHistory);
        QCOMPARE(kept.first(), QStringLiteral("11"));
        QCOMPARE(kept.last(), QStringLiteral("2"));
        QCOMPARE(joinHistory({QStringLiteral("x"), QStringLiteral("y")}), QStringLiteral("x\r\ny"));
        QVERIFY(splitHistory(QString()).isEmpty());
    }

    void replaceAllWithinTheRange()
    {
        const QString text = QStringLiteral("Select 1; select 2; SELECT 3");
        Replaced r = replaceAll(text, QStringLiteral("select"), QStringLiteral("pick"), 0, text.size(), Qt::CaseInsensitive);
        QCOMPARE(r.text, QStringLiteral("pick 1; pick 2; pick 3"));
        QCOMPARE(r.count, 3);
        QCOMPARE(r.lastEnd, qsizetype(20));

        // From the caret on: what lies before stays, an occurrence crossing the end is not taken.
        r = replaceAll(text, QStringLiteral("select"), QStringLiteral("x"), 1, 24, Qt::CaseInsensitive);
        QCOMPARE(r.text, QStringLiteral("Select 1; x 2; SELECT 3"));
        QCOMPARE(r.count, 1);

        r = replaceAll(text, QStringLiteral("select"), QStringLiteral("x"), 0, text.size(), Qt::CaseSensitive);
        QCOMPARE(r.count, 1);
        r = replaceAll(text, QString(), QStringLiteral("x"), 0, text.size(), Qt::CaseInsensitive);
        QCOMPARE(r.count, 0);
        QCOMPARE(r.text, text);
        // A replacement holding the searched text is not searched again.
        r = replaceAll(QStringLiteral("aa"), QStringLiteral("a"), QStringLiteral("aa"), 0, 2, Qt::CaseInsensitive);
        QCOMPARE(r.text, QStringLiteral("aaaa"));
    }

    void decodeFallsBackToLatin1()
    {
        const QByteArray utf8 = QStringLiteral("Grüße €").toUtf8();
        QCOMPARE(TextFileCodec::decode(utf8).encoding, TextFileCodec::Encoding::Utf8);
        QCOMPARE(TextFileCodec::decode(utf8).utf8, utf8);

        const QByteArray latin1 = QByteArray("Gr\xfc\xdf" "e");
        const TextFileCodec::Decoded d = TextFileCodec::decode(latin1);
        QCOMPARE(d.encoding, TextFileCodec::Encoding::Latin1);
        QCOMPARE(QString::fromUtf8(d.utf8), QStringLiteral("Grüße"));
        // Overlong forms, surrogates and cut sequences are not UTF-8.
        for (const QByteArray &bad : {QByteArray("\xc0\xaf"), QByteArray("\xed\xa0\x80"), QByteArray("ab\xe2\x82")})
            QCOMPARE(TextFileCodec::decode(bad).encoding, TextFileCodec::Encoding::Latin1);
    }

    void latin1FileRoundTripsUnlessTheTextNoLongerFits()
    {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("old.sql"));
        const QByteArray original("-- r\xe9sum\xe9\r\nselect 1;\r\n");
        {
            QFile f(file);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(original);
        }
        const TextFileCodec::Decoded d = TextFileCodec::readFile(file);
        TextFileCodec::writeFile(file, QString::fromUtf8(d.utf8), d.encoding);
        QFile back(file);
        QVERIFY(back.open(QIODevice::ReadOnly));
        QCOMPARE(back.readAll(), original);
        back.close();

        TextFileCodec::writeFile(file, QStringLiteral("5 €"), TextFileCodec::Encoding::Latin1);
        QVERIFY(back.open(QIODevice::ReadOnly));
        QCOMPARE(back.readAll(), QStringLiteral("5 €").toUtf8());
    }

    void fileErrorsNameTheFile()
    {
        QTemporaryDir dir;
        const QString missing = dir.filePath(QStringLiteral("missing.sql"));
        QVERIFY(errorOf([&] { TextFileCodec::readFile(missing); }).contains(missing));
        const QString target = dir.filePath(QStringLiteral("no/such/folder/x.sql"));
        QVERIFY_THROWS_EXCEPTION(VantryError, TextFileCodec::writeFile(target, QStringLiteral("x"),
                                                                       TextFileCodec::Encoding::Utf8));
    }
};

QTEST_GUILESS_MAIN(tst_TextSearchRules)
#include "tst_TextSearchRules.moc"
