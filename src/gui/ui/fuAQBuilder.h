#pragma once
#include "core/connections/vtrIL.h"
#include "core/querybuilder/MetadataLoader.h"
#include "core/querybuilder/QueryEngine.h"
#include "core/workspace/RunService.h"
#include "gui/ui/fuAQBOptionsFile.h"

#include <QDialog>

#include <functional>

class QComboBox;
class QLabel;
class QLineEdit;
class QTabWidget;
class QToolButton;
class QueryDiagram;
class ResultPanel;
class SqlParseError;
class TTextEditorFrame;
class TdmTools;

// The visual query builder ("SQL Query Builder"): the diagram over the query engine with the SQL
// text pane under it on the "Query" page, and a preview of the query's rows on the "Data" page.
// Text and diagram stay in step: every change of the diagram regenerates the text pane, and text
// typed into the pane is parsed into the diagram when the pane is left (or the preview opens).
//
// Nothing here waits on the database: the catalogue is read on a thread of its own, the diagram
// works offline until it arrives (and for good when the connection fails), and the preview runs
// through a run service of the window's, with the workspace's row limit and Cancel.
class TfmAQBuilder : public QDialog
{
    Q_OBJECT
public:
    struct Services
    {
        TdmTools *tools = nullptr;            // the shared theme, grid printing and export
        RunService::Options runOptions;       // the workspace's row limit for the preview
    };

    // Opens the builder modally on a connection and a text and returns the new text: the text
    // pane's whole text on OK, the given text unchanged otherwise.
    static QString Execute(const TReaderConnection &record, const QString &sql, const Services &services,
                           QWidget *parent = nullptr);

    // The window for a connection record, starting with the dialect an opener's code stands for.
    // Reading the record's catalogue starts at once.
    TfmAQBuilder(const TReaderConnection &record, int dialectCode, const Services &services,
                 QWidget *parent = nullptr);
    ~TfmAQBuilder() override;

    QueryEngine *engine() { return &m_engine; }
    QueryDiagram *diagram() const { return QueryBuilder; }
    TTextEditorFrame *sqlPane() const { return editSQL; }
    ResultPanel *dataPanel() const { return m_data; }
    RunService *previewService() const { return m_run; }
    MetadataLoader *metadataLoader() const { return m_loader; }
    bool isDataOpen() const { return m_dataOpen; }
    bool isQueryChanged() const { return m_queryChanged; }

    // Puts a text into the pane and gives it to the engine (the opening's fourth step).
    void setSqlText(const QString &text);
    QString sqlText() const;
    // Quote every identifier, in the diagram and in the generated text (Excel sources).
    void setQuoteAllIdentifiers(bool on);

    // The engine could not parse the pane's text: the message, then the caret at the place.
    void QueryBuilderSQLError(const SqlParseError &error);
    // The engine is about to leave sleep mode; true lets it replace the loaded text.
    bool QueryBuilderWakeQuery();

    // The question of QueryBuilderWakeQuery; tests answer it without a modal box.
    void setWakeQuestion(std::function<bool()> ask) { m_askWake = std::move(ask); }

signals:
    // The catalogue arrived and the diagram's metadata tree shows it (or reading it failed).
    void metadataReady(bool loaded);

public slots:
    void cbSyntaxProviderChange();
    void acSQLBuilderPlainTextSQLUpdated(const QString &text);
    void editSQLChange();
    void editSQLExit();
    void sbShowQueryTreeClick();
    void sbPropertiesClick();
    // The "Data" page: in fuAQBuilderData.cpp.
    void tsDataShow();
    void tbRefreshClick();
    void tbAddClick();
    void tbPostClick();
    void tbDeleteClick();
    void tbCloneClick();
    void tbFindClick();
    void tbPrintClick();
    void tbPreviewClick();
    void tbOWClick();
    void tbCancelPreviewClick();  // stops the preview's query or fetch

protected:
    void showEvent(QShowEvent *event) override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void buildQueryPage(QWidget *page);
    void buildDataPage(QWidget *page);
    void FormShow();
    void FormActivate();
    void applyDialectCode(int code);
    // The dialect list's version list for a dialect (the MySQL text is a line edit), or null.
    QWidget *versionControl(SqlDialect dialect) const;
    void showVersionControl(SqlDialect dialect);
    void metadataLoaded(const MetadataCatalog &catalog);
    void metadataFailed(const QString &message);
    // Gives the pane's text to the engine; false when it could not be parsed.
    bool giveTextToEngine();
    bool diagramHasFocus() const;
    // The preview: in fuAQBuilderData.cpp.
    void openPreview();
    void closePreview();
    void connectPreview();

    QueryEngine m_engine;
    LoadedCatalogProvider m_catalog;
    MetadataLoader *m_loader;
    TReaderConnection m_record;
    Services m_services;
    QueryBuilderSettings m_settings;   // what the options dialog applied last
    RunService *m_run;
    std::function<bool()> m_askWake;

    bool m_textModified = false;  // the pane changed since it was last given to the engine
    bool m_queryChanged = false;  // the text or the diagram changed
    bool m_dataOpen = false;      // a preview result is open
    int m_cancelledOutcomes = 0;  // outcomes still to come of previews the user stopped
    QString m_statusOverride;     // what the page shows for the next status of the run service
    bool m_changeGuard = false;   // cbSyntaxProviderChange runs
    bool m_settingPane = false;   // the window itself writes the pane: not the user's edit
    bool m_exiting = false;       // editSQLExit runs (its error box takes the focus again)
    bool m_shown = false;

    QTabWidget *PC;
    QWidget *tsQuery;
    QWidget *tsData;
    QWidget *panelBuilderTop;
    QComboBox *cbSyntaxProvider;
    QComboBox *cbMSVersion;
    QComboBox *cbOracleVersion;
    QComboBox *cbFirebirdVersion;
    QComboBox *cbInformixVersion;
    QComboBox *cbAccessVersion;
    QComboBox *cbSybaseVersion;
    QLineEdit *edMySQLVersion;
    QLabel *lbMetadata;           // how reading the catalogue goes
    QToolButton *sbShowQueryTree;
    QToolButton *sbProperties;
    QueryDiagram *QueryBuilder;
    QWidget *pnlBottom;
    TTextEditorFrame *editSQL;
    ResultPanel *m_data;
    QLabel *lbPreviewState;
};
