// The result panel's side of the import wizard: it opens the wizard on the shown result and
// appends the wizard's rows, each written back through the run service as it arrives.

#include "gui/workspace/ResultPanel.h"

#include "core/base/VantryError.h"
#include "core/workspace/ResultWriteBack.h"
#include "gui/components/DBGridEh1.h"
#include "gui/interchange/DatasetImportWizardUn.h"

#include <optional>

void ResultPanel::tbImportClick()
{
    if (!m_query.isOpen() || m_query.isReadOnly() || !m_run || refuseWhileSorting())
        return;
    // Edits not yet written go first, so the import's rows are the only ones it writes.
    resolvePendingEdits([this] {
        if (m_query.isOpen())
            TDatasetImportWizardFrm::Execute(this, this);
    });
}

QVector<int> ResultPanel::visibleFields() const
{
    QVector<int> fields;
    if (!m_query.isOpen())
        return fields;
    for (int col = 0; col < m_query.table()->columnCount(); ++col)
        if (!m_grid->isColumnHidden(col))
            fields << col;
    return fields;
}

void ResultPanel::appendRow(const Fill &fill, std::function<void(const QString &error)> done)
{
    if (!m_query.isOpen() || m_query.isReadOnly() || !m_run) {
        done(m_query.isOpen() ? QStringLiteral("The result is read-only: %1").arg(m_query.readOnlyReason())
                              : QStringLiteral("No result is open"));
        return;
    }
    if (m_posting) {
        done(QStringLiteral("Rows are still being written; try again in a moment"));
        return;
    }
    stopFetchingForEdit();
    ResultTable *table = m_query.table();
    qint64 row = -1;
    std::optional<RowChange> change;
    try {
        row = table->insertRow();
        fill(*table, row);
        change = ResultWriteBack::snapshotPost(*table, row, m_query.source().table);
    } catch (const VantryError &error) {
        if (row >= 0)
            table->revertRow(row);
        m_grid->refreshRows();
        done(error.message());
        return;
    }
    m_grid->refreshRows();
    std::vector<RowChange> changes;
    if (change)
        changes.push_back(std::move(*change));
    std::shared_ptr<ResultTable> shared = m_query.sharedTable();
    writeChangesFor(std::move(changes), [this, shared, row, done = std::move(done)](const QString &error) {
        // A row the database refused leaves the grid again: the grid shows what the table holds,
        // and the wizard's status column keeps the reason beside the sheet row.
        if (!error.isEmpty() && shared == m_query.sharedTable()) {
            shared->revertRow(row);
            m_grid->refreshRows();
        }
        done(error);
    });
}
