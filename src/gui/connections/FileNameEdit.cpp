#include "gui/connections/FileNameEdit.h"

#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QToolButton>

TFileNameEdit::TFileNameEdit(QWidget *parent)
    : QWidget(parent)
{
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    m_edit = new QLineEdit(this);
    m_edit->setObjectName(QStringLiteral("edit"));
    m_button = new QToolButton(this);
    m_button->setObjectName(QStringLiteral("browse"));
    m_button->setText(QStringLiteral("..."));
    m_button->setToolTip(QStringLiteral("Browse"));
    m_button->setFocusPolicy(Qt::NoFocus);
    layout->addWidget(m_edit, 1);
    layout->addWidget(m_button);
    setFocusProxy(m_edit);
    connect(m_button, &QToolButton::clicked, this, &TFileNameEdit::browse);
}

QString TFileNameEdit::text() const { return m_edit->text(); }

void TFileNameEdit::setText(const QString &text) { m_edit->setText(text); }

QString TFileNameEdit::toQtFilter(const QString &filter)
{
    const QStringList parts = filter.split(QLatin1Char('|'));
    QStringList result;
    for (int i = 0; i + 1 < parts.size(); i += 2) {
        QString description = parts.at(i).trimmed();
        // A description that names its patterns in parentheses gets them replaced by the Qt form.
        if (description.endsWith(QLatin1Char(')'))) {
            const int open = description.lastIndexOf(QLatin1Char('('));
            if (open > 0)
                description = description.left(open).trimmed();
        }
        QStringList patterns;
        for (const QString &pattern : parts.at(i + 1).split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            // "*.*" would miss files without an extension here; "*" is what "all files" means.
            patterns << (pattern.trimmed() == QLatin1String("*.*") ? QStringLiteral("*") : pattern.trimmed());
        }
        result << QStringLiteral("%1 (%2)").arg(description, patterns.join(QLatin1Char(' ')));
    }
    return result.join(QStringLiteral(";;"));
}

void TFileNameEdit::browse()
{
    QFileDialog dialog(this);
    dialog.setFileMode(QFileDialog::AnyFile); // a file database may not exist yet
    dialog.setAcceptMode(QFileDialog::AcceptOpen);
    dialog.setNameFilter(qtFilter());
    const QFileInfo current(text());
    if (!text().isEmpty()) {
        dialog.setDirectory(current.absolutePath());
        dialog.selectFile(current.fileName());
    }
    if (dialog.exec() == QDialog::Accepted && !dialog.selectedFiles().isEmpty())
        setText(QDir::toNativeSeparators(dialog.selectedFiles().constFirst()));
}
