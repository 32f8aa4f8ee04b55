#pragma once
#include <QString>
#include <QStringList>

// Which table a result can be written back to. Found by a small parse of the SELECT: only
// "SELECT * | plain columns FROM one table [alias] [WHERE/ORDER BY/LIMIT ...]" is writable, since
// only then does each result column stand for one column of one table row.
struct ResultSource
{
    bool writable = false;
    QString reason;     // why not, for the user
    QString table;      // as written in the statement, quotes and schema included
    QStringList fields; // the selected names as written ("*" for all), informational

    static ResultSource analyse(const QString &statement);
};
