#pragma once
#include <QDialog>

class DBGridEh1;
class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;

// The grid's find dialog: searches cell texts from the current cell on, in one column (the one
// selected when the dialog opened) or in all of them. Modeless, so the grid stays usable.
class ResultFindDialog : public QDialog
{
    Q_OBJECT
public:
    explicit ResultFindDialog(DBGridEh1 *grid, QWidget *parent = nullptr);

    // Sets the column list from the grid and starts in the given column (-1: all columns).
    void prepare(int column);
    bool findNext();

private:
    DBGridEh1 *m_grid;
    QLineEdit *m_text;
    QComboBox *m_column;
    QCheckBox *m_matchCase;
    QCheckBox *m_wholeCell;
    QCheckBox *m_backwards;
    QLabel *m_status;
};
