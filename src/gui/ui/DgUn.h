#pragma once
#include <QDialog>
#include <functional>

class QPushButton;
class SettingsStore;

// The second common dialog base: content on Panel2, an OK/Cancel panel at the bottom, Esc
// cancels and Enter always confirms (it runs the OK handler when one is set, else closes with
// OK). The window is not resizable, opens centred the first time and where it was left on later
// openings: its position is kept in the settings under "DlgFrm\". It frees itself after closing.
class TDlgFrm : public QDialog
{
    Q_OBJECT
public:
    // placement may be null: the dialog then always opens centred.
    explicit TDlgFrm(SettingsStore *placement, QWidget *parent = nullptr);

    QWidget *Panel2() const { return m_content; }
    QPushButton *okButton() const { return OKBtn; }
    QPushButton *cancelButton() const { return CancelBtn; }

    // The OK button's click handler; the OK button closes with OK after it.
    void setOkHandler(std::function<void()> handler) { m_onOk = std::move(handler); }

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void done(int result) override;

private:
    QString placementKey(const char *what) const;

    SettingsStore *m_placement;
    QWidget *m_content;
    QPushButton *OKBtn;
    QPushButton *CancelBtn;
    std::function<void()> m_onOk;
};
