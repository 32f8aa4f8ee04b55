#pragma once
#include <QAbstractListModel>

class SqlHistory;

// The history's statements as an editable list: editing a row stores the new text in the catalogue.
class HistoryListModel : public QAbstractListModel
{
    Q_OBJECT
public:
    explicit HistoryListModel(SqlHistory &history, QObject *parent = nullptr);

    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    SqlHistory &m_history;
};
