#pragma once
#include <QAbstractTableModel>

class ConnectionList;

// The connection grid's two columns over a tab's connection list: the type as a picture chosen by
// CONNECTION_TYPE, and CONNECTION_NAME.
class ConnectionGridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit ConnectionGridModel(ConnectionList *list, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    ConnectionList *m_list;
};
