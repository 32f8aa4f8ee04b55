// The text editor frame and the program-wide search and replace it shares with every editor.
#include "GuiFixture.h"
#include "MessageLog.h"
#include "gui/ui/EditorFiles.h"
#include "gui/ui/TextEditorFrameUn.h"
#include "gui/ui/TextSearch.h"
#include "gui/ui/TextSearchDialogs.h"
#include "gui/workspace/SqlLogFrameUn.h"
#include "gui/workspace/SqlUn.h"

#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QToolButton>
#include <QtTest>

namespace {

// What a user does in the dialog: type the texts, maybe tick options, and press OK or Cancel.
struct DialogInput
{
    QString search;
    QString replace = QString();
    bool caseSensitive = false;
    bool ok = true;
};

void answerDialogs(const QList<DialogInput> &inputs, int *shown = nullptr)
{
    auto queue = std::make_shared<QList<DialogInput>>(inputs);
    TextSearch::setDialogRunner([queue, shown](TTextSearchDialog *dialog) {
        if (shown)
            ++*shown;
        const DialogInput in = queue->isEmpty() ? DialogInput{} : queue->takeFirst();
        dialog->show();  // the placement store is read when the dialog shows
        dialog->cbSearchText->setEditText(in.search);
        dialog->cbSearchCaseSensitive->setChecked(in.caseSensitive);
        if (auto *replace = qobject_cast<TTextReplaceDialog *>(dialog))
            replace->cbReplaceText->setEditText(in.replace);
        if (in.ok)
            dialog->accept();
        else
            dialog->reject();
        return dialog->result();
    });
}

QPair<int, int> selection(QsciScintilla *e)
{
    return {int(e->SendScintilla(QsciScintilla::SCI_GETSELECTIONSTART)),
            int(e->SendScintilla(QsciScintilla::SCI_GETSELECTIONEND))};
}

QByteArray marginText(QsciScintilla *e, int line)
{
    char buffer[32] = {};
    const long length = e->SendScintilla(QsciScintilla::SCI_MARGINGETTEXT, static_cast<unsigned long>(line),
                                         static_cast<void *>(buffer));
    return QByteArray(buffer, int(qBound(0L, length, 31L)));
}

} // namespace

class tst_TextEditorFrame : public QObject
{
    Q_OBJECT

    int m_beeps = 0;
    std::unique_ptr<TempHome> m_home;
    std::unique_ptr<SettingsStore> m_settings;

private slots:
    void init()
    {
        m_home = std::make_unique<TempHome>();
        m_settings = std::make_unique<SettingsStore>(m_home->file(QStringLiteral("Vantry.ini")));
        TextSearch::state() = TextSearchState{};
        TextSearch::attachSettings(m_settings.get());
        m_beeps = 0;
        TextSearch::setBeep([this] { ++m_beeps; });
    }

    void cleanup()
    {
        TextSearch::setDialogRunner({});
        TextSearch::attachSettings(nullptr);
        EditorFiles::setFileDialog({});
    }

    void editorOptions()
    {
        TTextEditorFrame frame;
        QsciScintilla *e = frame.editor();
        frame.resize(400, 300);
        frame.show();
        QVERIFY(QTest::qWaitForWindowExposed(&frame));
        e->setText(QStringLiteral("a\nb\n"));
        QTRY_COMPARE(marginText(e, 1), QByteArray("0002"));  // line numbers with leading zeros
        // Numbering the lines does not keep the editor repainting.
        QSignalSpy updates(e, &QsciScintillaBase::SCN_UPDATEUI);
        QTest::qWait(300);
        QVERIFY(updates.count() < 3);

        // Enter leaves a line without its trailing blanks.
        e->setText(QStringLiteral("select 1   "));
        e->setCursorPosition(0, 11);
        e->setFocus();
        QTest::keyClick(e, Qt::Key_Return);
        QCOMPARE(e->text(0), QStringLiteral("select 1\n"));
    }

    void dialogSearchCoversTheWholeTextThenRepeatsFromTheCaret()
    {
        TTextEditorFrame frame;
        QsciScintilla *e = frame.editor();
        e->setText(QStringLiteral("select a;\nSELECT b;\nselect c;"));
        e->setCursorPosition(2, 9);  // at the end: the dialog's search still starts at the top
        answerDialogs({{QStringLiteral("select"), {}, true}});
        frame.tbFindClick();
        QCOMPARE(selection(e), qMakePair(0, 6));
        QVERIFY(TextSearch::state().searchFromCaret);
        // "Case sensitivity" was ticked, yet the search ignores case.
        frame.tbFindNextClick();
        QCOMPARE(e->selectedText(), QStringLiteral("SELECT"));
        frame.tbFindNextClick();
        QCOMPARE(selection(e), qMakePair(20, 26));
        frame.tbFindPreviosClick();
        QCOMPARE(selection(e), qMakePair(10, 16));

        // Nothing more forwards: a beep, and the selection collapses to its end.
        frame.tbFindNextClick();
        frame.tbFindNextClick();
        QCOMPARE(m_beeps, 1);
        QCOMPARE(selection(e), qMakePair(26, 26));
        QVERIFY(!TextSearch::state().searchCaseSensitive);
    }

    void emptySearchesFindNothing()
    {
        TTextEditorFrame frame;
        QsciScintilla *e = frame.editor();
        e->setText(QStringLiteral("select 1"));
        e->setSelection(0, 0, 0, 3);

        // Repeat Search before any search: the empty text is searched, found nowhere, and beeps.
        frame.tbFindNextClick();
        QCOMPARE(m_beeps, 1);
        QCOMPARE(selection(e), qMakePair(3, 3));

        // A dialog confirmed with an empty text searches nothing at all.
        e->setSelection(0, 0, 0, 3);
        answerDialogs({{QString()}});
        frame.tbFindClick();
        QCOMPARE(m_beeps, 1);
        QCOMPARE(selection(e), qMakePair(0, 3));
        QVERIFY(!TextSearch::state().searchFromCaret);

        // Cancel keeps the shared text.
        TextSearch::state().searchText = QStringLiteral("kept");
        answerDialogs({{QStringLiteral("other"), {}, false, false}});
        frame.tbFindClick();
        QCOMPARE(TextSearch::state().searchText, QStringLiteral("kept"));
    }

    void eleventhTextPushesOutTheOldestAndTheStoreRemembersThem()
    {
        TTextEditorFrame frame;
        frame.editor()->setText(QStringLiteral("t1 t2 t3 t4 t5 t6 t7 t8 t9 t10 t11"));
        QList<DialogInput> inputs;
        for (int i = 1; i <= 11; ++i)
            inputs << DialogInput{QStringLiteral("t%1").arg(i)};
        inputs << DialogInput{QStringLiteral("t5")};  // a known text moves to the top
        answerDialogs(inputs);
        for (int i = 0; i < inputs.size(); ++i)
            frame.tbFindClick();
        const QStringList history = TextSearch::state().searchTextHistory.split(QStringLiteral("\r\n"));
        QCOMPARE(history.size(), 10);
        QCOMPARE(history.first(), QStringLiteral("t5"));
        QCOMPARE(history.at(1), QStringLiteral("t11"));
        QCOMPARE(history.last(), QStringLiteral("t2"));
        QVERIFY(!history.contains(QStringLiteral("t1")));
        QCOMPARE(history.count(QStringLiteral("t5")), 1);

        // A new run starts with an empty shared state; the dialog shows what its store kept.
        TextSearch::state() = TextSearchState{};
        TTextSearchDialog dialog;
        dialog.setPlacementStore(m_settings.get());
        dialog.show();
        QCOMPARE(dialog.searchText(), QStringLiteral("t5"));
        QCOMPARE(dialog.cbSearchText->count(), 10);
        QVERIFY(dialog.cbSearchCaseSensitive->isChecked() == false);
    }

    void replaceAllIsOneUndoStep()
    {
        TTextEditorFrame frame;
        QsciScintilla *e = frame.editor();
        const QString text = QStringLiteral("select a from t;\nSelect b from ü;\n");
        e->setText(text);
        answerDialogs({{QStringLiteral("select"), QStringLiteral("SELECT DISTINCT")}});
        frame.tbReplaceClick();
        QCOMPARE(e->text(), QStringLiteral("SELECT DISTINCT a from t;\nSELECT DISTINCT b from ü;\n"));
        QCOMPARE(TextSearch::state().replaceText, QStringLiteral("SELECT DISTINCT"));
        QCOMPARE(m_beeps, 0);
        e->undo();
        QCOMPARE(e->text(), text);

        answerDialogs({{QStringLiteral("nowhere"), QStringLiteral("x")}});
        frame.tbReplaceClick();
        QCOMPARE(m_beeps, 1);
        QCOMPARE(e->text(), text);
    }

    void saveThenOpenProposesTheSameNameAndLatin1RoundTrips()
    {
        TTextEditorFrame frame;
        const QString file = m_home->file(QStringLiteral("old.sql"));
        const QByteArray original("select 'gr\xfc\xdf' as x;\n");
        {
            QFile f(file);
            QVERIFY(f.open(QIODevice::WriteOnly));
            f.write(original);
        }
        QStringList proposed;
        QString answer = file;
        EditorFiles::setFileDialog([&](QWidget *, bool save, const QString &name) {
            proposed << (save ? QStringLiteral("save:") : QStringLiteral("open:")) + name;
            return answer;
        });
        frame.editor()->setText(QStringLiteral("typed"));
        QSignalSpy opened(frame.files(), &EditorFiles::opened);
        frame.tbOpenClick();
        QTRY_COMPARE(opened.count(), 1);
        QCOMPARE(frame.editor()->text(), QStringLiteral("select 'grüß' as x;\n"));
        frame.editor()->undo();  // what the editor held before is not lost
        QCOMPARE(frame.editor()->text(), QStringLiteral("typed"));
        frame.editor()->redo();

        QSignalSpy saved(frame.files(), &EditorFiles::saved);
        frame.tbsaveClick();
        QTRY_COMPARE(saved.count(), 1);
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        QCOMPARE(f.readAll(), original);

        answer = m_home->file(QStringLiteral("new.sql"));
        frame.tbsaveClick();
        QTRY_COMPARE(saved.count(), 2);
        answer.clear();  // cancelled
        frame.tbOpenClick();
        QCOMPARE(proposed, (QStringList{"open:", "save:" + file, "save:" + file, "open:" + m_home->file("new.sql")}));
    }

    void unreadableFileLeavesTheEditorAndSaysWhy()
    {
        TTextEditorFrame frame;
        frame.editor()->setText(QStringLiteral("typed"));
        MessageLog messages;
        const QStringList &errors = messages.errors;
        QSignalSpy failed(frame.files(), &EditorFiles::failed);
        const QString missing = m_home->file(QStringLiteral("missing.sql"));
        frame.files()->openFile(missing);
        QVERIFY(frame.editor()->isReadOnly());  // no typing into a text about to be replaced
        QTRY_COMPARE(failed.count(), 1);
        QVERIFY(!frame.editor()->isReadOnly());
        QCOMPARE(frame.editor()->text(), QStringLiteral("typed"));
        QCOMPARE(errors.size(), 1);
        QVERIFY(errors.first().contains(missing));

        frame.files()->saveFile(m_home->file(QStringLiteral("no/folder/x.sql")));
        QTRY_COMPARE(failed.count(), 2);
        QVERIFY(errors.last().contains(QStringLiteral("x.sql")));
    }

    void logAndWorkspaceUseTheSharedSearch()
    {
        TSqlLogFrame log;
        log.SetSQL(QStringLiteral("select 1"));
        log.SetMessage(QStringLiteral("OK."), 0);
        answerDialogs({{QStringLiteral("ok."), QStringLiteral("Done.")}});
        log.findChild<QAction *>(QStringLiteral("Replace"))->trigger();
        QCOMPARE(log.textView()->text(), QStringLiteral("select 1\nDone.\n"));

        answerDialogs({{QStringLiteral("select")}});
        log.SearchClick();
        QCOMPARE(log.textView()->selectedText(), QStringLiteral("select"));

        GuiFixture fx;
        TMFrm *window = fx.show();
        TSqlFrm *tab = nullptr;
        QTRY_VERIFY((tab = window->findChild<TSqlFrm *>()));
        tab->editor()->setText(QStringLiteral("select 1;\nselect 2;"));
        int shown = 0;
        answerDialogs({{QStringLiteral("SELECT 2")}}, &shown);
        auto *find = tab->findChild<QToolButton *>(QStringLiteral("tbFindSQL"));
        QVERIFY(find->isEnabled());
        find->click();
        QCOMPARE(shown, 1);
        QCOMPARE(tab->editor()->selectedText(), QStringLiteral("select 2"));
        tab->findChild<QToolButton *>(QStringLiteral("rbRepeatSearch"))->click();
        QCOMPARE(m_beeps, 1);

        const QString file = m_home->file(QStringLiteral("script.sql"));
        EditorFiles::setFileDialog([file](QWidget *, bool, const QString &) { return file; });
        auto *files = tab->editor()->findChild<EditorFiles *>();
        QSignalSpy saved(files, &EditorFiles::saved);
        tab->findChild<QToolButton *>(QStringLiteral("tbSave"))->click();
        QTRY_COMPARE(saved.count(), 1);
        tab->editor()->clear();
        QSignalSpy opened(files, &EditorFiles::opened);
        tab->findChild<QToolButton *>(QStringLiteral("tbOpen"))->click();
        QTRY_COMPARE(opened.count(), 1);
        QCOMPARE(tab->editor()->text(), QStringLiteral("select 1;\nselect 2;"));
    }
};

QTEST_MAIN(tst_TextEditorFrame)
#include "tst_TextEditorFrame.moc"
