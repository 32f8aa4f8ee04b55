#pragma once
#include "gui/ui/DefDlgUn.h"
#include "gui/ui/fuAQBOptionsFile.h"

#include <QStringList>

#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLineEdit;
class QSpinBox;
class QueryDiagram;
class QueryEngine;

// The query builder's options ("Query Builder Options"): the engine's behaviour, the diagram's
// look, its metadata tree and query tree, and the SQL generator's formats. Created, it reads its
// defaults from "options.ini"; "Save defaults" writes the dialog's values there; OK applies them
// to the diagram and the engine (SaveSettingsToObject) without touching the file.
class TfmAQBOptions : public TDefDlgFrm
{
    Q_OBJECT
public:
    // Either target may be null: the dialog then only edits and saves.
    TfmAQBOptions(QueryDiagram *diagram, QueryEngine *engine, QWidget *parent = nullptr);

    // The values the controls show; setting them replaces what was read from the file.
    QueryBuilderSettings settings() const;
    void setSettings(const QueryBuilderSettings &settings);

    // Applies the dialog's values to the diagram and the engine (its generator).
    void SaveSettingsToObject();
    static void applyTo(const QueryBuilderSettings &settings, QueryDiagram *diagram, QueryEngine *engine);

    // The nine grouping modes of the metadata tree, as the list shows them.
    static QStringList groupingTypes();

    // The format editor's way of running; tests replace it to edit without a modal loop.
    using FormatEditor = std::function<void(SqlFormat &format, QWidget *parent)>;
    void setFormatEditor(FormatEditor editor) { m_editFormat = std::move(editor); }

public slots:
    void OKBtnClick() override;
    void bSaveDefaultsClick();
    // The format editor on the main query's, the expression subqueries' and the derived
    // subqueries' format.
    void bMainQueryClick();
    void bSubqueriesClick();
    void bDerivedQueriesClick();

private:
    QWidget *page(const QString &caption, const char *name, QFormLayout **layout);
    QCheckBox *check(QFormLayout *layout, const char *name, const QString &caption,
                     std::function<bool &(QueryBuilderSettings &)> value);
    QSpinBox *spin(QFormLayout *layout, const char *name, const QString &caption, int low, int high,
                   std::function<int &(QueryBuilderSettings &)> value);
    QComboBox *choice(QFormLayout *layout, const char *name, const QString &caption, const QStringList &items,
                      std::function<int &(QueryBuilderSettings &)> value);
    QLineEdit *text(QFormLayout *layout, const char *name, const QString &caption,
                    std::function<QString &(QueryBuilderSettings &)> value);
    void buildFormatRows(QFormLayout *layout);
    void editFormat(SqlFormat &format);

    struct Binding
    {
        std::function<void(QueryBuilderSettings &)> load;   // settings to control
        std::function<void(QueryBuilderSettings &)> store;       // control to settings
    };
    std::vector<Binding> m_bindings;
    QueryDiagram *m_diagram;
    QueryEngine *m_engine;
    // What the controls do not show: the three formats of the generator. The fourth format is
    // the copy held between Copy and Paste.
    QueryBuilderSettings m_current;
    SqlFormat m_copied;
    bool m_hasCopy = false;
    FormatEditor m_editFormat;
};
