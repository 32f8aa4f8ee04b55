#include "gui/components/SqlEditor.h"

#include "core/app/TextSearchRules.h"

#include <Qsci/qscicommand.h>
#include <Qsci/qscicommandset.h>
#include <Qsci/qscilexersql.h>
#include <Qsci/qsciscintilla.h>

#include <QAction>
#include <QFontDatabase>
#include <QWhatsThis>
#include <limits>

namespace SqlEditor {

namespace {

using Sci = QsciScintillaBase;

long send(QsciScintilla *e, unsigned int msg, unsigned long w = 0, long l = 0) { return e->SendScintilla(msg, w, l); }

// Scintilla numbers lines without leading zeros, so the line-number margin is a right-aligned
// text margin: the lines on screen get their zero-padded numbers whenever the view or the text
// changes. A text is only set when it differs, so setting it does not start another round.
void refreshLineNumbers(QsciScintilla *e)
{
    const int lines = e->lines();
    const int digits = qMax(4, int(QString::number(lines).size()));
    if (e->property("lineNumberDigits").toInt() != digits) {
        e->setProperty("lineNumberDigits", digits);
        e->setMarginWidth(0, QString(digits + 1, QLatin1Char('0')));
    }
    const int first = e->firstVisibleLine();
    const int last = qMin(lines, first + int(send(e, Sci::SCI_LINESONSCREEN)) + 1);
    char current[32];
    for (int line = first; line < last; ++line) {
        const QByteArray wanted = QByteArray::number(line + 1).rightJustified(digits, '0');
        const long length = send(e, Sci::SCI_MARGINGETTEXT, line, 0);
        if (length == wanted.size()) {
            e->SendScintilla(Sci::SCI_MARGINGETTEXT, static_cast<unsigned long>(line), static_cast<void *>(current));
            if (QByteArray(current, int(length)) == wanted)
                continue;
        }
        e->SendScintilla(Sci::SCI_MARGINSETTEXT, static_cast<uintptr_t>(line), wanted.constData());
        send(e, Sci::SCI_MARGINSETSTYLE, line, Sci::STYLE_LINENUMBER);
    }
}

void useZeroPaddedLineNumbers(QsciScintilla *e)
{
    e->setMarginType(0, QsciScintilla::TextMarginRightJustified);
    QObject::connect(e, &QsciScintillaBase::SCN_UPDATEUI, e, [e](int) { refreshLineNumbers(e); });
    refreshLineNumbers(e);
}

// F1 stays free for the program's help; Ctrl+F1 asks for context help.
void useContextHelpKeys(QsciScintilla *e)
{
    if (QsciCommand *command = e->standardCommands()->boundTo(Qt::Key_F1))
        command->setKey(0);
    auto *help = new QAction(e);
    help->setObjectName(QStringLiteral("contextHelp"));
    help->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_F1));
    help->setShortcutContext(Qt::WidgetShortcut);
    QObject::connect(help, &QAction::triggered, e, [] { QWhatsThis::enterWhatsThisMode(); });
    e->addAction(help);
}

int searchFlags(const SearchOptions &o)
{
    return (o.matchCase ? Sci::SCFIND_MATCHCASE : 0) | (o.wholeWords ? Sci::SCFIND_WHOLEWORD : 0);
}

// The byte range a search covers, in the direction of the search (start > end backwards).
void searchRange(QsciScintilla *e, const SearchOptions &o, long &start, long &end)
{
    const long length = send(e, Sci::SCI_GETLENGTH);
    const long selStart = send(e, Sci::SCI_GETSELECTIONSTART);
    const long selEnd = send(e, Sci::SCI_GETSELECTIONEND);
    long from = 0, to = length;
    if (o.selectedOnly && selStart != selEnd) {
        from = selStart;
        to = selEnd;
    }
    if (!o.entireScope) {
        if (o.backwards)
            to = qMin(to, selStart);
        else
            from = qMax(from, selEnd);
    }
    start = o.backwards ? to : from;
    end = o.backwards ? from : to;
}

QString textRange(QsciScintilla *e, long from, long to)
{
    const char *all = static_cast<const char *>(e->SendScintillaPtrResult(Sci::SCI_GETCHARACTERPOINTER));
    return QString::fromUtf8(all + from, to - from);
}

int replaceAllIn(QsciScintilla *e, const QString &text, const QString &replacement, const SearchOptions &o)
{
    long start = 0, end = 0;
    searchRange(e, o, start, end);
    const long from = qMin(start, end), to = qMax(start, end);
    if (o.wholeWords) {
        // Word boundaries are the control's own business: let it find each occurrence.
        int count = 0;
        SearchOptions one = o;
        one.replaceAll = false;
        one.entireScope = false;
        one.selectedOnly = false;  // each search goes on after the last replacement
        send(e, Sci::SCI_BEGINUNDOACTION);
        send(e, Sci::SCI_SETSEL, from, from);
        while (searchReplace(e, text, replacement, one) > 0)
            ++count;
        send(e, Sci::SCI_ENDUNDOACTION);
        return count;
    }
    const TextSearchRules::Replaced done = TextSearchRules::replaceAll(
        textRange(e, from, to), text, replacement, 0, std::numeric_limits<qsizetype>::max(),
        o.matchCase ? Qt::CaseSensitive : Qt::CaseInsensitive);
    if (done.count == 0)
        return 0;
    const QByteArray bytes = done.text.toUtf8();
    send(e, Sci::SCI_BEGINUNDOACTION);
    send(e, Sci::SCI_SETTARGETRANGE, from, to);
    e->SendScintilla(Sci::SCI_REPLACETARGET, static_cast<uintptr_t>(bytes.size()), bytes.constData());
    send(e, Sci::SCI_ENDUNDOACTION);
    const long caret = from + QStringView(done.text).left(done.lastEnd).toUtf8().size();
    send(e, Sci::SCI_SETSEL, caret, caret);
    send(e, Sci::SCI_SCROLLCARET);
    return done.count;
}

} // namespace

QsciScintilla *create(QWidget *parent, const char *objectName)
{
    auto *editor = new QsciScintilla(parent);
    editor->setObjectName(QString::fromLatin1(objectName));
    QFont font = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    font.setPointSize(10);
    auto *lexer = new QsciLexerSQL(editor);
    lexer->setDefaultFont(font);
    lexer->setFont(font);
    editor->setLexer(lexer);
    editor->setUtf8(true);
    editor->setMarginsFont(font);
    useZeroPaddedLineNumbers(editor);
    useContextHelpKeys(editor);
    editor->setAutoIndent(true);
    editor->setBraceMatching(QsciScintilla::SloppyBraceMatch);
    editor->setWrapMode(QsciScintilla::WrapNone);
    // Highlighting runs in idle time, so a jump to the end of a large file shows at once and the
    // colours follow.
    send(editor, Sci::SCI_SETIDLESTYLING, Sci::SC_IDLESTYLING_ALL);
    return editor;
}

void useLogStyle(QsciScintilla *editor)
{
    editor->setEdgeMode(QsciScintilla::EdgeLine);
    editor->setEdgeColumn(400);
}

void useTextEditorStyle(QsciScintilla *editor)
{
    editor->setEdgeMode(QsciScintilla::EdgeLine);
    editor->setEdgeColumn(500);
    editor->setIndentationsUseTabs(false);
    editor->setTabIndents(true);
    editor->setBackspaceUnindents(true);
    // The horizontal scroll range follows the longest line shown instead of a fixed width.
    send(editor, Sci::SCI_SETSCROLLWIDTH, 1);
    send(editor, Sci::SCI_SETSCROLLWIDTHTRACKING, 1);
    // Trailing blanks are trimmed from a line once Enter leaves it.
    QObject::connect(editor, &QsciScintillaBase::SCN_CHARADDED, editor, [editor](int ch) {
        if (ch != '\n' && ch != '\r')
            return;
        const int line = editor->SendScintilla(Sci::SCI_LINEFROMPOSITION, send(editor, Sci::SCI_GETCURRENTPOS)) - 1;
        if (line < 0)
            return;
        const long lineEnd = send(editor, Sci::SCI_GETLINEENDPOSITION, line);
        const long lineStart = send(editor, Sci::SCI_POSITIONFROMLINE, line);
        long cut = lineEnd;
        while (cut > lineStart) {
            const int c = int(send(editor, Sci::SCI_GETCHARAT, cut - 1));
            if (c != ' ' && c != '\t')
                break;
            --cut;
        }
        if (cut < lineEnd) {
            send(editor, Sci::SCI_SETTARGETRANGE, cut, lineEnd);
            editor->SendScintilla(Sci::SCI_REPLACETARGET, static_cast<uintptr_t>(0), "");
        }
    });
}

int searchReplace(QsciScintilla *editor, const QString &text, const QString &replacement, const SearchOptions &options)
{
    if (text.isEmpty())
        return 0;
    if (options.replace && options.replaceAll)
        return replaceAllIn(editor, text, replacement, options);
    long start = 0, end = 0;
    searchRange(editor, options, start, end);
    const QByteArray needle = text.toUtf8();
    send(editor, Sci::SCI_SETSEARCHFLAGS, static_cast<unsigned long>(searchFlags(options)));
    send(editor, Sci::SCI_SETTARGETRANGE, start, end);
    const long hit = editor->SendScintilla(Sci::SCI_SEARCHINTARGET, static_cast<uintptr_t>(needle.size()),
                                           needle.constData());
    if (hit < 0)
        return 0;
    long hitEnd = send(editor, Sci::SCI_GETTARGETEND);
    if (options.replace) {
        const QByteArray with = replacement.toUtf8();
        editor->SendScintilla(Sci::SCI_REPLACETARGET, static_cast<uintptr_t>(with.size()), with.constData());
        hitEnd = send(editor, Sci::SCI_GETTARGETEND);
    }
    // Backwards the caret stands at the start of the occurrence, so the next search goes on before it.
    if (options.backwards)
        send(editor, Sci::SCI_SETSEL, hitEnd, hit);
    else
        send(editor, Sci::SCI_SETSEL, hit, hitEnd);
    send(editor, Sci::SCI_SCROLLCARET);
    return 1;
}

void collapseSelection(QsciScintilla *editor, bool toStart)
{
    const long pos = send(editor, toStart ? Sci::SCI_GETSELECTIONSTART : Sci::SCI_GETSELECTIONEND);
    send(editor, Sci::SCI_SETSEL, pos, pos);
}

QString wordAtCaret(QsciScintilla *editor)
{
    const long pos = send(editor, Sci::SCI_GETCURRENTPOS);
    const long from = send(editor, Sci::SCI_WORDSTARTPOSITION, pos, 1);
    const long to = send(editor, Sci::SCI_WORDENDPOSITION, pos, 1);
    return textRange(editor, from, to);
}

void setUtf8Text(QsciScintilla *editor, const QByteArray &utf8)
{
    send(editor, Sci::SCI_BEGINUNDOACTION);
    editor->SendScintilla(Sci::SCI_SETTEXT, utf8.constData());
    send(editor, Sci::SCI_ENDUNDOACTION);
    send(editor, Sci::SCI_GOTOPOS, 0);
}

} // namespace SqlEditor
