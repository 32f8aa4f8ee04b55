#include "gui/ui/fuAQBOptions.h"

#include "core/base/VantryError.h"
#include "core/querybuilder/QueryEngine.h"
#include "gui/app/UserMessages.h"
#include "gui/components/QueryDiagram.h"
#include "gui/ui/fuSQLBuilderOptions.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

TfmAQBOptions::TfmAQBOptions(QueryDiagram *diagram, QueryEngine *engine, QWidget *parent)
    : TDefDlgFrm(parent), m_diagram(diagram), m_engine(engine)
{
    setObjectName(QStringLiteral("fmAQBOptions"));
    setWindowTitle(QStringLiteral("Query Builder Options"));
    setPlacementPath(QStringLiteral("Query Builder Options\\"));
    imageSquare()->parentWidget()->hide();
    m_editFormat = [](SqlFormat &format, QWidget *owner) {
        // The editor frees itself when closed.
        auto *editor = new TfmSQLBuilderOptions(&format, owner);
        editor->exec();
    };

    auto *pages = new QTabWidget(TabSheet1());
    pages->setObjectName(QStringLiteral("pcOptions"));
    // The dialog has a fixed size: it is made wide enough to show every page's tab.
    pages->setUsesScrollButtons(false);
    auto *outer = new QVBoxLayout(TabSheet1());
    outer->setContentsMargins(8, 8, 8, 0);
    outer->addWidget(pages);
    using S = QueryBuilderSettings;
    QFormLayout *f = nullptr;

    pages->addTab(page(QStringLiteral("Behavior Options"), "tsBehavior", &f), QStringLiteral("Behavior Options"));
    check(f, "cbAllowSleepMode", QStringLiteral("Allow Sleep Mode"), [](S &s) -> bool & { return s.allowSleepMode; });
    check(f, "cbParsingErrorOnUnknownObjects", QStringLiteral("Loading Error On Unknown Objects"),
          [](S &s) -> bool & { return s.parsingErrorOnUnknownObjects; });

    pages->addTab(page(QStringLiteral("Visual Options"), "tsVisual", &f), QStringLiteral("Visual Options"));
    check(f, "cbShowTreePane", QStringLiteral("Show Query Tree Pane"), [](S &s) -> bool & { return s.diagram.showTreePane; });
    check(f, "cbShowMetadataTreePane", QStringLiteral("Show Metadata Tree Pane"),
          [](S &s) -> bool & { return s.diagram.showMetadataTreePane; });
    check(f, "cbShowColumnsPane", QStringLiteral("Show Columns Pane"), [](S &s) -> bool & { return s.diagram.showColumnsPane; });
    spin(f, "seSplitVertical", QStringLiteral("Vertical splitter"), 1, 100, [](S &s) -> int & { return s.diagram.splitVertical; });
    spin(f, "seSplitHorizontal", QStringLiteral("Horizontal splitter"), 1, 100,
         [](S &s) -> int & { return s.diagram.splitHorizontal; });
    spin(f, "seBorderWidth", QStringLiteral("Border width"), 0, 10, [](S &s) -> int & { return s.diagram.borderWidth; });
    choice(f, "cbBorderStyle", QStringLiteral("Border style"),
           {QStringLiteral("None"), QStringLiteral("Single"), QStringLiteral("Flat"), QStringLiteral("Raised")},
           [](S &s) -> int & { return s.diagram.borderStyle; });
    choice(f, "cbBkDarkness", QStringLiteral("Background"),
           {QStringLiteral("Light gray on White"), QStringLiteral("Dark gray on Light gray"),
            QStringLiteral("Light gray on Dark gray")},
           [](S &s) -> int & { return s.diagram.bkDarkness; });
    choice(f, "cbTabStyle", QStringLiteral("Sub-query tabs"),
           {QStringLiteral("Tabs"), QStringLiteral("Buttons"), QStringLiteral("Flat buttons")},
           [](S &s) -> int & { return s.diagram.tabStyle; });
    choice(f, "cbAddObjectStyle", QStringLiteral("Add object list"),
           {QStringLiteral("Icon style"), QStringLiteral("Small Icon style"), QStringLiteral("List style"),
            QStringLiteral("Report style")},
           [](S &s) -> int & { return s.diagram.addObjectStyle; });
    // "Enterpise" is the caption as it has always read; kept deliberately.
    choice(f, "cbLinkPainter", QStringLiteral("Links"),
           {QStringLiteral("Simple style"), QStringLiteral("MS Access style"),
            QStringLiteral("SQL Server Enterpise Manager style")},
           [](S &s) -> int & { return s.diagram.linkPainter; });

    pages->addTab(page(QStringLiteral("Metadata Tree Options"), "tsMetadataTree", &f),
                  QStringLiteral("Metadata Tree Options"));
    choice(f, "cbGroupingType", QStringLiteral("Grouping"), groupingTypes(), [](S &s) -> int & { return s.diagram.groupingType; });
    check(f, "cbShowUserTables", QStringLiteral("Show user tables"), [](S &s) -> bool & { return s.diagram.showUserTables; });
    check(f, "cbShowUserViews", QStringLiteral("Show user views"), [](S &s) -> bool & { return s.diagram.showUserViews; });
    check(f, "cbShowUserProcedures", QStringLiteral("Show user procedures"),
          [](S &s) -> bool & { return s.diagram.showUserProcedures; });
    check(f, "cbShowUserSynonyms", QStringLiteral("Show user synonyms"), [](S &s) -> bool & { return s.diagram.showUserSynonyms; });
    check(f, "cbShowSystemTables", QStringLiteral("Show system tables"), [](S &s) -> bool & { return s.diagram.showSystemTables; });
    check(f, "cbShowSystemViews", QStringLiteral("Show system views"), [](S &s) -> bool & { return s.diagram.showSystemViews; });
    check(f, "cbShowSystemProcedures", QStringLiteral("Show system procedures"),
          [](S &s) -> bool & { return s.diagram.showSystemProcedures; });
    check(f, "cbShowSystemSynonyms", QStringLiteral("Show system synonyms"),
          [](S &s) -> bool & { return s.diagram.showSystemSynonyms; });

    pages->addTab(page(QStringLiteral("Query Tree Options"), "tsQueryTree", &f), QStringLiteral("Query Tree Options"));
    check(f, "cbTreeShowFields", QStringLiteral("Show expressions"), [](S &s) -> bool & { return s.diagram.treeShowFields; });
    check(f, "cbTreeShowObjects", QStringLiteral("Show objects"), [](S &s) -> bool & { return s.diagram.treeShowObjects; });
    text(f, "edFieldsCaption", QStringLiteral("Expressions caption"), [](S &s) -> QString & { return s.diagram.fieldsCaption; });
    text(f, "edObjectsCaption", QStringLiteral("Objects caption"), [](S &s) -> QString & { return s.diagram.objectsCaption; });
    text(f, "edUnionsCaption", QStringLiteral("Unions caption"), [](S &s) -> QString & { return s.diagram.unionsCaption; });
    check(f, "cbExpandFields", QStringLiteral("Expand expressions"), [](S &s) -> bool & { return s.diagram.expandFields; });
    check(f, "cbExpandObjects", QStringLiteral("Expand objects"), [](S &s) -> bool & { return s.diagram.expandObjects; });
    check(f, "cbExpandSubqueries", QStringLiteral("Expand subqueries"), [](S &s) -> bool & { return s.diagram.expandSubqueries; });
    check(f, "cbExpandUnions", QStringLiteral("Expand unions"), [](S &s) -> bool & { return s.diagram.expandUnions; });

    pages->addTab(page(QStringLiteral("SQL Formatting"), "tsFormatting", &f), QStringLiteral("SQL Formatting"));
    check(f, "cbWordWrap", QStringLiteral("Word wrap"), [](S &s) -> bool & { return s.generator.wordWrap; });
    spin(f, "seRightMargin", QStringLiteral("Right margin"), 10, 10000, [](S &s) -> int & { return s.generator.rightMargin; });
    check(f, "cbParenthesizeANDGroups", QStringLiteral("Parenthesize AND groups"),
          [](S &s) -> bool & { return s.generator.parenthesizeAndGroups; });
    check(f, "cbParenthesizeSingleCriterion", QStringLiteral("Parenthesize single criterion"),
          [](S &s) -> bool & { return s.generator.parenthesizeSingleCriterion; });
    buildFormatRows(f);

    auto *save = new QPushButton(QStringLiteral("Save defaults"), leftButtonArea());
    save->setObjectName(QStringLiteral("bSaveDefaults"));
    save->setAutoDefault(false);
    leftButtonArea()->layout()->addWidget(save);
    connect(save, &QPushButton::clicked, this, &TfmAQBOptions::bSaveDefaultsClick);

    setSettings(QueryBuilderSettings::load());
    adjustSize();
}

QStringList TfmAQBOptions::groupingTypes()
{
    return {QStringLiteral("No grouping"),
            QStringLiteral("Group by Database"),
            QStringLiteral("Group by Schema"),
            QStringLiteral("Group by Database, Schema"),
            QStringLiteral("Group by Object Type"),
            QStringLiteral("Group by Database, Object Type"),
            QStringLiteral("Group by Schema, Object Type"),
            QStringLiteral("Group by Database, Schema, Object Type"),
            QStringLiteral("Group by Object Type, Database, Schema")};
}

QWidget *TfmAQBOptions::page(const QString &caption, const char *name, QFormLayout **layout)
{
    auto *widget = new QWidget;
    widget->setObjectName(QString::fromLatin1(name));
    widget->setAccessibleName(caption);
    *layout = new QFormLayout(widget);
    (*layout)->setContentsMargins(12, 12, 12, 12);
    return widget;
}

QCheckBox *TfmAQBOptions::check(QFormLayout *layout, const char *name, const QString &caption,
                                std::function<bool &(QueryBuilderSettings &)> value)
{
    auto *box = new QCheckBox(caption);
    box->setObjectName(QString::fromLatin1(name));
    layout->addRow(box);
    m_bindings.push_back({[box, value](QueryBuilderSettings &s) {
                              box->setChecked(value(s));
                          },
                          [box, value](QueryBuilderSettings &s) { value(s) = box->isChecked(); }});
    return box;
}

QSpinBox *TfmAQBOptions::spin(QFormLayout *layout, const char *name, const QString &caption, int low, int high,
                              std::function<int &(QueryBuilderSettings &)> value)
{
    auto *box = new QSpinBox;
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(low, high);
    layout->addRow(caption, box);
    m_bindings.push_back({[box, value](QueryBuilderSettings &s) {
                              box->setValue(value(s));
                          },
                          [box, value](QueryBuilderSettings &s) { value(s) = box->value(); }});
    return box;
}

QComboBox *TfmAQBOptions::choice(QFormLayout *layout, const char *name, const QString &caption,
                                 const QStringList &items, std::function<int &(QueryBuilderSettings &)> value)
{
    auto *box = new QComboBox;
    box->setObjectName(QString::fromLatin1(name));
    box->addItems(items);
    layout->addRow(caption, box);
    m_bindings.push_back({[box, value](QueryBuilderSettings &s) {
                              const int index = value(s);
                              box->setCurrentIndex(index >= 0 && index < box->count() ? index : 0);
                          },
                          [box, value](QueryBuilderSettings &s) { value(s) = box->currentIndex(); }});
    return box;
}

QLineEdit *TfmAQBOptions::text(QFormLayout *layout, const char *name, const QString &caption,
                               std::function<QString &(QueryBuilderSettings &)> value)
{
    auto *edit = new QLineEdit;
    edit->setObjectName(QString::fromLatin1(name));
    layout->addRow(caption, edit);
    m_bindings.push_back({[edit, value](QueryBuilderSettings &s) {
                              edit->setText(value(s));
                          },
                          [edit, value](QueryBuilderSettings &s) { value(s) = edit->text(); }});
    return edit;
}

void TfmAQBOptions::buildFormatRows(QFormLayout *layout)
{
    struct Row
    {
        const char *name;
        const char *caption;
        SqlFormat GeneratorOptions::*format;
    };
    const Row rows[] = {{"bMainQuery", "Main Query...", &GeneratorOptions::mainQuery},
                        {"bSubqueries", "Expression Subqueries...", &GeneratorOptions::subqueries},
                        {"bDerivedQueries", "Derived Subqueries...", &GeneratorOptions::derivedQueries}};
    auto *hint = new QLabel(QStringLiteral("Layout of the generated SQL text:"));
    hint->setObjectName(QStringLiteral("lbFormats"));
    layout->addRow(hint);
    for (const Row &row : rows) {
        auto *line = new QWidget;
        auto *h = new QHBoxLayout(line);
        h->setContentsMargins(0, 0, 0, 0);
        auto *edit = new QPushButton(QString::fromLatin1(row.caption), line);
        edit->setObjectName(QString::fromLatin1(row.name));
        edit->setAutoDefault(false);
        edit->setMinimumWidth(170);
        auto *copy = new QPushButton(QStringLiteral("Copy"), line);
        copy->setObjectName(QString::fromLatin1(row.name) + QStringLiteral("Copy"));
        copy->setAutoDefault(false);
        auto *paste = new QPushButton(QStringLiteral("Paste"), line);
        paste->setObjectName(QString::fromLatin1(row.name) + QStringLiteral("Paste"));
        paste->setAutoDefault(false);
        paste->setEnabled(false);
        h->addWidget(edit);
        h->addWidget(copy);
        h->addWidget(paste);
        h->addStretch();
        layout->addRow(line);
        const auto member = row.format;
        connect(copy, &QPushButton::clicked, this, [this, member] {
            m_copied = m_current.generator.*member;
            m_hasCopy = true;
            for (QPushButton *b : findChildren<QPushButton *>())
                if (b->objectName().endsWith(QLatin1String("Paste")))
                    b->setEnabled(true);
        });
        connect(paste, &QPushButton::clicked, this, [this, member] {
            if (m_hasCopy)
                m_current.generator.*member = m_copied;
        });
    }
    connect(findChild<QPushButton *>(QStringLiteral("bMainQuery")), &QPushButton::clicked, this,
            &TfmAQBOptions::bMainQueryClick);
    connect(findChild<QPushButton *>(QStringLiteral("bSubqueries")), &QPushButton::clicked, this,
            &TfmAQBOptions::bSubqueriesClick);
    connect(findChild<QPushButton *>(QStringLiteral("bDerivedQueries")), &QPushButton::clicked, this,
            &TfmAQBOptions::bDerivedQueriesClick);
}

QueryBuilderSettings TfmAQBOptions::settings() const
{
    QueryBuilderSettings s = m_current;
    for (const Binding &b : m_bindings)
        b.store(s);
    return s;
}

void TfmAQBOptions::setSettings(const QueryBuilderSettings &settings)
{
    m_current = settings;
    for (const Binding &b : m_bindings)
        b.load(m_current);
}

void TfmAQBOptions::editFormat(SqlFormat &format)
{
    if (m_editFormat)
        m_editFormat(format, this);
}

void TfmAQBOptions::bMainQueryClick() { editFormat(m_current.generator.mainQuery); }
void TfmAQBOptions::bSubqueriesClick() { editFormat(m_current.generator.subqueries); }
void TfmAQBOptions::bDerivedQueriesClick() { editFormat(m_current.generator.derivedQueries); }

void TfmAQBOptions::applyTo(const QueryBuilderSettings &settings, QueryDiagram *diagram, QueryEngine *engine)
{
    if (engine) {
        engine->setAllowSleepMode(settings.allowSleepMode);
        engine->setParsingErrorOnUnknownObjects(settings.parsingErrorOnUnknownObjects);
        engine->setGeneratorOptions(settings.generator);
    }
    if (diagram)
        diagram->applyOptions(settings.diagram);
}

void TfmAQBOptions::SaveSettingsToObject()
{
    applyTo(settings(), m_diagram, m_engine);
}

void TfmAQBOptions::OKBtnClick()
{
    TDefDlgFrm::OKBtnClick();
    SaveSettingsToObject();
}

void TfmAQBOptions::bSaveDefaultsClick()
{
    try {
        settings().save();
    } catch (const VantryError &error) {
        UserMessages::error(this, error.message());
    }
}
