#include "gui/ui/fuAQBuilder.h"

#include "core/querybuilder/QueryBuilderSource.h"
#include "core/querybuilder/SqlLexer.h"
#include "gui/app/UserMessages.h"
#include "gui/components/QueryDiagram.h"
#include "gui/ui/TextEditorFrameUn.h"
#include "gui/ui/fuAQBOptions.h"
#include "gui/workspace/ResultPanel.h"

#include <Qsci/qsciscintilla.h>

#include <QApplication>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFocusEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSplitter>
#include <QStyle>
#include <QTabWidget>
#include <QToolButton>
#include <QVBoxLayout>

TfmAQBuilder::TfmAQBuilder(const TReaderConnection &record, int dialectCode, const Services &services,
                           QWidget *parent)
    : QDialog(parent), m_loader(new MetadataLoader(this)), m_record(record), m_services(services),
      m_run(new RunService(this))
{
    setObjectName(QStringLiteral("fmAQBuilder"));
    setWindowTitle(QStringLiteral("SQL Query Builder"));
    setSizeGripEnabled(true);
    resize(1100, 760);
    m_askWake = [this] {
        return QMessageBox::question(this, QStringLiteral("Confirm"),
                                     QStringLiteral("Replace Loaded SQL by the new SELECT query?"),
                                     QMessageBox::Yes | QMessageBox::No)
               == QMessageBox::Yes;
    };

    PC = new QTabWidget(this);
    PC->setObjectName(QStringLiteral("PC"));
    tsQuery = new QWidget;
    tsQuery->setObjectName(QStringLiteral("tsQuery"));
    tsData = new QWidget;
    tsData->setObjectName(QStringLiteral("tsData"));
    PC->addTab(tsQuery, QStringLiteral("Query"));
    PC->addTab(tsData, QStringLiteral("Data"));
    buildQueryPage(tsQuery);
    buildDataPage(tsData);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    buttons->setObjectName(QStringLiteral("Panel1"));
    buttons->button(QDialogButtonBox::Ok)->setObjectName(QStringLiteral("OKBtn"));
    buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("CancelBtn"));
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(6, 6, 6, 6);
    layout->addWidget(PC, 1);
    layout->addWidget(buttons);

    // Creation, in order: no preview, both flags clear, the pane hooked, the dialect list filled
    // with its first item chosen, the options file applied, the catalogue asked for, the opener's
    // dialect applied.
    closePreview();
    m_textModified = m_queryChanged = false;
    QsciScintilla *editor = editSQL->editor();
    connect(editor, &QsciScintilla::textChanged, this, &TfmAQBuilder::editSQLChange);
    editor->installEventFilter(this);
    editor->viewport()->installEventFilter(this);
    connect(&m_engine, &QueryEngine::sqlUpdated, this, &TfmAQBuilder::acSQLBuilderPlainTextSQLUpdated);
    m_engine.setWakeQueryHandler([this] { return QueryBuilderWakeQuery(); });

    {
        // The options dialog reads "options.ini" when created; applying it is all it is made for.
        TfmAQBOptions options(QueryBuilder, &m_engine);
        options.setFreeOnClose(false);
        m_settings = options.settings();
        options.SaveSettingsToObject();
    }

    // Until the catalogue arrives the engine works offline; a connection that fails keeps it so.
    m_engine.setOffline(true);
    connect(m_loader, &MetadataLoader::loaded, this, &TfmAQBuilder::metadataLoaded);
    connect(m_loader, &MetadataLoader::failed, this, &TfmAQBuilder::metadataFailed);
    if (m_record.ConnectionType != dsNone) {
        lbMetadata->setText(QStringLiteral("Reading tables..."));
        m_loader->load(m_record);
    }
    applyDialectCode(dialectCode);
    connectPreview();
}

TfmAQBuilder::~TfmAQBuilder()
{
    // The diagram follows the engine, which dies first as a member: let go of the diagram now.
    delete QueryBuilder;
    QueryBuilder = nullptr;
}

void TfmAQBuilder::buildQueryPage(QWidget *page)
{
    panelBuilderTop = new QWidget(page);
    panelBuilderTop->setObjectName(QStringLiteral("panelBuilderTop"));
    auto *top = new QHBoxLayout(panelBuilderTop);
    top->setContentsMargins(4, 4, 4, 4);
    auto *label = new QLabel(QStringLiteral("SQL Syntax Provider:"), panelBuilderTop);
    label->setObjectName(QStringLiteral("Label1"));
    cbSyntaxProvider = new QComboBox(panelBuilderTop);
    cbSyntaxProvider->setObjectName(QStringLiteral("cbSyntaxProvider"));
    label->setBuddy(cbSyntaxProvider);
    top->addWidget(label);
    top->addWidget(cbSyntaxProvider);

    const auto versions = [this, top](const char *name, SqlDialect dialect) {
        auto *list = new QComboBox(panelBuilderTop);
        list->setObjectName(QString::fromLatin1(name));
        list->addItems(SqlDialects::serverVersions(dialect));
        list->hide();
        top->addWidget(list);
        connect(list, &QComboBox::activated, this, &TfmAQBuilder::cbSyntaxProviderChange);
        return list;
    };
    cbMSVersion = versions("cbMSVersion", SqlDialect::MsSqlServer);
    cbOracleVersion = versions("cbOracleVersion", SqlDialect::Oracle);
    cbFirebirdVersion = versions("cbFirebirdVersion", SqlDialect::Firebird);
    cbInformixVersion = versions("cbInformixVersion", SqlDialect::Informix);
    cbAccessVersion = versions("cbAccessVersion", SqlDialect::MsAccess);
    cbSybaseVersion = versions("cbSybaseVersion", SqlDialect::Sybase);
    edMySQLVersion = new QLineEdit(SqlDialects::initialMySqlVersion(), panelBuilderTop);
    edMySQLVersion->setObjectName(QStringLiteral("edMySQLVersion"));
    edMySQLVersion->setMaximumWidth(80);
    edMySQLVersion->hide();
    top->addWidget(edMySQLVersion);
    connect(edMySQLVersion, &QLineEdit::editingFinished, this, &TfmAQBuilder::cbSyntaxProviderChange);

    lbMetadata = new QLabel(panelBuilderTop);
    lbMetadata->setObjectName(QStringLiteral("lbMetadata"));
    lbMetadata->setContentsMargins(12, 0, 0, 0);
    top->addWidget(lbMetadata, 1);

    sbShowQueryTree = new QToolButton(panelBuilderTop);
    sbShowQueryTree->setObjectName(QStringLiteral("sbShowQueryTree"));
    sbShowQueryTree->setCheckable(true);
    sbShowQueryTree->setText(QStringLiteral("Query Tree"));
    sbShowQueryTree->setToolTip(QStringLiteral("Show Query Tree Pane"));
    sbProperties = new QToolButton(panelBuilderTop);
    sbProperties->setObjectName(QStringLiteral("sbProperties"));
    sbProperties->setText(QStringLiteral("Properties"));
    sbProperties->setToolTip(QStringLiteral("Properties"));
    top->addWidget(sbShowQueryTree);
    top->addWidget(sbProperties);
    connect(sbShowQueryTree, &QToolButton::clicked, this, &TfmAQBuilder::sbShowQueryTreeClick);
    connect(sbProperties, &QToolButton::clicked, this, &TfmAQBuilder::sbPropertiesClick);

    // The fixed table of dialects; the list starts on its first item.
    cbSyntaxProvider->addItems(SqlDialects::names());
    cbSyntaxProvider->setCurrentIndex(0);
    connect(cbSyntaxProvider, &QComboBox::activated, this, &TfmAQBuilder::cbSyntaxProviderChange);

    QueryBuilder = new QueryDiagram(&m_engine, page);
    QueryBuilder->setObjectName(QStringLiteral("QueryBuilder"));
    connect(QueryBuilder, &QueryDiagram::treePaneVisibilityChanged, sbShowQueryTree, &QToolButton::setChecked);

    pnlBottom = new QWidget(page);
    pnlBottom->setObjectName(QStringLiteral("pnlBottom"));
    auto *bottom = new QVBoxLayout(pnlBottom);
    bottom->setContentsMargins(0, 0, 0, 0);
    editSQL = new TTextEditorFrame(pnlBottom);
    editSQL->setObjectName(QStringLiteral("editSQL"));
    editSQL->setTools(m_services.tools);
    bottom->addWidget(editSQL);

    auto *split = new QSplitter(Qt::Vertical, page);
    split->setObjectName(QStringLiteral("Splitter1"));
    split->addWidget(QueryBuilder);
    split->addWidget(pnlBottom);
    split->setStretchFactor(0, 3);
    split->setStretchFactor(1, 1);
    // Before the first show the splitter shares by the size hints, which leave the text pane a
    // few lines: start it at a quarter of the page.
    split->setSizes({750, 250});
    split->setChildrenCollapsible(false);
    auto *layout = new QVBoxLayout(page);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    layout->addWidget(panelBuilderTop);
    layout->addWidget(split, 1);
}

// ---- the opener's dialect and the dialect list ----

QWidget *TfmAQBuilder::versionControl(SqlDialect dialect) const
{
    switch (dialect) {
    case SqlDialect::MsSqlServer: return cbMSVersion;
    case SqlDialect::Oracle: return cbOracleVersion;
    case SqlDialect::Firebird: return cbFirebirdVersion;
    case SqlDialect::Informix: return cbInformixVersion;
    case SqlDialect::MsAccess: return cbAccessVersion;
    case SqlDialect::Sybase: return cbSybaseVersion;
    case SqlDialect::MySql: return edMySQLVersion;
    default: return nullptr;
    }
}

void TfmAQBuilder::showVersionControl(SqlDialect dialect)
{
    QWidget *shown = versionControl(dialect);
    for (QWidget *w : std::initializer_list<QWidget *>{cbMSVersion, cbOracleVersion, cbFirebirdVersion, cbInformixVersion,
                                                       cbAccessVersion, cbSybaseVersion, edMySQLVersion})
        w->setVisible(w == shown);
}

void TfmAQBuilder::applyDialectCode(int code)
{
    const DialectChoice choice = SqlDialects::fromCode(code);
    m_changeGuard = true;
    // The engine's base dialect (code 1) is not in the list: the list then shows no choice.
    cbSyntaxProvider->setCurrentIndex(choice.dialect == SqlDialect::Generic ? -1 : int(choice.dialect));
    if (auto *list = qobject_cast<QComboBox *>(versionControl(choice.dialect)))
        list->setCurrentIndex(qMax(0, list->findText(choice.serverVersion)));
    else if (choice.dialect == SqlDialect::MySql)
        edMySQLVersion->setText(choice.serverVersion);
    showVersionControl(choice.dialect);
    m_engine.setDialect(choice);
    m_changeGuard = false;
}

void TfmAQBuilder::cbSyntaxProviderChange()
{
    if (m_changeGuard || cbSyntaxProvider->currentIndex() < 0)
        return;
    m_changeGuard = true;
    const auto dialect = SqlDialect(cbSyntaxProvider->currentIndex());
    QString version;
    if (auto *list = qobject_cast<QComboBox *>(versionControl(dialect)))
        version = list->currentText();
    else if (dialect == SqlDialect::MySql)
        version = edMySQLVersion->text().trimmed();
    m_engine.setDialect({dialect, version});
    showVersionControl(dialect);
    if (!m_engine.isOffline()) {
        // The catalogue is already here: the tree is rebuilt from it without a new connection.
        m_engine.refreshMetadata();
        QueryBuilder->reloadMetadata();
    }
    m_changeGuard = false;
}

void TfmAQBuilder::setQuoteAllIdentifiers(bool on)
{
    m_engine.setQuoteAllIdentifiers(on);
}

// ---- the catalogue ----

void TfmAQBuilder::metadataLoaded(const MetadataCatalog &catalog)
{
    m_catalog.setCatalog(catalog);
    m_engine.setMetadataProvider(&m_catalog);
    m_engine.setOffline(false);
    m_engine.refreshMetadata();
    QueryBuilder->reloadMetadata();
    lbMetadata->setText(QStringLiteral("%1 tables and views").arg(catalog.objects.size()));
    emit metadataReady(true);
}

void TfmAQBuilder::metadataFailed(const QString &message)
{
    // The diagram goes on without a catalogue; the cause stays in sight on the top strip.
    lbMetadata->setText(QStringLiteral("No tables: ") + message.section(QLatin1Char('\n'), 0, 0));
    lbMetadata->setToolTip(message);
    emit metadataReady(false);
}

// ---- text and diagram in step ----

void TfmAQBuilder::setSqlText(const QString &text)
{
    m_settingPane = true;
    editSQL->setPlainText(text);
    m_settingPane = false;
    m_textModified = true;
    giveTextToEngine();
}

QString TfmAQBuilder::sqlText() const
{
    return editSQL->toPlainText();
}

void TfmAQBuilder::acSQLBuilderPlainTextSQLUpdated(const QString &text)
{
    if (editSQL->toPlainText() != text) {
        m_settingPane = true;
        editSQL->setPlainText(text);
        m_settingPane = false;
    }
    m_queryChanged = true;
}

void TfmAQBuilder::editSQLChange()
{
    if (m_settingPane)
        return;
    m_textModified = true;
    m_queryChanged = true;
}

void TfmAQBuilder::editSQLExit()
{
    if (!m_textModified || m_exiting)
        return;
    giveTextToEngine();
}

bool TfmAQBuilder::giveTextToEngine()
{
    m_exiting = true;
    bool ok = true;
    try {
        m_engine.setSql(editSQL->toPlainText());
        m_textModified = false;
    } catch (const SqlParseError &error) {
        // The text stays marked as changed, so the next exit or preview tries again.
        QueryBuilderSQLError(error);
        ok = false;
    }
    m_exiting = false;
    return ok;
}

void TfmAQBuilder::QueryBuilderSQLError(const SqlParseError &error)
{
    UserMessages::error(this, error.message());
    // The caret goes before the character the parser stopped at; the error counts characters,
    // the editor bytes.
    QsciScintilla *editor = editSQL->editor();
    const int chars = qBound(0, error.offset(), int(editSQL->toPlainText().size()));
    editor->SendScintilla(QsciScintillaBase::SCI_GOTOPOS,
                          editor->SendScintilla(QsciScintillaBase::SCI_POSITIONRELATIVE, 0UL, long(chars)));
    PC->setCurrentWidget(tsQuery);
    editor->setFocus();
}

bool TfmAQBuilder::QueryBuilderWakeQuery()
{
    return m_askWake ? m_askWake() : true;
}

bool TfmAQBuilder::diagramHasFocus() const
{
    QWidget *focus = QApplication::focusWidget();
    return focus && QueryBuilder->isAncestorOf(focus);
}

bool TfmAQBuilder::eventFilter(QObject *watched, QEvent *event)
{
    // Leaving the pane parses its text; a pop-up menu of the pane is not leaving it.
    if (event->type() == QEvent::FocusOut
        && (watched == editSQL->editor() || watched == editSQL->editor()->viewport())
        && static_cast<QFocusEvent *>(event)->reason() != Qt::PopupFocusReason)
        editSQLExit();
    return QDialog::eventFilter(watched, event);
}

// ---- the window ----

void TfmAQBuilder::showEvent(QShowEvent *event)
{
    QDialog::showEvent(event);
    if (!m_shown) {
        m_shown = true;
        FormShow();
    }
}

bool TfmAQBuilder::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate)
        FormActivate();
    return QDialog::event(event);
}

void TfmAQBuilder::FormActivate()
{
    sbShowQueryTree->setChecked(QueryBuilder->isTreePaneVisible());
}

void TfmAQBuilder::sbShowQueryTreeClick()
{
    QueryBuilder->setTreePaneVisible(sbShowQueryTree->isChecked());
}

void TfmAQBuilder::sbPropertiesClick()
{
    auto *options = new TfmAQBOptions(QueryBuilder, &m_engine, this);
    // The dialog shows what the window uses now, which may differ from the saved defaults.
    options->setSettings(m_settings);
    connect(options, &QDialog::accepted, this, [this, options] { m_settings = options->settings(); });
    options->exec();
    sbShowQueryTree->setChecked(QueryBuilder->isTreePaneVisible());
}

// ---- the opening routine ----

QString TfmAQBuilder::Execute(const TReaderConnection &record, const QString &sql, const Services &services,
                              QWidget *parent)
{
    TfmAQBuilder window(record, QueryBuilderSource::dialectCode(record), services, parent);
    if (QueryBuilderSource::quoteAllIdentifiers(record))
        window.setQuoteAllIdentifiers(true);
    window.setSqlText(sql);
    if (window.exec() == QDialog::Accepted)
        return window.sqlText();
    return sql;
}
