#pragma once
#include <QDialog>

class QCheckBox;
class QComboBox;
class QGridLayout;
class QLabel;
class QRadioButton;
class SettingsStore;

// The search dialog of every text editor of the program. Its placement store (the settings path
// "TextSearchDialog\") keeps the four options, the direction, the recent texts and the text
// between runs: read when the dialog is first shown, written when it closes.
class TTextSearchDialog : public QDialog
{
    Q_OBJECT
public:
    explicit TTextSearchDialog(QWidget *parent = nullptr);

    // Attaches the program's settings store; without one nothing is remembered.
    void setPlacementStore(SettingsStore *store) { m_store = store; }

    QString searchText() const;
    void setSearchText(const QString &text);
    // Recent texts, one per line (CR LF), newest first.
    QString searchTextHistory() const;
    void setSearchTextHistory(const QString &history);
    bool searchBackwards() const;
    bool searchCaseSensitive() const;
    bool searchWholeWords() const;
    void setSearchWholeWords(bool on);
    bool searchFromCursor() const;
    bool searchSelectedOnly() const;

    QComboBox *cbSearchText;
    QCheckBox *cbSearchCaseSensitive;
    QCheckBox *cbSearchWholeWords;
    QCheckBox *cbSearchFromCursor;
    QCheckBox *cbSearchSelectedOnly;
    QWidget *rgSearchDirection;
    QRadioButton *rbForward;
    QRadioButton *rbBackward;

public slots:
    // OK: the search text moves to the top of its recent texts before the dialog closes.
    void accept() override;

protected:
    TTextSearchDialog(QWidget *parent, const QString &caption, const QString &storePath);
    void showEvent(QShowEvent *event) override;
    void done(int result) override;
    virtual void restorePlacement();
    virtual void savePlacement();

    QGridLayout *m_fields;  // the label and drop-down rows above the options
    SettingsStore *m_store = nullptr;
    QString m_storePath;

private:
    void build(const QString &caption);
    bool m_restored = false;
};

// The replace dialog: the search dialog and a replacement text with its own recent texts. Its
// placement store ("TextReplaceDialog\") keeps in addition the replacement text, its items and
// selected entry, and the selected entry of the search text.
class TTextReplaceDialog : public TTextSearchDialog
{
    Q_OBJECT
public:
    explicit TTextReplaceDialog(QWidget *parent = nullptr);

    QString replaceText() const;
    void setReplaceText(const QString &text);
    QString replaceTextHistory() const;
    void setReplaceTextHistory(const QString &history);

    QComboBox *cbReplaceText;

public slots:
    void accept() override;

protected:
    void restorePlacement() override;
    void savePlacement() override;
};

// Asks whether to replace one occurrence. Part of the search facility's interface, though the
// program itself never shows it: replace-all replaces without asking.
class TConfirmReplaceDialog : public QDialog
{
    Q_OBJECT
public:
    // Results beside Accepted (Yes) and Rejected (Cancel).
    enum { No = 2, YesToAll = 3 };
    explicit TConfirmReplaceDialog(QWidget *parent = nullptr);
    void prepareShow(const QString &message);

    QLabel *lblConfirmation;
    QLabel *Image1;
};
