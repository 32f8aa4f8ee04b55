#include "gui/connections/OdbcAdministrator.h"

#include "core/base/SavedFile.h"
#include "core/base/VantryError.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QPlainTextEdit>
#include <QProcess>
#include <QStandardPaths>
#include <QVBoxLayout>

namespace {

QString userOdbcIni()
{
    const QString fromEnv = qEnvironmentVariable("ODBCINI");
    return fromEnv.isEmpty() ? QDir::homePath() + QStringLiteral("/.odbc.ini") : fromEnv;
}

void editOdbcIni(QWidget *parent)
{
    const QString fileName = userOdbcIni();
    QFile file(fileName);
    if (!file.exists() && file.open(QIODevice::WriteOnly))
        file.close();
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        throw VantryError(QStringLiteral("Cannot open the ODBC data source file \"%1\": %2").arg(fileName, file.errorString()));
    const QString text = QString::fromUtf8(file.readAll());
    file.close();

    QDialog dialog(parent);
    dialog.setObjectName(QStringLiteral("OdbcIniEditor"));
    dialog.setWindowTitle(QStringLiteral("ODBC Data Sources - %1").arg(fileName));
    dialog.resize(640, 480);
    auto *layout = new QVBoxLayout(&dialog);
    auto *editor = new QPlainTextEdit(text, &dialog);
    editor->setObjectName(QStringLiteral("OdbcIniText"));
    editor->setFont(QFont(QStringLiteral("DejaVu Sans Mono")));
    layout->addWidget(editor);
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Save | QDialogButtonBox::Cancel, &dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    layout->addWidget(buttons);
    if (dialog.exec() != QDialog::Accepted)
        return;

    // Written through a temporary file so a failed save never leaves the file half-written.
    const QString cause = saveWholeFile(fileName, editor->toPlainText().toUtf8());
    if (!cause.isEmpty())
        throw VantryError(QStringLiteral("Cannot save the ODBC data source file \"%1\": %2").arg(fileName, cause));
}

} // namespace

namespace OdbcAdministrator {

void start(QWidget *parent)
{
    for (const char *program : {"ODBCManageDataSourcesQ5", "ODBCManageDataSourcesQ4"}) {
        const QString path = QStandardPaths::findExecutable(QString::fromLatin1(program));
        if (!path.isEmpty() && QProcess::startDetached(path, {}))
            return;
    }
    editOdbcIni(parent);
}

} // namespace OdbcAdministrator
