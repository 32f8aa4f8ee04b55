#include "TempHome.h"
#include "core/base/DataFolder.h"
#include "core/base/SettingsStore.h"

#include <QtTest>

class tst_Settings : public QObject
{
    Q_OBJECT

private slots:
    void booleanWords_data()
    {
        QTest::addColumn<QString>("word");
        QTest::addColumn<bool>("valid");
        QTest::addColumn<bool>("value");
        for (const char *w : {"TRUE", "true", "Yes", "y", " Y "})
            QTest::newRow(w) << QString::fromLatin1(w) << true << true;
        for (const char *w : {"FALSE", "false", "No", "n"})
            QTest::newRow(w) << QString::fromLatin1(w) << true << false;
        for (const char *w : {"", "1", "-1", "maybe"})
            QTest::newRow(qPrintable(QStringLiteral("invalid '%1'").arg(QLatin1String(w)))) << QString::fromLatin1(w) << false << false;
    }

    void booleanWords()
    {
        QFETCH(QString, word);
        QFETCH(bool, valid);
        QFETCH(bool, value);
        bool ok = true;
        QCOMPARE(SettingsStore::parseBool(word, &ok), value);
        QCOMPARE(ok, valid);
    }

    void storeWritesWordsAndKeepsPathsApart()
    {
        TempHome home;
        const QString file = DataFolder::settingsFile();
        QVERIFY(file.startsWith(home.path()));
        {
            SettingsStore s(file);
            s.writeBool(QStringLiteral("P\\"), QStringLiteral("Log1.Checked"), true);
            s.writeBool(QStringLiteral("SQL\\"), QStringLiteral("Log1.Checked"), false);
            s.writeString(QStringLiteral("SQL\\"), QStringLiteral("se.Lines"), QStringLiteral("select 1\nfrom t"));
            s.sync();
        }
        QFile raw(file);
        QVERIFY(raw.open(QIODevice::ReadOnly));
        const QByteArray text = raw.readAll();
        QVERIFY2(text.contains("[P]") && text.contains("Log1.Checked=TRUE"), text.constData());
        QVERIFY(text.contains("Log1.Checked=FALSE"));

        SettingsStore s(file);
        QCOMPARE(s.readBool(QStringLiteral("P\\"), QStringLiteral("Log1.Checked"), false), true);
        QCOMPARE(s.readBool(QStringLiteral("SQL\\"), QStringLiteral("Log1.Checked"), true), false);
        QCOMPARE(s.readString(QStringLiteral("SQL\\"), QStringLiteral("se.Lines")), QStringLiteral("select 1\nfrom t"));
        // A word the store does not know leaves the caller's default.
        s.writeString(QStringLiteral("P\\"), QStringLiteral("odd"), QStringLiteral("perhaps"));
        QCOMPARE(s.readBool(QStringLiteral("P\\"), QStringLiteral("odd"), true), true);
    }
};

QTEST_GUILESS_MAIN(tst_Settings)
#include "tst_Settings.moc"
