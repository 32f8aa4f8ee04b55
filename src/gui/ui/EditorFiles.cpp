#include "gui/ui/EditorFiles.h"

#include "gui/app/UserMessages.h"
#include "gui/ui/BackgroundWork.h"
#include "gui/components/SqlEditor.h"

#include <Qsci/qsciscintilla.h>

#include <QFileDialog>
#include <memory>

namespace {

EditorFiles::FileDialog g_fileDialog;

QString runFileDialog(QWidget *parent, bool save, const QString &proposed)
{
    QFileDialog dialog(parent);
    dialog.setObjectName(save ? QStringLiteral("sd") : QStringLiteral("od"));
    dialog.setAcceptMode(save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(save ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    dialog.setDefaultSuffix(QStringLiteral("txt"));
    if (!proposed.isEmpty())
        dialog.selectFile(proposed);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return {};
    return dialog.selectedFiles().constFirst();
}

} // namespace

EditorFiles::EditorFiles(QsciScintilla *editor, QObject *parent) : QObject(parent), m_editor(editor) {}

void EditorFiles::setFileDialog(FileDialog dialog) { g_fileDialog = std::move(dialog); }

QString EditorFiles::ask(bool save, const QString &proposed)
{
    QWidget *parent = m_editor ? m_editor->window() : nullptr;
    return g_fileDialog ? g_fileDialog(parent, save, proposed) : runFileDialog(parent, save, proposed);
}

void EditorFiles::open()
{
    if (m_busy)
        return;
    const QString fileName = ask(false, m_odFileName);
    if (!fileName.isEmpty())
        openFile(fileName);
}

void EditorFiles::save()
{
    if (m_busy)
        return;
    const QString fileName = ask(true, m_sdFileName);
    if (!fileName.isEmpty())
        saveFile(fileName);
}

void EditorFiles::openFile(const QString &fileName)
{
    if (!m_editor || m_busy)
        return;
    m_busy = true;
    const bool wasReadOnly = m_editor->isReadOnly();
    m_editor->setReadOnly(true);
    auto decoded = std::make_shared<TextFileCodec::Decoded>();
    runInBackground(
        this, [fileName, decoded] { *decoded = TextFileCodec::readFile(fileName); },
        [this, fileName, decoded, wasReadOnly](const QString &error) {
            m_busy = false;
            if (!m_editor)
                return;
            m_editor->setReadOnly(wasReadOnly);
            if (!error.isEmpty())
                return fail(error);
            loaded(*decoded, fileName);
        });
}

void EditorFiles::loaded(const TextFileCodec::Decoded &decoded, const QString &fileName)
{
    SqlEditor::setUtf8Text(m_editor, decoded.utf8);
    m_encoding = decoded.encoding;
    m_sdFileName = fileName;
    emit opened(fileName);
}

void EditorFiles::saveFile(const QString &fileName)
{
    if (!m_editor || m_busy)
        return;
    m_busy = true;
    const TextFileCodec::Encoding encoding = m_encoding;
    runInBackground(
        this, [fileName, text = m_editor->text(), encoding] { TextFileCodec::writeFile(fileName, text, encoding); },
        [this, fileName](const QString &error) {
            m_busy = false;
            if (!error.isEmpty())
                return fail(error);
            m_odFileName = fileName;
            emit saved(fileName);
        });
}

void EditorFiles::fail(const QString &message)
{
    UserMessages::error(m_editor ? m_editor->window() : nullptr, message);
    emit failed(message);
}
