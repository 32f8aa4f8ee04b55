#include "gui/ui/TextSearch.h"

#include "core/app/TextSearchRules.h"
#include "gui/components/SqlEditor.h"
#include "gui/ui/TextSearchDialogs.h"

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <memory>

namespace TextSearch {

namespace {

SettingsStore *g_settings = nullptr;
DialogRunner g_runner;
std::function<void()> g_beep;

void beep()
{
    if (g_beep)
        g_beep();
    else
        QApplication::beep();
}

} // namespace

TextSearchState &state()
{
    static TextSearchState s;
    return s;
}

void attachSettings(SettingsStore *settings) { g_settings = settings; }
void setDialogRunner(DialogRunner runner) { g_runner = std::move(runner); }
void setBeep(std::function<void()> b) { g_beep = std::move(b); }

void ShowSearchReplaceDialog(QsciScintilla *editor, bool replace)
{
    TextSearchState &s = state();
    std::unique_ptr<TTextSearchDialog> dialog;
    TTextReplaceDialog *replaceDialog = nullptr;
    if (replace)
        dialog.reset(replaceDialog = new TTextReplaceDialog(editor->window()));
    else
        dialog.reset(new TTextSearchDialog(editor->window()));
    dialog->setPlacementStore(g_settings);

    dialog->setSearchText(s.searchText);
    if (s.searchTextAtCaret) {
        int lineFrom = 0, indexFrom = 0, lineTo = 0, indexTo = 0;
        editor->getSelection(&lineFrom, &indexFrom, &lineTo, &indexTo);
        if (editor->hasSelectedText() && lineFrom == lineTo)
            dialog->setSearchText(editor->selectedText());
        else
            dialog->setSearchText(SqlEditor::wordAtCaret(editor));
    }
    dialog->setSearchTextHistory(s.searchTextHistory);
    if (replaceDialog) {
        replaceDialog->setReplaceText(s.replaceText);
        replaceDialog->setReplaceTextHistory(s.replaceTextHistory);
    }
    dialog->setSearchWholeWords(s.searchWholeWords);

    const int result = g_runner ? g_runner(dialog.get()) : dialog->exec();
    if (result != QDialog::Accepted)
        return;
    s.searchText = dialog->searchText();
    s.searchTextHistory = dialog->searchTextHistory();
    if (replaceDialog) {
        s.replaceText = replaceDialog->replaceText();
        s.replaceTextHistory = replaceDialog->replaceTextHistory();
    }
    // The dialog's "Search from caret" is shown but not taken over: its first search always
    // covers the whole text, and the searches after it continue from the caret.
    s.searchFromCaret = false;
    if (!s.searchText.isEmpty()) {
        DoSearchReplaceText(editor, replace, s.searchBackwards);
        s.searchFromCaret = true;
    }
}

bool DoSearchReplaceText(QsciScintilla *editor, bool replace, bool backwards)
{
    TextSearchState &s = state();
    SqlEditor::SearchOptions options;
    options.replace = options.replaceAll = options.prompt = replace;
    options.backwards = backwards;
    options.matchCase = s.searchCaseSensitive;
    options.entireScope = !s.searchFromCaret;
    options.selectedOnly = s.searchSelectionOnly;
    options.wholeWords = s.searchWholeWords;
    const int found = SqlEditor::searchReplace(editor, s.searchText, s.replaceText, options);
    if (found == 0) {
        beep();
        SqlEditor::collapseSelection(editor, backwards);
    }
    delete s.confirmReplaceDialog;
    s.confirmReplaceDialog = nullptr;
    return found > 0;
}

} // namespace TextSearch
