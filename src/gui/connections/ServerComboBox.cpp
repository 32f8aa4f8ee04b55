#include "gui/connections/ServerComboBox.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QWheelEvent>

TServerComboBox::TServerComboBox(QWidget *parent)
    : QComboBox(parent)
{
    setEditable(true);
    // Enter must not add the typed text to the list.
    setInsertPolicy(QComboBox::NoInsert);
}

void TServerComboBox::setDropDown(bool on)
{
    if (on == m_dropDown)
        return;
    m_dropDown = on;
    if (!on)
        hidePopup();
    // Without the arrow the box draws as a plain edit box.
    // Without the arrow the box draws as a plain edit box. The frame has to be styled as well,
    // or the style keeps drawing the arrow.
    setStyleSheet(on ? QString()
                     : QStringLiteral("QComboBox { border: 1px solid palette(mid); border-radius: 2px;"
                                      " padding: 1px 3px; background: palette(base); }"
                                      "QComboBox::drop-down { width: 0px; border: none; }"
                                      "QComboBox::down-arrow { image: none; width: 0px; height: 0px; }"));
}

void TServerComboBox::replaceItems(const QStringList &items)
{
    const QString typed = currentText();
    const QSignalBlocker block(this);
    clear();
    addItems(items);
    setCurrentIndex(-1);
    setEditText(typed);
}

void TServerComboBox::showPopup()
{
    if (m_dropDown)
        QComboBox::showPopup();
}

void TServerComboBox::keyPressEvent(QKeyEvent *event)
{
    if (!m_dropDown) {
        // Keys that would step through or open the list do nothing in a plain edit box.
        switch (event->key()) {
        case Qt::Key_Up:
        case Qt::Key_Down:
        case Qt::Key_PageUp:
        case Qt::Key_PageDown:
        case Qt::Key_F4:
            event->ignore();
            return;
        default:
            break;
        }
    }
    QComboBox::keyPressEvent(event);
}

void TServerComboBox::wheelEvent(QWheelEvent *event)
{
    if (!m_dropDown) {
        event->ignore();
        return;
    }
    QComboBox::wheelEvent(event);
}
