#pragma once
// Links two columns without the mouse: pick an object and a column on each side. The diagram
// opens it with Ctrl+L or from a box's menu, starting at the box's current column.

#include <QDialog>
#include <QPair>

class QComboBox;

class QueryLinkDialog : public QDialog
{
    Q_OBJECT
public:
    using Objects = QVector<QPair<QString, QStringList>>; // reference name, columns

    QueryLinkDialog(const Objects &objects, const QString &owner, const QString &column, QWidget *parent = nullptr);

    QString leftOwner() const;
    QString leftColumn() const;
    QString rightOwner() const;
    QString rightColumn() const;
    // Chooses the other side; false when there is no such object or column.
    bool setRight(const QString &owner, const QString &column);

private:
    void fillColumns(QComboBox *objects, QComboBox *columns);
    void updateOk();

    Objects m_objects;
    QComboBox *m_leftObject, *m_leftColumn, *m_rightObject, *m_rightColumn;
    QPushButton *m_ok = nullptr;
};
