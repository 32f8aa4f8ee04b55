#pragma once
#include <QDialog>

class QPushButton;
class QTabWidget;
class QWidget;
class SettingsStore;

// The common OK/Cancel dialog. Descendants put their content on the page TabSheet1 of the page
// control pc, whose tabs are hidden. The border is fixed unless a descendant makes it sizeable;
// with a settings store the dialog's placement is kept under its placement path.
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

    QTabWidget *pageControl() const { return pc; }
    QWidget *TabSheet1() const { return m_page; }
    QPushButton *okButton() const { return OKBtn; }
    QPushButton *cancelButton() const { return CancelBtn; }
    QWidget *buttonPanel() const { return Panel1; }
    QWidget *imageSquare() const { return JvImageSquare1; }
    // The left part of the bottom panel, for a descendant's own buttons.
    QWidget *leftButtonArea() const { return m_leftArea; }

    // The pending modal result: QDialog::Accepted, QDialog::Rejected or -1 for none.
    int pendingResult() const { return m_pendingResult; }
    void setPendingResult(int result) { m_pendingResult = result; }
    bool closedByButton() const { return m_closedByButton; }

    // Whether the dialog deletes itself after closing (on by default; tests on the stack turn it off).
    void setFreeOnClose(bool on);
    // A fixed border by default; a sizeable dialog keeps its size grip.
    void setSizeable(bool on);
    bool isSizeable() const { return m_sizeable; }
    // Where the placement is kept: "DefDlgFrm\\" unless a descendant names its own path.
    QString placementPath() const { return m_placementPath; }
    void setPlacementPath(const QString &path) { m_placementPath = path; }
    void setPlacementStore(SettingsStore *store) { m_store = store; }

public slots:
    virtual void OKBtnClick();
    virtual void CancelBtnClick();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void done(int result) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void FormClose();
    void restorePlacement();
    void savePlacement();

    QWidget *Panel1;
    QWidget *m_leftArea;
    QPushButton *OKBtn;
    QPushButton *CancelBtn;
    QTabWidget *pc;
    QWidget *m_page;
    QPushButton *ButtonCancel1; // off the visible area: Esc clicks it
    QWidget *Panel6;
    QWidget *JvImageSquare1;
    SettingsStore *m_store = nullptr;
    QString m_placementPath;
    bool m_sizeable = false;
    bool m_placed = false;
    int m_pendingResult = -1;
    bool m_closedByButton = false;
    bool m_closing = false;
};
