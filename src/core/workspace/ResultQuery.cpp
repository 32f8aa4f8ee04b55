#include "core/workspace/ResultQuery.h"

#include "core/workspace/ResultFetcher.h"
#include "core/workspace/ResultNullability.h"
#include "core/workspace/ResultWriteBack.h"
#include "core/base/VantryError.h"

#include <QSqlDriver>
#include <QSqlField>
#include <QSqlRecord>

void ResultQuery::adopt(std::shared_ptr<ResultTable> table, const ResultSource &source, bool moreRemain)
{
    close();
    m_table = std::move(table);
    m_source = source;
    m_moreRemain = moreRemain;
    m_table->setReadOnly(isReadOnly());
}

void ResultQuery::appendBatch(ResultTable &&batch, bool moreRemain)
{
    if (!m_table)
        return;
    m_table->appendBatch(std::move(batch), moreRemain);
    m_moreRemain = moreRemain;
}

void ResultQuery::open(const QSqlDatabase &db, const QString &statement, qint64 recordLimit)
{
    close();
    m_table = ResultFetcher::fetch(db, statement, recordLimit);
    m_moreRemain = false;
    m_db = db;
    m_statement = statement;
    m_limit = recordLimit;
    m_source = ResultSource::analyse(statement);
    if (m_source.writable && m_table->columnCount() == 0) {
        m_source.writable = false;
        m_source.reason = QStringLiteral("The result has no columns");
    }
    if (m_source.writable)
        ResultNullability::read(m_db, m_source.table, *m_table);
    m_table->setReadOnly(isReadOnly());
}

void ResultQuery::refresh()
{
    if (m_statement.isEmpty())
        throw VantryError(QStringLiteral("No query has been run yet"));
    const QSqlDatabase db = m_db;
    const QString statement = m_statement;
    open(db, statement, m_limit);
}

void ResultQuery::close()
{
    m_table.reset();
    m_moreRemain = false;
}

void ResultQuery::setReadOnly(bool readOnly)
{
    m_userReadOnly = readOnly;
    if (m_table)
        m_table->setReadOnly(isReadOnly());
}

bool ResultQuery::isReadOnly() const
{
    return m_userReadOnly || !m_source.writable;
}

QString ResultQuery::readOnlyReason() const
{
    if (!m_source.writable)
        return m_source.reason;
    return m_userReadOnly ? QStringLiteral("Read-only mode is on") : QString();
}

void ResultQuery::requireWritable() const
{
    if (!m_table)
        throw VantryError(QStringLiteral("No result is open"));
    if (isReadOnly())
        throw VantryError(QStringLiteral("The result is read-only: %1").arg(readOnlyReason()));
}

void ResultQuery::post(qint64 row)
{
    requireWritable();
    ResultWriteBack(m_db, m_source.table).postRow(*m_table, row);
}

void ResultQuery::postPending()
{
    requireWritable();
    ResultWriteBack writer(m_db, m_source.table);
    for (qint64 row : m_table->pendingRows())
        writer.postRow(*m_table, row);
}

void ResultQuery::remove(qint64 row)
{
    requireWritable();
    ResultWriteBack(m_db, m_source.table).deleteRow(*m_table, row);
}
