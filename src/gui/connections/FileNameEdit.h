#pragma once
#include <QString>
#include <QWidget>

class QLineEdit;
class QToolButton;

// A file name box: a line edit with a "..." button that opens a file dialog.
//
// The filter is kept in the "description|patterns|description|patterns" form of the stored
// dialog definitions ("All files (*.*)|*.*"); qtFilter() gives the form QFileDialog takes.
class TFileNameEdit : public QWidget
{
    Q_OBJECT
public:
    explicit TFileNameEdit(QWidget *parent = nullptr);

    QString text() const;
    void setText(const QString &text);

    QString filter() const { return m_filter; }
    void setFilter(const QString &filter) { m_filter = filter; }
    QString qtFilter() const { return toQtFilter(m_filter); }
    static QString toQtFilter(const QString &filter);

    QLineEdit *lineEdit() const { return m_edit; }
    QToolButton *browseButton() const { return m_button; }

public slots:
    void browse();

private:
    QLineEdit *m_edit;
    QToolButton *m_button;
    QString m_filter;
};
