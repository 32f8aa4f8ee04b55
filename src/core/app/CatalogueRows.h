#pragma once
#include "core/app/RowStamps.h"

#include <QByteArray>
#include <QString>
#include <QVariant>

// One row of CONNECTIONS. CONNECTION_ID is 0 until the row is posted for the first time.
struct ConnectionRow
{
    qint64 connectionId = 0;
    QVariant objectId;                // carried along, never set by the catalogue
    QString connectionName;
    QByteArray connectionParameters;  // the packed parameter text
    QByteArray connectionComments;
    RowStamps stamps;
    int connectionType = 0;

    bool isNew() const { return connectionId == 0; }
};

// One row of SQL_EXECUTION_HISTORY.
struct HistoryRow
{
    qint64 id = 0;
    QString executedSql;
    RowStamps stamps;
};
