#pragma once
#include <QString>
#include <functional>

class QsciScintilla;
class SettingsStore;
class TConfirmReplaceDialog;
class TTextSearchDialog;

// The program-wide text search and replace: one shared state and the two routines every text
// editor of the program calls (the text editor frame, the workspace's editor, the log's text).
struct TextSearchState
{
    QString searchText;
    QString searchTextHistory;   // the search dialog's recent texts, CR LF separated
    QString replaceText;
    QString replaceTextHistory;  // the replace dialog's recent texts, CR LF separated
    // false: the next search covers the whole text; true: it starts at the caret.
    bool searchFromCaret = false;
    // Only these routines touch the following; nothing in the program sets them, so they stay
    // false: the dialogs show their options but a search is always case-insensitive, whole-text
    // and, from the dialog, forwards. That is intended.
    bool searchBackwards = false;
    bool searchCaseSensitive = false;
    bool searchWholeWords = false;
    bool searchSelectionOnly = false;
    bool searchTextAtCaret = false;
    TConfirmReplaceDialog *confirmReplaceDialog = nullptr;  // freed after every search
};

namespace TextSearch {

// The one state of the process; it lives for the whole run and is never saved.
TextSearchState &state();

// The settings store the dialogs' placement stores are attached to (set once at start).
void attachSettings(SettingsStore *settings);

// Shows the search (or replace) dialog for the editor; on OK takes its texts into the shared
// state and, when the text is not empty, searches the whole text once. The dialog is freed
// in every case.
void ShowSearchReplaceDialog(QsciScintilla *editor, bool replace);

// Searches the editor for the shared text (replacing every occurrence with the shared
// replacement when asked). Nothing found: a beep, and the selection collapses. Returns whether
// anything was found.
bool DoSearchReplaceText(QsciScintilla *editor, bool replace, bool backwards);

// Tests take over the modal run of the dialog and the beep.
using DialogRunner = std::function<int(TTextSearchDialog *dialog)>;
void setDialogRunner(DialogRunner runner);  // empty: the dialog runs modally
void setBeep(std::function<void()> beep);   // empty: the system beep

} // namespace TextSearch
