// The query builder window on a SQLite database of its own: the dialect each kind of connection
// opens with, the opening routine's OK and Cancel, text and diagram in step, parse errors, the
// data preview, and the two options dialogs with their settings file.
#include "HostileValues.h"
#include "MessageLog.h"
#include "QueryBuilderWindows.h"
#include "TempHome.h"

#include "core/querybuilder/SqlParser.h"
#include "gui/components/QueryDiagram.h"
#include "gui/ui/TextEditorFrameUn.h"
#include "gui/ui/fuAQBOptions.h"
#include "gui/ui/fuAQBuilder.h"
#include "gui/ui/fuSQLBuilderOptions.h"
#include "gui/workspace/ResultPanel.h"

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QScopeGuard>
#include <QSettings>
#include <QLabel>
#include <QPushButton>
#include <QSpinBox>
#include <QSqlError>
#include <QSqlQuery>
#include <QTabWidget>
#include <QTimer>
#include <QToolButton>
#include <QtTest>

namespace {

TReaderConnection sqliteRecord(const QString &file)
{
    TReaderConnection rc;
    rc.ConnectionType = dsSqLite;
    rc.Description = QStringLiteral("qb");
    rc.DataBase = file;
    rc.SourceFile = file;
    return rc;
}

// Every key of the settings file with its value, for comparing two files.
QMap<QString, QString> iniContents(const QString &file)
{
    QSettings ini(file, QSettings::IniFormat);
    QMap<QString, QString> all;
    for (const QString &key : ini.allKeys())
        all.insert(key, ini.value(key).toString());
    return all;
}

QMap<QString, QString> contentsOf(const QueryBuilderSettings &settings, const QString &file)
{
    QFile::remove(file);
    settings.save(file);
    return iniContents(file);
}

// A value of every key that differs from the defaults.
QueryBuilderSettings everyKeyChanged()
{
    QueryBuilderSettings s;
    s.allowSleepMode = false;
    s.parsingErrorOnUnknownObjects = true;
    QueryDiagramOptions &d = s.diagram;
    d.showTreePane = true;
    d.showMetadataTreePane = false;
    d.showColumnsPane = false;
    d.splitVertical = 7;
    d.splitHorizontal = 9;
    d.borderWidth = 3;
    d.borderStyle = 2;
    d.bkDarkness = 2;
    d.tabStyle = 1;
    d.addObjectStyle = 3;
    d.linkPainter = 2;
    d.treeShowFields = false;
    d.treeShowObjects = false;
    d.fieldsCaption = QStringLiteral("Columns");
    d.objectsCaption = QStringLiteral("Tables");
    d.unionsCaption = QStringLiteral("Sets");
    d.expandFields = d.expandObjects = d.expandSubqueries = d.expandUnions = false;
    d.groupingType = 8;
    d.showUserTables = d.showUserViews = false;
    d.showUserProcedures = d.showUserSynonyms = true;
    d.showSystemTables = false;
    d.showSystemViews = d.showSystemProcedures = d.showSystemSynonyms = true;
    GeneratorOptions &g = s.generator;
    g.wordWrap = true;
    g.rightMargin = 120;
    g.parenthesizeAndGroups = g.parenthesizeSingleCriterion = true;
    for (SqlFormat *f : {&g.mainQuery, &g.subqueries, &g.derivedQueries}) {
        f->mainPartNewLine = !f->mainPartNewLine;
        f->keywordsNewLine = !f->keywordsNewLine;
        f->partIndent = 5;
        f->globalIndent = 6;
        f->selectItemNewLine = !f->selectItemNewLine;
        f->fromObjectNewLine = !f->fromObjectNewLine;
        f->fromJoinNewLine = !f->fromJoinNewLine;
        f->whereNewLine = 2;
        f->whereIndent = 7;
        f->groupItemNewLine = !f->groupItemNewLine;
        f->havingNewLine = 3;
        f->havingIndent = 8;
    }
    return s;
}

} // namespace

class tst_QueryBuilderWindow : public QObject
{
    Q_OBJECT

private:
    QTemporaryDir m_dir;
    QString m_db;

    std::unique_ptr<TfmAQBuilder> openOnDatabase()
    {
        auto window = std::make_unique<TfmAQBuilder>(sqliteRecord(m_db), 40, TfmAQBuilder::Services{});
        if (!waitForMetadata(window.get()))
            qWarning("the catalogue did not load");
        return window;
    }

    static void showFocused(QWidget *window)
    {
        window->show();
        window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(window));
    }

private slots:
    void initTestCase()
    {
        m_db = m_dir.filePath(QStringLiteral("qb.sqlite"));
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("setup"));
            db.setDatabaseName(m_db);
            QVERIFY(db.open());
            QSqlQuery q(db);
            for (const char *sql :
                 {"CREATE TABLE customers (id INTEGER PRIMARY KEY, name TEXT)",
                  "CREATE TABLE orders (id INTEGER PRIMARY KEY, customer_id INTEGER REFERENCES customers(id), amount INTEGER)",
                  "CREATE TABLE items (id INTEGER PRIMARY KEY, order_id INTEGER REFERENCES orders(id), product TEXT)",
                  "INSERT INTO customers VALUES (1, 'Ann'), (2, 'Bob')",
                  "INSERT INTO items VALUES (1, 10, 'pen'), (2, 10, 'ink'), (3, 12, 'pad')",
                  "INSERT INTO orders VALUES (10, 1, 5), (11, 1, 7), (12, 2, 9)"})
                QVERIFY2(q.exec(QString::fromLatin1(sql)), qPrintable(q.lastError().text()));
        }
        QSqlDatabase::removeDatabase(QStringLiteral("setup"));
    }

    // The dialect list, the version list shown and the engine's dialect follow the connection's
    // kind; an Excel source also quotes every name.
    void opensWithTheDialectOfItsConnection_data()
    {
        QTest::addColumn<int>("type");
        QTest::addColumn<QString>("server");
        QTest::addColumn<QString>("dsn");
        QTest::addColumn<QString>("dialect");
        QTest::addColumn<QString>("versionList");
        QTest::addColumn<QString>("version");
        QTest::addColumn<bool>("quoteAll");
        QTest::newRow("MySQL") << int(dsMySql) << "127.0.0.1" << "" << "MySQL" << "edMySQLVersion" << "5.0.0" << false;
        QTest::newRow("PostgreSQL") << int(dsPostgreSQL) << "127.0.0.1" << "" << "PostgreSQL" << "" << "" << false;
        QTest::newRow("InterBase") << int(dsInterbase) << "127.0.0.1" << "" << "Interbase" << "" << "" << false;
        QTest::newRow("SQLite") << int(dsSqLite) << "" << "" << "SQLite" << "" << "" << false;
        QTest::newRow("SQL Server CE pairs with SQLite") << int(dsSqlServerCE) << "" << "" << "SQLite" << "" << "" << false;
        QTest::newRow("Oracle") << int(dsOracle) << "orcl" << "" << "Oracle" << "cbOracleVersion" << "Oracle 10" << false;
        QTest::newRow("SQL Server") << int(dsSqlServer) << "127.0.0.1,1" << "" << "Microsoft SQL Server"
                                    << "cbMSVersion" << "SQL Server 2005" << false;
        QTest::newRow("OLE DB Jet") << int(dsOleDb) << "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/nowhere/a.mdb"
                                    << "" << "Microsoft Access" << "cbAccessVersion" << "MS Jet 4" << false;
        QTest::newRow("OLE DB Excel") << int(dsOleDb)
                                      << "Provider=Microsoft.Jet.OLEDB.4.0;Data Source=/nowhere/a.xls;Extended Properties=Excel 8.0"
                                      << "" << "ANSI SQL/92" << "" << "" << true;
        QTest::newRow("ODBC") << int(dsODBC) << "no-such-dsn" << "" << "Universal" << "" << "" << false;
        QTest::newRow("Excel ODBC") << int(dsExcel) << ""
                                    << "DRIVER={Microsoft Excel Driver (*.xls)};DBQ=/nowhere/a.xls" << "ANSI SQL/92"
                                    << "" << "" << true;
    }

    void opensWithTheDialectOfItsConnection()
    {
        QFETCH(int, type);
        QFETCH(QString, server);
        QFETCH(QString, dsn);
        QFETCH(QString, dialect);
        QFETCH(QString, versionList);
        QFETCH(QString, version);
        QFETCH(bool, quoteAll);
        MessageLog messages;
        TReaderConnection rc = sqliteRecord(m_dir.filePath(QStringLiteral("kind.sqlite")));
        rc.ConnectionType = TDataSourceType(type);
        rc.Server = server;
        rc.OdbcDsnName = dsn;

        // Through the opening routine, as the workspace opens it; Cancel closes it again.
        bool inspected = false;
        QTimer::singleShot(0, this, [&] {
            auto *window = qobject_cast<TfmAQBuilder *>(QApplication::activeModalWidget());
            QVERIFY(window);
            const auto close = qScopeGuard([window] { window->reject(); });
            inspected = true;
            auto *list = window->findChild<QComboBox *>(QStringLiteral("cbSyntaxProvider"));
            QCOMPARE(list->currentText(), dialect);
            QCOMPARE(SqlDialects::name(window->engine()->dialect().dialect), dialect);
            QCOMPARE(window->engine()->dialect().serverVersion, version);
            QCOMPARE(window->engine()->quoteAllIdentifiers(), quoteAll);
            for (const char *name : {"cbMSVersion", "cbOracleVersion", "cbFirebirdVersion", "cbInformixVersion",
                                     "cbAccessVersion", "cbSybaseVersion", "edMySQLVersion"}) {
                QWidget *control = window->findChild<QWidget *>(QString::fromLatin1(name));
                QCOMPARE(control->isVisible(), versionList == QLatin1String(name));
            }
            if (auto *shown = versionList.isEmpty() ? nullptr : window->findChild<QComboBox *>(versionList))
                QCOMPARE(shown->currentText(), version);
        });
        QCOMPARE(TfmAQBuilder::Execute(rc, QStringLiteral("select 1"), {}), QStringLiteral("select 1"));
        QVERIFY(inspected);
    }

    // The dialect list and its version lists drive the engine; the MySQL version is free text.
    void dialectListDrivesTheEngine()
    {
        TfmAQBuilder window(TReaderConnection{}, 4, {});
        auto *list = window.findChild<QComboBox *>(QStringLiteral("cbSyntaxProvider"));

        list->setCurrentIndex(4);
        window.cbSyntaxProviderChange();
        auto *oracle = window.findChild<QComboBox *>(QStringLiteral("cbOracleVersion"));
        QVERIFY(!oracle->isHidden());
        oracle->setCurrentIndex(1);
        window.cbSyntaxProviderChange();
        QCOMPARE(window.engine()->dialect(), (DialectChoice{SqlDialect::Oracle, QStringLiteral("Oracle 8")}));

        list->setCurrentIndex(5);
        window.cbSyntaxProviderChange();
        QVERIFY(oracle->isHidden());
        auto *mysql = window.findChild<QLineEdit *>(QStringLiteral("edMySQLVersion"));
        QCOMPARE(window.engine()->dialect().serverVersion, QStringLiteral("4.1.0"));
        mysql->setText(QStringLiteral("8.0.1"));
        emit mysql->editingFinished();
        QCOMPARE(window.engine()->dialect(), (DialectChoice{SqlDialect::MySql, QStringLiteral("8.0.1")}));
    }

    // OK hands back the pane's text; Cancel the opening text, even after the diagram changed it.
    void okReturnsThePaneAndCancelTheOpeningText()
    {
        MessageLog messages;
        const QString opening = QStringLiteral("SELECT customers.name FROM customers");
        for (bool ok : {false, true}) {
            QString changed;
            QTimer::singleShot(0, this, [&] {
                auto *window = qobject_cast<TfmAQBuilder *>(QApplication::activeModalWidget());
                QVERIFY(window);
                // The catalogue's arrival is a posted event, which a loop nested in this posted
                // call would never see: the window's own loop delivers it.
                const auto changeDiagram = [&changed, window, ok] {
                    const auto close = qScopeGuard([window, ok] { ok ? window->accept() : window->reject(); });
                    QVERIFY2(!window->engine()->isOffline(),
                             qPrintable(window->findChild<QLabel *>(QStringLiteral("lbMetadata"))->text()));
                    window->diagram()->addObject(QStringLiteral("orders"));
                    changed = window->sqlText();
                    QVERIFY(changed.contains(QLatin1String("orders")));
                };
                if (window->metadataLoader()->isLoading())
                    connect(window, &TfmAQBuilder::metadataReady, window, changeDiagram);
                else
                    changeDiagram();
            });
            const QString result = TfmAQBuilder::Execute(sqliteRecord(m_db), opening, {});
            QCOMPARE(result, ok ? changed : opening);
        }
    }

    // Typing marks the pane; leaving it parses the text into the engine and the diagram.
    void leavingThePaneParsesIt()
    {
        MessageLog messages;
        auto window = openOnDatabase();
        showFocused(window.get());
        QsciScintilla *editor = window->sqlPane()->editor();
        editor->setFocus();
        editor->setText(QStringLiteral("select name from customers where id = 2"));
        QVERIFY(window->isQueryChanged());
        QVERIFY(window->engine()->query().isEmpty());
        window->findChild<QComboBox *>(QStringLiteral("cbSyntaxProvider"))->setFocus();
        QTRY_VERIFY(!window->engine()->query().isEmpty());
        QVERIFY(messages.errors.isEmpty());
        // The pane now shows the generator's text, and a change of the diagram rewrites it.
        QCOMPARE(editor->text(), window->engine()->sql());
        window->diagram()->addObject(QStringLiteral("orders"));
        QCOMPARE(editor->text(), window->engine()->sql());
        QVERIFY(editor->text().contains(QLatin1String("orders")));
    }

    // A parse error names its cause and puts the caret where the parser stopped, counted in
    // characters even after a non-ASCII one.
    void parseErrorMovesTheCaret_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("second line") << QStringLiteral("select id,\n  from customers");
        QTest::newRow("after umlauts") << QStringLiteral("select 'äöü' as x, ) from customers");
    }

    void parseErrorMovesTheCaret()
    {
        QFETCH(QString, text);
        MessageLog messages;
        TfmAQBuilder window(TReaderConnection{}, 40, {});
        showFocused(&window);
        int line = 0, offset = 0;
        try {
            SqlParser::parse(text, SqlDialect::Sqlite);
            QFAIL("the text should not parse");
        } catch (const SqlParseError &e) {
            line = e.line();
            offset = e.offset();
        }
        QsciScintilla *editor = window.sqlPane()->editor();
        editor->setFocus();
        editor->setText(text);
        editor->setCursorPosition(0, 0);
        window.editSQLExit();
        QCOMPARE(messages.errors.size(), 1);
        QVERIFY(messages.errors.first().contains(QStringLiteral("line %1").arg(line)));
        // The caret stands before the character the parser named (the editor counts in bytes).
        const long caret = editor->SendScintilla(QsciScintilla::SCI_GETCURRENTPOS);
        QCOMPARE(QString::fromUtf8(editor->text().toUtf8().left(caret)), text.left(offset));
        QTRY_VERIFY(editor->hasFocus());
        // The text stays as typed and still counts as changed.
        QCOMPARE(editor->text(), text);
    }

    // Switching to "Data" straight from the pane previews what was typed, not the old query.
    void dataPagePreviewsTheTypedStatement()
    {
        MessageLog messages;
        auto window = openOnDatabase();
        window->setSqlText(QStringLiteral("SELECT name FROM customers"));
        showFocused(window.get());
        QsciScintilla *editor = window->sqlPane()->editor();
        editor->setFocus();
        QTRY_VERIFY(editor->hasFocus());
        editor->selectAll();
        QTest::keyClicks(editor, QStringLiteral("select amount from orders where amount > 6"));
        auto *pages = window->findChild<QTabWidget *>(QStringLiteral("PC"));
        pages->setCurrentWidget(window->findChild<QWidget *>(QStringLiteral("tsData")));
        QTRY_VERIFY_WITH_TIMEOUT(window->isDataOpen(), 10000);
        QVERIFY2(messages.errors.isEmpty(), qPrintable(messages.errors.join('\n')));
        ResultTable *rows = window->dataPanel()->query().table();
        QCOMPARE(rows->columnCount(), 1);
        QCOMPARE(rows->column(0).name(), QStringLiteral("amount"));
        QCOMPARE(rows->rowCount(), 2);
    }

    // Three tables added one after the other join along their foreign keys; a second union part
    // gets a tab of its own, and the preview runs the whole statement.
    void threeTableJoinWithAUnionRunsInThePreview()
    {
        MessageLog messages;
        auto window = openOnDatabase();
        window->resize(1280, 860);
        showFocused(window.get());
        QueryDiagram *diagram = window->diagram();
        diagram->addObject(QStringLiteral("customers"));
        diagram->addObject(QStringLiteral("orders"));
        diagram->addObject(QStringLiteral("items"));
        diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("name"), true);
        diagram->setColumnSelected(QStringLiteral("items"), QStringLiteral("product"), true);
        diagram->addUnionPart();
        diagram->addObject(QStringLiteral("customers"));
        diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("name"), true);
        diagram->setColumnSelected(QStringLiteral("customers"), QStringLiteral("id"), true);
        diagram->addObject(QStringLiteral("orders"));
        diagram->removeObject(QStringLiteral("orders"));
        QCOMPARE(diagram->tabCount(), 2);
        diagram->setCurrentTab(0);

        const QString sql = window->sqlText().simplified();
        QCOMPARE(sql.count(QLatin1String(" JOIN ")), 2);
        QVERIFY2(sql.contains(QLatin1String("ON orders.customer_id = customers.id"))
                     || sql.contains(QLatin1String("ON customers.id = orders.customer_id")),
                 qPrintable(sql));
        QVERIFY2(sql.contains(QLatin1String(" UNION SELECT customers.name, customers.id FROM customers")), qPrintable(sql));
        const QString screenshots = qEnvironmentVariable("VANTRY_SCREENSHOT_DIR");
        if (!screenshots.isEmpty()) {
            window->findChild<QToolButton *>(QStringLiteral("sbShowQueryTree"))->click();
            QVERIFY(diagram->isTreePaneVisible());
            QTest::qWait(100); // let the tab row lay itself out again
            QVERIFY(window->grab().save(screenshots + QStringLiteral("/qb-join.png")));
        }

        window->findChild<QTabWidget *>(QStringLiteral("PC"))->setCurrentIndex(1);
        QTRY_VERIFY2_WITH_TIMEOUT(window->isDataOpen() || !messages.errors.isEmpty(),
                                  qPrintable(window->findChild<QLabel *>(QStringLiteral("lbPreviewState"))->text() + sql),
                                  10000);
        QVERIFY2(messages.errors.isEmpty(), qPrintable(messages.errors.join('\n')));
        // pen, ink and pad with their customers, then each customer with their id.
        QCOMPARE(window->dataPanel()->query().table()->rowCount(), 5);
        if (!screenshots.isEmpty())
            QVERIFY(window->grab().save(screenshots + QStringLiteral("/qb-data.png")));
    }

    // A statement that is not a SELECT puts the engine to sleep: no preview, the message keeps its
    // two blanks, and a query built meanwhile replaces the text only when the user agrees.
    void sleepingEngineRefusesPreviewAndAsksBeforeWaking()
    {
        MessageLog messages;
        auto window = openOnDatabase();
        const QString update = QStringLiteral("UPDATE orders SET amount = 0");
        window->setSqlText(update);
        QVERIFY(window->engine()->isSleeping());
        window->findChild<QTabWidget *>(QStringLiteral("PC"))->setCurrentIndex(1);
        QCOMPARE(messages.errors, QStringList{QStringLiteral("Cannot execute  Non-Select statement.")});
        QVERIFY(!window->isDataOpen());
        QVERIFY(!window->previewService()->isBusy());

        int asked = 0;
        window->setWakeQuestion([&asked] { return ++asked == 2; });
        window->diagram()->addObject(QStringLiteral("orders"));
        QCOMPARE(asked, 1);
        QCOMPARE(window->sqlText(), update);
        window->diagram()->addObject(QStringLiteral("orders"));
        QCOMPARE(asked, 2);
        QVERIFY(!window->engine()->isSleeping());
        QVERIFY(window->sqlText().contains(QLatin1String("orders")));
    }

    // A connection that fails leaves the diagram offline with the cause in sight.
    void failingConnectionLeavesTheBuilderOffline()
    {
        TReaderConnection rc = sqliteRecord(m_dir.filePath(QStringLiteral("no/such/folder/x.sqlite")));
        TfmAQBuilder window(rc, 40, {});
        QVERIFY(!waitForMetadata(&window));
        QVERIFY(!window.metadataLoader()->isLoading());
        QVERIFY(window.engine()->isOffline());
        QVERIFY(window.findChild<QLabel *>(QStringLiteral("lbMetadata"))->text().startsWith(QLatin1String("No tables: ")));
        window.setSqlText(QStringLiteral("select a from t"));
        QVERIFY(!window.engine()->query().isEmpty());
    }

    // Every key of "options.ini" survives a write and a read, under its section and name; the
    // dialog shows and gives back every value, and "Save defaults" writes what it shows.
    void optionsFileRoundTripsEveryKey()
    {
        TempHome home;
        const QueryBuilderSettings changed = everyKeyChanged();
        const QString a = home.file(QStringLiteral("a.ini")), b = home.file(QStringLiteral("b.ini"));
        const QMap<QString, QString> written = contentsOf(changed, a);
        QCOMPARE(written.size(), 2 + 11 + 9 + 9 + 4 + 3 * 12);
        for (const char *key : {"Behavior/AllowSleepMode", "Behavior/ParsingErrorOnUnknownObjects", "Common/BkDarkness",
                                "Common/LinkPainter", "TreePane/UnionsCaption", "MetadataTreePane/GroupingType",
                                "MetadataTreePane/ShowSystemSynonyms", "Builder/ParenthesizeANDGroups",
                                "DerivedQueries/HavingIndent", "Subqueries/WhereNewLine"})
            QVERIFY2(written.contains(QString::fromLatin1(key)), key);
        QCOMPARE(written.value(QStringLiteral("Behavior/AllowSleepMode")), QStringLiteral("FALSE"));
        QCOMPARE(contentsOf(QueryBuilderSettings::load(a), b), written);
        QVERIFY(contentsOf(QueryBuilderSettings(), b) != written);

        // Through the dialog's controls and back.
        TfmAQBOptions dialog(nullptr, nullptr);
        dialog.setFreeOnClose(false);
        dialog.setSettings(changed);
        QCOMPARE(contentsOf(dialog.settings(), b), written);
        dialog.bSaveDefaultsClick();
        QCOMPARE(iniContents(QueryBuilderSettings::fileName()), written);
        TfmAQBOptions reopened(nullptr, nullptr);
        reopened.setFreeOnClose(false);
        QCOMPARE(contentsOf(reopened.settings(), b), written);
    }

    // Captions a user should not type come back from "options.ini" as they were typed.
    void hostileCaptionsRoundTripThroughTheOptionsFile_data() { addHostileValueRows(); }
    void hostileCaptionsRoundTripThroughTheOptionsFile()
    {
        QFETCH(QString, value);
        TempHome home;
        QueryBuilderSettings typed;
        typed.diagram.fieldsCaption = typed.diagram.objectsCaption = typed.diagram.unionsCaption = value;
        TfmAQBOptions dialog(nullptr, nullptr);
        dialog.setFreeOnClose(false);
        dialog.setSettings(typed);
        const QueryDiagramOptions shown = dialog.settings().diagram;
        QCOMPARE(shown.fieldsCaption, value.left(32767)); // a line edit's length limit
        dialog.bSaveDefaultsClick();
        const QueryDiagramOptions read = QueryBuilderSettings::load(QueryBuilderSettings::fileName()).diagram;
        QCOMPARE(read.fieldsCaption, shown.fieldsCaption);
        QCOMPARE(read.objectsCaption, shown.objectsCaption);
        QCOMPARE(read.unionsCaption, shown.unionsCaption);
    }

    // OK applies the dialog to the engine and the diagram without writing the file.
    void optionsOkAppliesWithoutWriting()
    {
        TempHome home;
        TfmAQBuilder window(TReaderConnection{}, 40, {});
        auto *options = new TfmAQBOptions(window.diagram(), window.engine(), &window);
        options->findChild<QCheckBox *>(QStringLiteral("cbAllowSleepMode"))->setChecked(false);
        options->findChild<QSpinBox *>(QStringLiteral("seRightMargin"))->setValue(33);
        options->okButton()->click();
        QVERIFY(!window.engine()->allowSleepMode());
        QCOMPARE(window.engine()->generatorOptions().rightMargin, 33);
        QVERIFY(!QFile::exists(QueryBuilderSettings::fileName()));
    }

    // The format editor: the WHERE and HAVING modes as two boxes, the second and the indent
    // following the first; copy and paste move a whole format between the query kinds.
    void formatEditorShowsTheFourValuedModes()
    {
        for (int mode = 0; mode <= 3; ++mode) {
            bool first = false, second = false;
            TfmSQLBuilderOptions::modeToChecks(mode, first, second);
            QCOMPARE(first, mode != 0);
            QCOMPARE(second, mode == 3);
            QCOMPARE(TfmSQLBuilderOptions::checksToMode(first, second, mode), mode);
        }
        QCOMPARE(TfmSQLBuilderOptions::checksToMode(true, false, 3), 1);
        QCOMPARE(TfmSQLBuilderOptions::checksToMode(true, false, 0), 1);

        SqlFormat format;
        format.whereNewLine = 3;
        format.havingNewLine = 2;
        auto *editor = new TfmSQLBuilderOptions(&format);
        editor->setFreeOnClose(false);
        auto *where = editor->findChild<QCheckBox *>(QStringLiteral("cbWhereNewLine"));
        auto *nested = editor->findChild<QCheckBox *>(QStringLiteral("cbWhereNested"));
        auto *indent = editor->findChild<QSpinBox *>(QStringLiteral("seWhereIndent"));
        QVERIFY(where->isChecked() && nested->isChecked() && nested->isEnabled() && indent->isEnabled());
        auto *having = editor->findChild<QCheckBox *>(QStringLiteral("cbHavingNewLine"));
        QVERIFY(having->isChecked());
        QVERIFY(!editor->findChild<QCheckBox *>(QStringLiteral("cbHavingNested"))->isChecked());
        QVERIFY(!editor->findChild<QSpinBox *>(QStringLiteral("seHavingIndent"))->isEnabled());
        const QString screenshots = qEnvironmentVariable("VANTRY_SCREENSHOT_DIR");
        if (!screenshots.isEmpty()) {
            editor->show();
            QVERIFY(QTest::qWaitForWindowExposed(editor));
            QVERIFY(editor->grab().save(screenshots + QStringLiteral("/qb-format.png")));
            editor->hide();
        }
        where->click();
        QVERIFY(!nested->isChecked() && !nested->isEnabled() && !indent->isEnabled());
        where->click();
        QVERIFY(nested->isEnabled() && !indent->isEnabled());
        editor->okButton()->click();
        QCOMPARE(format.whereNewLine, 1);
        QCOMPARE(format.havingNewLine, 2);
        delete editor;

        TempHome home;
        TfmAQBOptions options(nullptr, nullptr);
        options.setFreeOnClose(false);
        options.setFormatEditor([](SqlFormat &f, QWidget *) { f.partIndent = 11; });
        options.bDerivedQueriesClick();
        options.findChild<QPushButton *>(QStringLiteral("bDerivedQueriesCopy"))->click();
        options.findChild<QPushButton *>(QStringLiteral("bMainQueryPaste"))->click();
        QCOMPARE(options.settings().generator.mainQuery, options.settings().generator.derivedQueries);
        QCOMPARE(options.settings().generator.mainQuery.partIndent, 11);
        QCOMPARE(options.settings().generator.subqueries.partIndent, SqlFormat::subqueryDefaults().partIndent);
    }
};

QTEST_MAIN(tst_QueryBuilderWindow)
#include "tst_QueryBuilderWindow.moc"
