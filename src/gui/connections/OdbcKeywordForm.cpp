#include "gui/connections/OdbcKeywordForm.h"

#include "core/base/VantryError.h"
#include "gui/app/UserMessages.h"
#include "gui/connections/BackgroundCall.h"
#include "gui/connections/FileNameEdit.h"

#include <QComboBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

QWidget *makeEditor(const OdbcKeyword &k, QWidget *parent)
{
    QWidget *editor = nullptr;
    if (k.kind == OdbcKeyword::Kind::File) {
        auto *file = new TFileNameEdit(parent);
        file->setFilter(QStringLiteral("All files (*.*)|*.*"));
        editor = file;
    } else if (!k.choices.isEmpty()) {
        auto *combo = new QComboBox(parent);
        combo->setEditable(true);
        combo->addItems(k.choices);
        // As wide as the text boxes beside it: a short list still takes typed values.
        combo->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        editor = combo;
    } else {
        auto *edit = new QLineEdit(parent);
        if (k.kind == OdbcKeyword::Kind::Password)
            edit->setEchoMode(QLineEdit::Password);
        editor = edit;
    }
    editor->setObjectName(QStringLiteral("kw") + k.name);
    return editor;
}

void setEditorText(QWidget *editor, const QString &value)
{
    if (auto *file = qobject_cast<TFileNameEdit *>(editor))
        file->setText(value);
    else if (auto *combo = qobject_cast<QComboBox *>(editor))
        combo->setEditText(value);
    else if (auto *edit = qobject_cast<QLineEdit *>(editor))
        edit->setText(value);
}

} // namespace

OdbcKeywordForm::OdbcKeywordForm(const QString &driverName, const OdbcConnectionBuilder::DriverKeywords &keywords,
                                 const QString &current, QWidget *parent)
    : TDefDlgFrm(parent), m_driver(driverName), m_keywords(keywords.keywords)
{
    setObjectName(QStringLiteral("OdbcKeywordForm"));
    setWindowTitle(driverName + QStringLiteral(" Connection"));
    imageSquare()->parentWidget()->hide();

    auto *layout = new QVBoxLayout(TabSheet1());
    auto *intro = new QLabel(keywords.source == OdbcConnectionBuilder::KeywordSource::Driver
                                 ? QStringLiteral("The driver \"%1\" asks for these keywords:").arg(driverName)
                                 : QStringLiteral("The usual keywords of the driver \"%1\":").arg(driverName),
                             TabSheet1());
    intro->setObjectName(QStringLiteral("SourceLbl"));
    intro->setWordWrap(true);
    layout->addWidget(intro);

    auto *form = new QFormLayout;
    form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
    layout->addLayout(form);
    const bool sameDriver = OdbcKeywords::driverOf(current).compare(driverName, Qt::CaseInsensitive) == 0;
    QString others;
    const QVector<OdbcKeywordValue> values = OdbcKeywords::valuesFrom(sameDriver ? current : QString(), m_keywords, &others);
    for (int i = 0; i < m_keywords.size(); ++i) {
        const OdbcKeyword &k = m_keywords.at(i);
        QWidget *editor = makeEditor(k, TabSheet1());
        setEditorText(editor, values.at(i).value);
        m_editors << editor;
        auto *label = new QLabel(k.prompt, TabSheet1());
        label->setToolTip(k.optional ? QStringLiteral("%1 (optional)").arg(k.name) : k.name);
        form->addRow(label, editor);
    }
    OtherKeywordsEdt = new QLineEdit(others, TabSheet1());
    OtherKeywordsEdt->setObjectName(QStringLiteral("OtherKeywordsEdt"));
    OtherKeywordsEdt->setPlaceholderText(QStringLiteral("KEY=value;KEY=value"));
    form->addRow(QStringLiteral("Other keywords:"), OtherKeywordsEdt);
    layout->addStretch();

    setSizeable(true);
    resize(qMax(540, sizeHint().width()), sizeHint().height());
}

QWidget *OdbcKeywordForm::editorOf(const QString &keyword) const
{
    for (int i = 0; i < m_keywords.size(); ++i)
        if (m_keywords.at(i).name.compare(keyword, Qt::CaseInsensitive) == 0)
            return m_editors.at(i);
    return nullptr;
}

void OdbcKeywordForm::setValue(const QString &keyword, const QString &value)
{
    if (QWidget *editor = editorOf(keyword))
        setEditorText(editor, value);
}

QString OdbcKeywordForm::valueOf(const QWidget *editor) const
{
    if (auto *file = qobject_cast<const TFileNameEdit *>(editor))
        return file->text().trimmed();
    if (auto *combo = qobject_cast<const QComboBox *>(editor))
        return combo->currentText().trimmed();
    if (auto *edit = qobject_cast<const QLineEdit *>(editor))
        return edit->text(); // a password may begin or end with blanks
    return QString();
}

QVector<OdbcKeywordValue> OdbcKeywordForm::values() const
{
    QVector<OdbcKeywordValue> typed;
    for (int i = 0; i < m_keywords.size(); ++i)
        typed << OdbcKeywordValue{m_keywords.at(i).name, valueOf(m_editors.at(i))};
    return typed;
}

QString OdbcKeywordForm::connectionString() const
{
    return OdbcKeywords::connectionString(m_driver, values(), OtherKeywordsEdt->text());
}

void OdbcKeywordForm::OKBtnClick()
{
    TDefDlgFrm::OKBtnClick();
    const int missing = OdbcKeywords::firstMissing(m_keywords, values());
    if (missing >= 0) {
        QString name = m_keywords.at(missing).prompt;
        if (name.endsWith(QLatin1Char(':')))
            name.chop(1);
        UserMessages::error(this, QStringLiteral("\"%1\" is empty: choose the file the driver is to open.").arg(name));
        m_editors.at(missing)->setFocus();
        setPendingResult(-1);
        return;
    }
    const QString text = connectionString();
    const QString driver = m_driver;
    try {
        const std::optional<QString> completed = BackgroundCall::call<QString>(
            this, QStringLiteral("Connecting with the driver \"%1\"...").arg(driver),
            [text, driver] { return OdbcConnectionBuilder::complete(text, driver); });
        if (completed) {
            m_completed = *completed;
            setPendingResult(QDialog::Accepted); // Enter closes the form as OK does
            return;
        }
    } catch (const VantryError &e) {
        UserMessages::error(this, e.message());
    }
    setPendingResult(-1); // cancelled or failed: the form stays open
}
