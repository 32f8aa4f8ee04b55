#pragma once
#include <QComboBox>

// The server box: an editable combo box whose drop-down list can be switched off, so that it
// becomes a plain edit box (host names of MySQL and PostgreSQL) while keeping its items.
class TServerComboBox : public QComboBox
{
    Q_OBJECT
public:
    explicit TServerComboBox(QWidget *parent = nullptr);

    bool hasDropDown() const { return m_dropDown; }
    void setDropDown(bool on);

    // Replaces the items and keeps the text typed in the box.
    void replaceItems(const QStringList &items);

    void showPopup() override;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;

private:
    bool m_dropDown = true;
};
