#include "core/app/MdmUn.h"
#include "core/base/SqlErrorText.h"

#include "core/app/CatalogueSchema.h"
#include "core/app/SampleDatabase.h"
#include "core/app/SqlExec.h"
#include "core/app/SqlHistory.h"
#include "core/app/StampColumns.h"
#include "core/base/OwnerOnly.h"
#include "core/base/VantryError.h"
#include "core/connections/ConnectionTypes.h"

#include <QAtomicInt>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlQuery>
#include <QSqlRecord>
#include <cerrno>
#include <climits>
#include <csignal>

namespace {

QAtomicInt g_connectionCounter;

// Where the columns of CONNECTIONS lie in a query's record, found once for all its rows.
struct ConnectionPositions
{
    explicit ConnectionPositions(const QSqlRecord &r)
        : id(r.indexOf(QStringLiteral("CONNECTION_ID"))), objectId(r.indexOf(QStringLiteral("OBJECT_ID"))),
          name(r.indexOf(QStringLiteral("CONNECTION_NAME"))),
          parameters(r.indexOf(QStringLiteral("CONNECTION_PARAMETERS"))),
          comments(r.indexOf(QStringLiteral("CONNECTION_COMMENTS"))), type(r.indexOf(QStringLiteral("CONNECTION_TYPE"))),
          stamps(StampColumns::positionsIn(r))
    {
    }
    int id, objectId, name, parameters, comments, type;
    StampColumns::Positions stamps;
};

ConnectionRow readConnection(const QSqlQuery &q, const ConnectionPositions &at)
{
    ConnectionRow row;
    row.connectionId = q.value(at.id).toLongLong();
    row.objectId = q.value(at.objectId);
    row.connectionName = q.value(at.name).toString();
    row.connectionParameters = q.value(at.parameters).toByteArray();
    row.connectionComments = q.value(at.comments).toByteArray();
    row.stamps = StampColumns::read(q, at.stamps);
    row.connectionType = q.value(at.type).toInt();
    return row;
}

// Removes the half-built catalogues ("<file>.<pid>.new") of processes that were killed while
// they built one; a build of a process still running is left alone.
void removeAbandonedBuilds(const QString &catalogueFile)
{
    const QFileInfo catalogue(catalogueFile);
    const QDir folder = catalogue.absoluteDir();
    const QString prefix = catalogue.fileName() + QLatin1Char('.');
    for (const QString &name : folder.entryList({prefix + QStringLiteral("*.new*")}, QDir::Files)) {
        bool isNumber = false;
        const pid_t pid = pid_t(name.mid(prefix.size()).section(QLatin1Char('.'), 0, 0).toLong(&isNumber));
        if (isNumber && pid > 0 && ::kill(pid, 0) != 0 && errno == ESRCH)
            QFile::remove(folder.filePath(name));
    }
}

} // namespace

TMdm::TMdm(const QString &catalogueFile)
    : m_fileName(catalogueFile),
      m_connectionName(QStringLiteral("vantry-catalogue-%1").arg(g_connectionCounter.fetchAndAddOrdered(1)))
{
    open();
    m_history = std::make_unique<SqlHistory>(m_db, [this] { return GetID(CatalogueSchema::kHistoryIdType); });
}

TMdm::~TMdm()
{
    m_history.reset();
    m_db.close();
    m_db = QSqlDatabase();
    QSqlDatabase::removeDatabase(m_connectionName);
}

void TMdm::open()
{
    if (QFileInfo::exists(m_fileName) && !QFileInfo(m_fileName).isFile())
        throw VantryError(QStringLiteral("The catalogue \"%1\" is not a file.").arg(m_fileName));

    m_db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_connectionName);
    removeAbandonedBuilds(m_fileName);
    if (!QFileInfo::exists(m_fileName))
        buildNewCatalogue();
    OwnerOnly::restrictFile(m_fileName);
    openFile(m_fileName);
    CatalogueSchema::validate(m_db, m_fileName);
}

void TMdm::openFile(const QString &file)
{
    m_db.close();
    m_db.setDatabaseName(file);
    // Another Vantry sharing the file may hold the write lock for a moment: wait for it.
    m_db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=30000"));
    if (!m_db.open())
        throw VantryError(QStringLiteral("Cannot open the catalogue \"%1\": %2").arg(file, sqlErrorText(m_db.lastError())));
}

void TMdm::buildNewCatalogue()
{
    // The new catalogue is made whole under a temporary name and then renamed into place, so a
    // program killed half-way never leaves a catalogue without its tables behind. Renaming never
    // replaces a file: when another process made the catalogue meanwhile, theirs is kept.
    const QString building = m_fileName + QStringLiteral(".%1.new").arg(QCoreApplication::applicationPid());
    QFile::remove(building);
    OwnerOnly::createFile(building);
    openFile(building);
    try {
        createNew();
    } catch (...) {
        m_db.close();
        QFile::remove(building);
        throw;
    }
    m_db.close();
    if (!QFile::rename(building, m_fileName)) {
        QFile::remove(building);
        if (!QFileInfo::exists(m_fileName))
            throw VantryError(QStringLiteral("Cannot create the catalogue \"%1\": the folder cannot be written.").arg(m_fileName));
    }
}

void TMdm::createNew()
{
    CatalogueSchema::create(m_db);
    // A first start shows something real: a small sample database and a connection to it.
    const QString sampleFile = QFileInfo(m_fileName).absolutePath() + QStringLiteral("/sample.sqlite");
    if (!QFileInfo::exists(sampleFile))
        SampleDatabase::create(sampleFile);
    ConnectionRow sample;
    sample.connectionName = SampleDatabase::connectionName();
    sample.connectionParameters = SampleDatabase::packedParameters(sampleFile);
    sample.connectionType = ConnectionTypes::codeOfType(dsSqLite);
    stampCreated(sample.stamps);
    stampChanged(sample.stamps);
    postConnection(sample);
}

int TMdm::GetID(int idType)
{
    qint64 id = 0;
    SqlExec::transaction(m_db, [&] {
        QSqlQuery update = SqlExec::run(m_db, QStringLiteral("update id_generator set ID = ID + 1 where ID_TYPE = ?"),
                                        {idType});
        if (update.numRowsAffected() != 1)
            throw VantryError(QStringLiteral("The catalogue has no id_generator row for id type %1.").arg(idType));
        QSqlQuery read = SqlExec::run(m_db, QStringLiteral("select ID from id_generator where ID_TYPE = ?"), {idType});
        read.next();
        bool ok = false;
        id = read.value(0).toString().toLongLong(&ok);
        if (!ok || id > INT_MAX || id < INT_MIN)
            throw VantryError(QStringLiteral("The id \"%1\" of id type %2 is not a valid 32-bit integer.")
                                  .arg(read.value(0).toString())
                                  .arg(idType));
    });
    return int(id);
}

QList<ConnectionRow> TMdm::connections()
{
    QList<ConnectionRow> rows;
    QSqlQuery q = SqlExec::run(m_db, QStringLiteral("select * from CONNECTIONS order by CONNECTION_ID"));
    const ConnectionPositions at(q.record());
    while (q.next())
        rows.append(readConnection(q, at));
    return rows;
}

std::optional<ConnectionRow> TMdm::connection(qint64 connectionId)
{
    QSqlQuery q = SqlExec::run(m_db, QStringLiteral("select * from CONNECTIONS where CONNECTION_ID = ?"), {connectionId});
    if (!q.next())
        return std::nullopt;
    return readConnection(q, ConnectionPositions(q.record()));
}

void TMdm::postConnection(ConnectionRow &row)
{
    const bool inserting = row.isNew();
    const qint64 id = inserting ? GetID(CatalogueSchema::kConnectionIdType) : row.connectionId;
    const QVariant params = row.connectionParameters.isNull() ? QVariant(QMetaType(QMetaType::QByteArray))
                                                              : QVariant(row.connectionParameters);
    const QVariant comments = row.connectionComments.isNull() ? QVariant(QMetaType(QMetaType::QByteArray))
                                                              : QVariant(row.connectionComments);
    const QVariant created = StampColumns::toColumn(row.stamps.created);
    const QVariant changed = StampColumns::toColumn(row.stamps.changed);
    if (inserting) {
        SqlExec::run(m_db,
                     QStringLiteral("insert into CONNECTIONS (CONNECTION_ID, OBJECT_ID, CONNECTION_NAME, "
                                    "CONNECTION_PARAMETERS, CONNECTION_COMMENTS, CREATED, CREATED_BY, CHANGED, "
                                    "CHANGED_BY, CONNECTION_TYPE) values (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"),
                     {id, row.objectId, row.connectionName, params, comments, created, row.stamps.createdBy, changed,
                      row.stamps.changedBy, row.connectionType});
    } else {
        QSqlQuery q = SqlExec::run(
            m_db,
            QStringLiteral("update CONNECTIONS set OBJECT_ID = ?, CONNECTION_NAME = ?, CONNECTION_PARAMETERS = ?, "
                           "CONNECTION_COMMENTS = ?, CREATED = ?, CREATED_BY = ?, CHANGED = ?, CHANGED_BY = ?, "
                           "CONNECTION_TYPE = ? where CONNECTION_ID = ?"),
            {row.objectId, row.connectionName, params, comments, created, row.stamps.createdBy, changed,
             row.stamps.changedBy, row.connectionType, id});
        if (q.numRowsAffected() != 1)
            throw VantryError(QStringLiteral("The connection \"%1\" (id %2) no longer exists in the catalogue.")
                                  .arg(row.connectionName)
                                  .arg(id));
    }
    row.connectionId = id;
}

void TMdm::deleteConnection(qint64 connectionId)
{
    SqlExec::run(m_db, QStringLiteral("delete from CONNECTIONS where CONNECTION_ID = ?"), {connectionId});
}
