#include "components/SqlEditor.h"

#include <Qsci/qsciscintilla.h>
#include <Qsci/qscilexersql.h>

#include <QFontDatabase>

namespace SqlEditor {

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
    editor->setMarginType(0, QsciScintilla::NumberMargin);
    editor->setMarginLineNumbers(0, true);
    editor->setMarginWidth(0, QStringLiteral("00000"));
    editor->setMarginsFont(font);
    editor->setAutoIndent(true);
    editor->setBraceMatching(QsciScintilla::SloppyBraceMatch);
    editor->setWrapMode(QsciScintilla::WrapNone);
    return editor;
}

void useLogStyle(QsciScintilla *editor)
{
    editor->setEdgeMode(QsciScintilla::EdgeLine);
    editor->setEdgeColumn(400);
    // Scintilla has no zero-padded line numbers; a wider margin keeps the numbers aligned the same way.
    editor->setMarginWidth(0, QStringLiteral("000000"));
}

} // namespace SqlEditor
