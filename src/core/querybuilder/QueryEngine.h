#pragma once
// The query builder's engine without its window: it holds one query as a model and as SQL text
// of one dialect, keeps them in step, and knows the database's catalogue when a metadata provider
// is attached.
//
//   QueryEngine engine;
//   engine.setDialectCode(30);                 // PostgreSQL
//   engine.setSql("select a from t");          // parses; throws SqlParseError with line/column
//   Query q = engine.query(); ...edit q...
//   engine.setQuery(q);                        // regenerates; sqlUpdated(text) tells the view
//
// Sleep mode: text that is not a SELECT (INSERT, UPDATE, DDL, EXEC...) is kept as it is and the
// engine sleeps: sql() returns that text and query() is empty. A query built while sleeping wakes
// the engine only when the wake handler agrees ("Replace Loaded SQL by the new SELECT query?");
// refused, the loaded text stays.

#include "core/querybuilder/MetadataProvider.h"
#include "core/querybuilder/QueryModel.h"
#include "core/querybuilder/SqlFormat.h"

#include <QObject>

#include <functional>

class QueryEngine : public QObject
{
    Q_OBJECT
public:
    explicit QueryEngine(QObject *parent = nullptr);

    // ---- dialect ----
    void setDialect(const DialectChoice &dialect);
    // The dialect and server version an opener's code stands for (SqlDialects::fromCode).
    void setDialectCode(int code);
    DialectChoice dialect() const { return m_dialect; }

    // ---- text and model ----
    // Parses the text into the model and regenerates the text. A non-SELECT statement puts the
    // engine to sleep (or, when sleep mode is not allowed, is refused with SqlParseError). On a
    // parse error the model and text stay as they were.
    void setSql(const QString &text);
    // The generated text, or the loaded text while sleeping.
    QString sql() const { return m_sql; }
    bool isSleeping() const { return m_sleeping; }
    const Query &query() const { return m_query; }
    // Takes a model built or edited by the window. While sleeping the wake handler is asked first;
    // returns false (and changes nothing) when it refuses.
    bool setQuery(const Query &query);
    void setWakeQueryHandler(std::function<bool()> handler) { m_wakeHandler = std::move(handler); }

    // ---- options ----
    void setAllowSleepMode(bool allow) { m_allowSleep = allow; }
    bool allowSleepMode() const { return m_allowSleep; }
    // With a catalogue loaded, refuse text that names a table the catalogue does not have.
    void setParsingErrorOnUnknownObjects(bool on) { m_errorOnUnknown = on; }
    bool parsingErrorOnUnknownObjects() const { return m_errorOnUnknown; }
    void setGeneratorOptions(const GeneratorOptions &options);
    const GeneratorOptions &generatorOptions() const { return m_options; }
    void setQuoteAllIdentifiers(bool on);
    bool quoteAllIdentifiers() const { return m_options.quoteAllIdentifiers; }

    // ---- metadata ----
    // The provider stays the caller's. Null means none: the engine works offline.
    void setMetadataProvider(MetadataProvider *provider) { m_provider = provider; }
    MetadataProvider *metadataProvider() const { return m_provider; }
    void setOffline(bool offline) { m_offline = offline; }
    // Offline when asked to be, or when there is no connected provider.
    bool isOffline() const { return m_offline || !m_provider || !m_provider->isConnected(); }
    // Reloads the catalogue from the provider (nothing while offline); blocks on the database.
    void refreshMetadata();
    // A catalogue loaded elsewhere (on a worker thread), or an empty one.
    void setMetadata(const MetadataCatalog &catalog) { m_catalog = catalog; }
    const MetadataCatalog &metadata() const { return m_catalog; }
    // Links that foreign keys suggest between tables of the query's first part that are not
    // linked yet: inner joins with the key's column equalities as their condition.
    QVector<Link> suggestedLinks() const;

signals:
    // The text changed: a new model was generated, or new text was loaded.
    void sqlUpdated(const QString &text);

private:
    void regenerate();
    void checkKnownObjects(const QString &text) const;

    DialectChoice m_dialect;
    GeneratorOptions m_options;
    Query m_query;
    QString m_sql;
    bool m_sleeping = false;
    bool m_allowSleep = true;
    bool m_errorOnUnknown = false;
    bool m_offline = false;
    MetadataProvider *m_provider = nullptr;
    MetadataCatalog m_catalog;
    std::function<bool()> m_wakeHandler;
};
