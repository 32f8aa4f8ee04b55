#include "gui/ui/TextSearchDialogs.h"

#include "core/base/SettingsStore.h"
#include "core/app/TextSearchRules.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStyle>
#include <QVBoxLayout>

namespace {

QStringList itemsOf(const QComboBox *box)
{
    QStringList items;
    for (int i = 0; i < box->count(); ++i)
        items << box->itemText(i);
    return items;
}

// Replaces the drop-down's entries and keeps what the edit field shows.
void setItems(QComboBox *box, const QStringList &items)
{
    const QString text = box->currentText();
    box->clear();
    box->addItems(items);
    box->setCurrentIndex(-1);
    box->setEditText(text);
}

// The OK step of both dialogs: the entered text goes to the top of the drop-down's entries.
void promoteEntered(QComboBox *box)
{
    const QString text = box->currentText();
    if (text.isEmpty())
        return;
    QStringList items = itemsOf(box);
    TextSearchRules::promote(items, text);
    setItems(box, items);
    box->setEditText(text);
}

QComboBox *historyBox(QWidget *parent, const char *name)
{
    auto *box = new QComboBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    box->setMinimumContentsLength(28);
    return box;
}

QCheckBox *option(QWidget *parent, const char *name, const QString &caption)
{
    auto *box = new QCheckBox(caption, parent);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

// A drop-down's items are kept as "<name>.Items.Count" and "<name>.Items.Item<n>", at most the
// history's length.
void storeItems(SettingsStore *store, const QString &path, const QComboBox *box)
{
    const QStringList items = itemsOf(box).mid(0, TextSearchRules::MaxHistory);
    const QString prefix = box->objectName() + QStringLiteral(".Items.");
    store->writeInt(path, prefix + QStringLiteral("Count"), int(items.size()));
    for (int i = 0; i < items.size(); ++i)
        store->writeString(path, prefix + QStringLiteral("Item%1").arg(i), items.at(i));
}

void restoreItems(const SettingsStore *store, const QString &path, QComboBox *box)
{
    const QString prefix = box->objectName() + QStringLiteral(".Items.");
    if (!store->contains(path, prefix + QStringLiteral("Count")))
        return;
    const int count = qBound(0, store->readInt(path, prefix + QStringLiteral("Count"), 0), TextSearchRules::MaxHistory);
    QStringList items;
    for (int i = 0; i < count; ++i)
        items << store->readString(path, prefix + QStringLiteral("Item%1").arg(i));
    setItems(box, items);
}

void storeText(SettingsStore *store, const QString &path, const QComboBox *box)
{
    store->writeString(path, box->objectName() + QStringLiteral(".Text"), box->currentText());
}

void restoreText(const SettingsStore *store, const QString &path, QComboBox *box)
{
    const QString name = box->objectName() + QStringLiteral(".Text");
    if (store->contains(path, name))
        box->setEditText(store->readString(path, name));
}

void storeIndex(SettingsStore *store, const QString &path, const QComboBox *box)
{
    store->writeInt(path, box->objectName() + QStringLiteral(".ItemIndex"), box->currentIndex());
}

void restoreIndex(const SettingsStore *store, const QString &path, QComboBox *box)
{
    const int index = store->readInt(path, box->objectName() + QStringLiteral(".ItemIndex"), -1);
    if (index >= 0 && index < box->count())
        box->setCurrentIndex(index);
}

} // namespace

// --- TTextSearchDialog ---

TTextSearchDialog::TTextSearchDialog(QWidget *parent)
    : TTextSearchDialog(parent, QStringLiteral("Search Text"), QStringLiteral("TextSearchDialog\\"))
{
}

TTextSearchDialog::TTextSearchDialog(QWidget *parent, const QString &caption, const QString &storePath)
    : QDialog(parent), m_storePath(storePath)
{
    build(caption);
}

void TTextSearchDialog::build(const QString &caption)
{
    setObjectName(QStringLiteral("TextSearchDialog"));
    setWindowTitle(caption);
    // A fixed dialog border: no resizing, no minimise or maximise.
    setWindowFlags(Qt::Dialog | Qt::MSWindowsFixedSizeDialogHint | Qt::WindowTitleHint | Qt::WindowCloseButtonHint);
    setModal(true);

    auto *outer = new QVBoxLayout(this);
    outer->setSizeConstraint(QLayout::SetFixedSize);
    m_fields = new QGridLayout;
    outer->addLayout(m_fields);
    cbSearchText = historyBox(this, "cbSearchText");
    auto *label = new QLabel(QStringLiteral("&Search for:"), this);
    label->setBuddy(cbSearchText);
    m_fields->addWidget(label, 0, 0);
    m_fields->addWidget(cbSearchText, 1, 0);

    auto *row = new QHBoxLayout;
    outer->addLayout(row);
    auto *options = new QGroupBox(QStringLiteral("Options"), this);
    options->setObjectName(QStringLiteral("gbSearchOptions"));
    auto *optionsLayout = new QVBoxLayout(options);
    cbSearchCaseSensitive = option(options, "cbSearchCaseSensitive", QStringLiteral("C&ase sensitivity"));
    cbSearchWholeWords = option(options, "cbSearchWholeWords", QStringLiteral("&Whole words only"));
    cbSearchFromCursor = option(options, "cbSearchFromCursor", QStringLiteral("Search from &caret"));
    cbSearchSelectedOnly = option(options, "cbSearchSelectedOnly", QStringLiteral("&Selected text only"));
    for (QCheckBox *box : {cbSearchCaseSensitive, cbSearchWholeWords, cbSearchFromCursor, cbSearchSelectedOnly})
        optionsLayout->addWidget(box);
    row->addWidget(options);

    auto *direction = new QGroupBox(QStringLiteral("Direction"), this);
    direction->setObjectName(QStringLiteral("rgSearchDirection"));
    rgSearchDirection = direction;
    auto *directionLayout = new QVBoxLayout(direction);
    rbForward = new QRadioButton(QStringLiteral("&Forward"), direction);
    rbForward->setObjectName(QStringLiteral("rbForward"));
    rbBackward = new QRadioButton(QStringLiteral("&Backward"), direction);
    rbBackward->setObjectName(QStringLiteral("rbBackward"));
    rbForward->setChecked(true);
    directionLayout->addWidget(rbForward);
    directionLayout->addWidget(rbBackward);
    directionLayout->addStretch();
    row->addWidget(direction);

    auto *buttons = new QDialogButtonBox(this);
    QPushButton *ok = buttons->addButton(QStringLiteral("OK"), QDialogButtonBox::AcceptRole);
    ok->setObjectName(QStringLiteral("btnOK"));
    ok->setDefault(true);
    QPushButton *cancel = buttons->addButton(QStringLiteral("Cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("btnCancel"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    outer->addWidget(buttons);
    cbSearchText->setFocus();
}

QString TTextSearchDialog::searchText() const { return cbSearchText->currentText(); }
void TTextSearchDialog::setSearchText(const QString &text) { cbSearchText->setEditText(text); }

QString TTextSearchDialog::searchTextHistory() const
{
    return TextSearchRules::joinHistory(itemsOf(cbSearchText));
}

void TTextSearchDialog::setSearchTextHistory(const QString &history)
{
    setItems(cbSearchText, TextSearchRules::splitHistory(history));
}

bool TTextSearchDialog::searchBackwards() const { return rbBackward->isChecked(); }
bool TTextSearchDialog::searchCaseSensitive() const { return cbSearchCaseSensitive->isChecked(); }
bool TTextSearchDialog::searchWholeWords() const { return cbSearchWholeWords->isChecked(); }
void TTextSearchDialog::setSearchWholeWords(bool on) { cbSearchWholeWords->setChecked(on); }
bool TTextSearchDialog::searchFromCursor() const { return cbSearchFromCursor->isChecked(); }
bool TTextSearchDialog::searchSelectedOnly() const { return cbSearchSelectedOnly->isChecked(); }

void TTextSearchDialog::accept()
{
    promoteEntered(cbSearchText);
    QDialog::accept();
}

void TTextSearchDialog::showEvent(QShowEvent *event)
{
    if (!m_restored && m_store) {
        m_restored = true;
        restorePlacement();
    }
    QDialog::showEvent(event);
}

void TTextSearchDialog::done(int result)
{
    if (m_store)
        savePlacement();
    QDialog::done(result);
}

void TTextSearchDialog::restorePlacement()
{
    for (QCheckBox *box : {cbSearchCaseSensitive, cbSearchWholeWords, cbSearchFromCursor, cbSearchSelectedOnly})
        box->setChecked(m_store->readBool(m_storePath, box->objectName() + QStringLiteral(".Checked"), box->isChecked()));
    const int direction = m_store->readInt(m_storePath, QStringLiteral("rgSearchDirection.ItemIndex"), 0);
    (direction == 1 ? rbBackward : rbForward)->setChecked(true);
    restoreItems(m_store, m_storePath, cbSearchText);
    restoreText(m_store, m_storePath, cbSearchText);
}

void TTextSearchDialog::savePlacement()
{
    for (QCheckBox *box : {cbSearchCaseSensitive, cbSearchWholeWords, cbSearchFromCursor, cbSearchSelectedOnly})
        m_store->writeBool(m_storePath, box->objectName() + QStringLiteral(".Checked"), box->isChecked());
    m_store->writeInt(m_storePath, QStringLiteral("rgSearchDirection.ItemIndex"), rbBackward->isChecked() ? 1 : 0);
    storeItems(m_store, m_storePath, cbSearchText);
    storeText(m_store, m_storePath, cbSearchText);
}

// --- TTextReplaceDialog ---

TTextReplaceDialog::TTextReplaceDialog(QWidget *parent)
    : TTextSearchDialog(parent, QStringLiteral("Replace text"), QStringLiteral("TextReplaceDialog\\"))
{
    setObjectName(QStringLiteral("TextReplaceDialog"));
    cbReplaceText = historyBox(this, "cbReplaceText");
    auto *label = new QLabel(QStringLiteral("&Replace with:"), this);
    label->setBuddy(cbReplaceText);
    m_fields->addWidget(label, 2, 0);
    m_fields->addWidget(cbReplaceText, 3, 0);
}

QString TTextReplaceDialog::replaceText() const { return cbReplaceText->currentText(); }
void TTextReplaceDialog::setReplaceText(const QString &text) { cbReplaceText->setEditText(text); }

QString TTextReplaceDialog::replaceTextHistory() const
{
    return TextSearchRules::joinHistory(itemsOf(cbReplaceText));
}

void TTextReplaceDialog::setReplaceTextHistory(const QString &history)
{
    setItems(cbReplaceText, TextSearchRules::splitHistory(history));
}

void TTextReplaceDialog::accept()
{
    promoteEntered(cbSearchText);
    promoteEntered(cbReplaceText);
    QDialog::accept();
}

void TTextReplaceDialog::restorePlacement()
{
    TTextSearchDialog::restorePlacement();
    const QString text = cbSearchText->currentText();
    restoreIndex(m_store, m_storePath, cbSearchText);
    cbSearchText->setEditText(text);
    restoreItems(m_store, m_storePath, cbReplaceText);
    restoreIndex(m_store, m_storePath, cbReplaceText);
    restoreText(m_store, m_storePath, cbReplaceText);
}

void TTextReplaceDialog::savePlacement()
{
    TTextSearchDialog::savePlacement();
    storeIndex(m_store, m_storePath, cbSearchText);
    storeItems(m_store, m_storePath, cbReplaceText);
    storeIndex(m_store, m_storePath, cbReplaceText);
    storeText(m_store, m_storePath, cbReplaceText);
}

// --- TConfirmReplaceDialog ---

TConfirmReplaceDialog::TConfirmReplaceDialog(QWidget *parent) : QDialog(parent)
{
    setObjectName(QStringLiteral("ConfirmReplaceDialog"));
    setWindowTitle(QStringLiteral("Confirm replace"));
    auto *outer = new QVBoxLayout(this);
    auto *row = new QHBoxLayout;
    Image1 = new QLabel(this);
    Image1->setObjectName(QStringLiteral("Image1"));
    Image1->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxQuestion).pixmap(32, 32));
    lblConfirmation = new QLabel(this);
    lblConfirmation->setObjectName(QStringLiteral("lblConfirmation"));
    lblConfirmation->setWordWrap(true);
    row->addWidget(Image1, 0, Qt::AlignTop);
    row->addWidget(lblConfirmation, 1);
    outer->addLayout(row);

    auto *buttons = new QHBoxLayout;
    const auto add = [&](const char *name, const QString &caption, int result) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(QString::fromLatin1(name));
        connect(b, &QPushButton::clicked, this, [this, result] { done(result); });
        buttons->addWidget(b);
        return b;
    };
    add("btnReplace", QStringLiteral("&Yes"), QDialog::Accepted)->setDefault(true);
    add("btnSkip", QStringLiteral("&No"), No);
    add("btnCancel", QStringLiteral("Cancel"), QDialog::Rejected);  // Esc rejects as well
    add("btnReplaceAll", QStringLiteral("Yes to &all"), YesToAll);
    outer->addLayout(buttons);
}

void TConfirmReplaceDialog::prepareShow(const QString &message)
{
    lblConfirmation->setText(message);
}
