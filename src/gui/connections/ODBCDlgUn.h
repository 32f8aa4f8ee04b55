#pragma once
// The ODBC connection builder: the installed ODBC drivers, and a connection string completed for
// the one chosen.

#include "gui/ui/DefDlgUn.h"

class QLabel;
class QListWidget;
class QPlainTextEdit;

class TODBCDlgFrm : public TDefDlgFrm
{
    Q_OBJECT
public:
    explicit TODBCDlgFrm(QWidget *parent = nullptr);

    // Shows the builder on `current` and returns the memo's text after OK, `current` after Cancel.
    static QString Execute(const QString &current, QWidget *parent = nullptr);

    QListWidget *DriversLb;
    QPlainTextEdit *ConnectionMemo;
    QLabel *ErrorLbl; // why the driver list is empty, when it is

public slots:
    void FormShow();
    void DriversLbChange();

protected:
    void showEvent(QShowEvent *event) override;

private:
    bool m_listed = false;
    bool m_building = false;
};
