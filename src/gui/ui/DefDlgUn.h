#pragma once
#include <QDialog>

class QFrame;
class QPushButton;
class QStackedWidget;
class QWidget;

// The common OK/Cancel dialog. Descendants put their content on the page TabSheet1.
//
// The OK button works like a button with a modal result: pressing it sets the result to OK, runs
// OKBtnClick, and closes the dialog unless OKBtnClick cleared the result (validation does so to
// keep the dialog open). Enter runs OKBtnClick only, so the dialog closes on Enter only where a
// descendant's OKBtnClick sets the result itself. However the dialog closes, a cancel that did not
// come from a button runs CancelBtnClick once first. The dialog frees itself after closing: read
// its results before returning to the event loop.
class TDefDlgFrm : public QDialog
{
    Q_OBJECT
public:
    explicit TDefDlgFrm(QWidget *parent = nullptr);

    QWidget *TabSheet1() const { return m_page; }
    QPushButton *okButton() const { return OKBtn; }
    QPushButton *cancelButton() const { return CancelBtn; }
    QWidget *buttonPanel() const { return Panel1; }
    // The left part of the bottom panel, for a descendant's own buttons.
    QWidget *leftButtonArea() const { return m_leftArea; }

    // The pending modal result: QDialog::Accepted, QDialog::Rejected or -1 for none.
    int pendingResult() const { return m_pendingResult; }
    void setPendingResult(int result) { m_pendingResult = result; }
    bool closedByButton() const { return m_closedByButton; }

    // Whether the dialog deletes itself after closing (on by default; tests on the stack turn it off).
    void setFreeOnClose(bool on);

public slots:
    virtual void OKBtnClick();
    virtual void CancelBtnClick();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void done(int result) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void FormClose();

    QWidget *Panel1;
    QWidget *m_leftArea;
    QPushButton *OKBtn;
    QPushButton *CancelBtn;
    QWidget *m_page;
    int m_pendingResult = -1;
    bool m_closedByButton = false;
    bool m_closing = false;
};
