#pragma once
#include "core/app/CatalogueRows.h"

#include <QList>
#include <QSqlDatabase>
#include <QString>
#include <memory>
#include <optional>

class SqlHistory;

// The connection catalogue: stored connections and the history of executed statements, in one
// SQLite file in the data folder. One instance lives for the whole run; every tab shares it.
// Every write keeps the catalogue's rules: new connection rows get an id from sequence 1 on their
// first post, history rows get theirs from sequence 10 and are stamped on creation and on post.
class TMdm
{
public:
    // Opens the catalogue, creating it (with a sample database and connection) when the file is
    // missing. A file that is not a catalogue raises a VantryError and is left untouched.
    explicit TMdm(const QString &catalogueFile);
    ~TMdm();

    TMdm(const TMdm &) = delete;
    TMdm &operator=(const TMdm &) = delete;

    QString fileName() const { return m_fileName; }

    // The next id of one sequence (1 = connections, 10 = history): one serialised transaction, so
    // processes sharing the file never receive the same id.
    int GetID(int idType);

    // adsConnections
    QList<ConnectionRow> connections();
    std::optional<ConnectionRow> connection(qint64 connectionId);
    // Writes the row: a new row first receives its CONNECTION_ID. Stamps are the caller's (the
    // workspace's in-memory copy stamps them); the catalogue only assigns the key.
    void postConnection(ConnectionRow &row);
    void deleteConnection(qint64 connectionId);

    // adsSqlBuffer
    SqlHistory &history() { return *m_history; }

    // The catalogue's own database connection, for code that reads it directly (tests, tools).
    QSqlDatabase database() const { return m_db; }

private:
    void open();
    void openFile(const QString &file);
    void buildNewCatalogue();
    void createNew();

    QString m_fileName;
    QString m_connectionName;
    QSqlDatabase m_db;
    std::unique_ptr<SqlHistory> m_history;
};
