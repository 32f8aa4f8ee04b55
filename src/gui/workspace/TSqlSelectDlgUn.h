#pragma once
#include "gui/ui/DefDlgUn.h"

class QListView;
class SqlHistory;

// The history picker: every stored statement, oldest first, as a list of text boxes. Typing into
// a box edits the stored statement; a double click chooses it; "Clear Log" deletes the whole
// history at once. The chosen statement is the history's current row when the picker returns OK.
class TSqlSelectFrm : public TDefDlgFrm
{
    Q_OBJECT
public:
    TSqlSelectFrm(SqlHistory &history, QWidget *parent = nullptr);

    QListView *list() const { return DBCtrlGrid1; }

public slots:
    void ClearLogBtnClick();
    void DBMemo1DblClick(const QModelIndex &index);

private:
    SqlHistory &m_history;
    QListView *DBCtrlGrid1;
};
