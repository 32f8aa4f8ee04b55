#pragma once
#include "core/interchange/ExportSource.h"

#include <QAbstractItemModel>
#include <QPointer>

// The display texts of an item model's rows and column titles, for printing small grids (the
// execution log) that keep their rows in a model rather than in a result table.
class ModelExportSource : public ExportSource
{
public:
    explicit ModelExportSource(const QAbstractItemModel *model) : m_model(model) {}

    int columnCount() const override { return m_model->columnCount(); }
    QString columnName(int col) const override { return m_model->headerData(col, Qt::Horizontal).toString(); }
    qint64 rowCount() const override { return m_model->rowCount(); }
    bool isNull(qint64 row, int col) const override { return !cell(row, col).isValid(); }
    std::string_view text(qint64 row, int col, std::string &scratch) const override
    {
        scratch = cell(row, col).toString().toStdString();
        return scratch;
    }
    QVariant value(qint64 row, int col) const override { return cell(row, col); }

private:
    QVariant cell(qint64 row, int col) const { return m_model->index(int(row), col).data(Qt::DisplayRole); }

    const QAbstractItemModel *m_model;
};
