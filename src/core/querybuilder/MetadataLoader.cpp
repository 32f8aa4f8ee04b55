#include "core/querybuilder/MetadataLoader.h"

#include "core/connections/AdoSession.h"
#include "core/connections/OracleSession.h"
#include "core/connections/UniversalSession.h"
#include "core/querybuilder/SessionMetadataProvider.h"

#include <QCoreApplication>
#include <QThread>

namespace {

// How long closing the window waits for a load under way before leaving it to end alone.
constexpr unsigned long LoadExitWaitMs = 3000;

} // namespace

MetadataLoader::MetadataLoader(QObject *parent) : QObject(parent) {}

MetadataLoader::~MetadataLoader()
{
    if (m_thread && m_thread->isRunning())
        m_thread->wait(LoadExitWaitMs);
}

std::unique_ptr<MetadataProvider> MetadataLoader::providerFor(const TReaderConnection &record)
{
    std::unique_ptr<DatabaseSession> session;
    switch (record.ConnectionType) {
    case dsMySql: case dsPostgreSQL: case dsInterbase: case dsSqLite: case dsSqlServerCE:
        session = std::make_unique<UniversalSession>();
        break;
    case dsOracle:
        session = std::make_unique<OracleSession>();
        break;
    default:
        session = std::make_unique<AdoSession>();
        break;
    }
    return std::make_unique<SessionMetadataProvider>(std::move(session), record);
}

void MetadataLoader::load(const TReaderConnection &record)
{
    load([record] { return providerFor(record); });
}

void MetadataLoader::load(ProviderFactory makeProvider)
{
    const quint64 generation = ++m_generation;
    m_loading = true;
    QPointer<MetadataLoader> self(this);
    QThread *thread = QThread::create([self, generation, makeProvider = std::move(makeProvider)] {
        MetadataCatalog catalog;
        QString error;
        bool ok = false;
        try {
            std::unique_ptr<MetadataProvider> provider = makeProvider();
            provider->connect();
            catalog = provider->loadCatalog();
            ok = true;
        } catch (const VantryError &e) {
            error = e.message();
        } catch (const std::exception &e) {
            error = QString::fromLocal8Bit(e.what());
        }
        // The provider and its connection are gone; the result goes to the loader's thread.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [self, generation, catalog, error, ok] {
                if (self)
                    self->finish(generation, catalog, error, ok);
            },
            Qt::QueuedConnection);
    });
    thread->setObjectName(QStringLiteral("vantry-metadata"));
    QObject::connect(thread, &QThread::finished, thread, &QObject::deleteLater);
    m_thread = thread;
    thread->start();
}

void MetadataLoader::finish(quint64 generation, const MetadataCatalog &catalog, const QString &error, bool ok)
{
    if (generation != m_generation)
        return; // a later load superseded this one
    m_loading = false;
    if (ok)
        emit loaded(catalog);
    else
        emit failed(error);
}

void LoadedCatalogProvider::setCatalog(const MetadataCatalog &catalog)
{
    m_catalog = catalog;
    m_loaded = true;
}

QSqlQuery LoadedCatalogProvider::prepareDataset(const QString &)
{
    throw VantryError(QStringLiteral("The catalogue was read elsewhere: this provider has no connection to run on."));
}
