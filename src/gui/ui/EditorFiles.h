#pragma once
#include "core/interchange/TextFileCodec.h"

#include <QObject>
#include <QPointer>
#include <functional>

class QsciScintilla;
class QWidget;

// Opening a file into an editor and saving the editor to a file, with the open dialog `od` and
// the save dialog `sd` proposing each other's last file name. Files are read and written on a
// worker thread, so a large file never stops the window; the editor is read-only while a file
// loads into it. A file that cannot be read or written leaves the editor (or the file) as it was
// and the error box names the cause.
class EditorFiles : public QObject
{
    Q_OBJECT
public:
    EditorFiles(QsciScintilla *editor, QObject *parent);

    // The names the two dialogs propose next.
    QString odFileName() const { return m_odFileName; }
    QString sdFileName() const { return m_sdFileName; }

    // Run od (or sd); on confirmation load (or save) the chosen file.
    void open();
    void save();
    void openFile(const QString &fileName);
    void saveFile(const QString &fileName);
    bool isBusy() const { return m_busy; }

    // Asks for a file name, proposing one; empty when cancelled. Tests replace it.
    using FileDialog = std::function<QString(QWidget *parent, bool save, const QString &proposed)>;
    static void setFileDialog(FileDialog dialog);

signals:
    void opened(const QString &fileName);
    void saved(const QString &fileName);
    void failed(const QString &message);

private:
    QString ask(bool save, const QString &proposed);
    void loaded(const TextFileCodec::Decoded &decoded, const QString &fileName);
    void fail(const QString &message);

    QPointer<QsciScintilla> m_editor;
    QString m_odFileName;
    QString m_sdFileName;
    // The encoding of the file read last: a save writes it again when the text fits it.
    TextFileCodec::Encoding m_encoding = TextFileCodec::Encoding::Utf8;
    bool m_busy = false;
};
