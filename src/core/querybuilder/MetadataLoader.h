#pragma once
// Reads a database's catalogue for the query builder without blocking the window. The provider is
// made, connected and asked for its catalogue on a thread of its own (Qt SQL connections belong to
// the thread that opened them) and dropped there again, connection and all; the window gets the
// catalogue, or the reason it could not be read, by a signal.
//
//   auto *loader = new MetadataLoader(window);
//   connect(loader, &MetadataLoader::loaded, window, [](const MetadataCatalog &c) { ... });
//   loader->load(record);

#include "core/connections/vtrIL.h"
#include "core/querybuilder/MetadataProvider.h"

#include <QObject>
#include <QPointer>
#include <QThread>

#include <functional>
#include <memory>

class MetadataLoader : public QObject
{
    Q_OBJECT
public:
    using ProviderFactory = std::function<std::unique_ptr<MetadataProvider>()>;

    explicit MetadataLoader(QObject *parent = nullptr);
    // Waits a moment for a load under way; one stuck in a connect is left to end on its own and
    // its result is dropped.
    ~MetadataLoader() override;

    // The provider of a connection record: the universal path for MySQL, PostgreSQL, InterBase,
    // SQLite and SQL Server Compact (which refuses with its own message), an Oracle session for
    // Oracle, and the ADO path for every other type.
    static std::unique_ptr<MetadataProvider> providerFor(const TReaderConnection &record);

    // Starts reading the record's catalogue; a load started before is superseded.
    void load(const TReaderConnection &record);
    // The same with a provider of the caller's making, built on the loading thread.
    void load(ProviderFactory makeProvider);
    bool isLoading() const { return m_loading; }

signals:
    void loaded(const MetadataCatalog &catalog);
    // Connecting or reading failed; the text names the cause.
    void failed(const QString &message);

private:
    void finish(quint64 generation, const MetadataCatalog &catalog, const QString &error, bool ok);

    QPointer<QThread> m_thread;
    quint64 m_generation = 0;
    bool m_loading = false;
};

// What the engine holds once the catalogue is read elsewhere: it reports itself connected and
// hands out that catalogue, so the engine's checks against the catalogue work while no connection
// of the window's thread exists.
class LoadedCatalogProvider : public MetadataProvider
{
public:
    void setCatalog(const MetadataCatalog &catalog);
    void connect() override {}
    bool isConnected() const override { return m_loaded; }
    MetadataCatalog loadCatalog() override { return m_catalog; }
    // Previews run through the workspace's run service, never on this provider.
    QSqlQuery prepareDataset(const QString &sql) override;

private:
    MetadataCatalog m_catalog;
    bool m_loaded = false;
};
