#include "core/workspace/ResultFetcher.h"

namespace {

thread_local QString t_lastPath;

// Rows read per round trip when every row is wanted: large enough that the per-batch cost vanishes,
// small enough that a native client never holds much more than one batch.
constexpr qint64 WholeResultBatch = 20000;

} // namespace

QString ResultFetcher::lastPath()
{
    return t_lastPath;
}

std::unique_ptr<ResultTable> ResultFetcher::fetch(const QSqlDatabase &db, const QString &statement,
                                                  qint64 recordLimit, Path path)
{
    std::unique_ptr<ResultCursor> cursor = ResultCursor::open(db, statement, path);
    t_lastPath = cursor->path();
    std::unique_ptr<ResultTable> table = cursor->emptyTable();
    bool more = true;
    if (recordLimit > 0) {
        more = cursor->fetch(*table, recordLimit);
        // One row more tells whether the limit cut the result short.
        if (more) {
            std::unique_ptr<ResultTable> probe = cursor->emptyTable();
            cursor->fetch(*probe, 1);
            more = probe->columnCount() > 0 && probe->column(0).rowCount() > 0;
        }
    } else {
        while (more)
            more = cursor->fetch(*table, WholeResultBatch);
    }
    cursor->close();
    table->finishFetch(recordLimit > 0 && more);
    return table;
}
