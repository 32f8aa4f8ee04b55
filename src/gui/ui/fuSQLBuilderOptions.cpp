#include "gui/ui/fuSQLBuilderOptions.h"

#include <QCheckBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QSpinBox>
#include <QVBoxLayout>

TfmSQLBuilderOptions::TfmSQLBuilderOptions(SqlFormat *format, QWidget *parent)
    : TDefDlgFrm(parent), m_format(format)
{
    setObjectName(QStringLiteral("fmSQLBuilderOptions"));
    setWindowTitle(QStringLiteral("SQL Builder Options"));
    setPlacementPath(QStringLiteral("SQL Builder Options\\"));
    imageSquare()->parentWidget()->hide();

    auto *grid = new QGridLayout(TabSheet1());
    grid->setContentsMargins(10, 10, 10, 10);
    grid->setSpacing(8);

    // The captions carry two blanks on each side, as the group frames have always shown them.
    QGroupBox *common = group(QStringLiteral("  Common  "), "gbCommon");
    auto *commonLayout = new QFormLayout(common);
    cbMainPartNewLine = check(common, "cbMainPartNewLine", QStringLiteral("Start parts from new lines"));
    cbKeywordsNewLine = check(common, "cbKeywordsNewLine", QStringLiteral("Keywords on lines of their own"));
    sePartIndent = spin(common, "sePartIndent");
    seGlobalIndent = spin(common, "seGlobalIndent");
    commonLayout->addRow(cbMainPartNewLine);
    commonLayout->addRow(cbKeywordsNewLine);
    commonLayout->addRow(QStringLiteral("Part Indent"), sePartIndent);
    commonLayout->addRow(QStringLiteral("Global Indent"), seGlobalIndent);

    QGroupBox *select = group(QStringLiteral("  SELECT  "), "gbSelect");
    auto *selectLayout = new QVBoxLayout(select);
    cbSelectItemNewLine = check(select, "cbSelectItemNewLine", QStringLiteral("Each item from a new line"));
    selectLayout->addWidget(cbSelectItemNewLine);
    selectLayout->addStretch();

    QGroupBox *from = group(QStringLiteral("  FROM  "), "gbFrom");
    auto *fromLayout = new QVBoxLayout(from);
    cbFromObjectNewLine = check(from, "cbFromObjectNewLine", QStringLiteral("Each object from a new line"));
    cbFromJoinNewLine = check(from, "cbFromJoinNewLine", QStringLiteral("Each JOIN from a new line"));
    fromLayout->addWidget(cbFromObjectNewLine);
    fromLayout->addWidget(cbFromJoinNewLine);
    fromLayout->addStretch();

    // WHERE and HAVING: the same three controls each.
    const auto conditions = [this](const QString &caption, const char *name, QCheckBox *&first, QCheckBox *&second,
                                   QSpinBox *&indent, const char *firstName, const char *secondName,
                                   const char *indentName) {
        QGroupBox *box = group(caption, name);
        auto *layout = new QFormLayout(box);
        first = check(box, firstName, QStringLiteral("Each condition from a new line"));
        second = check(box, secondName, QStringLiteral("Nested conditions from new lines"));
        indent = spin(box, indentName);
        layout->addRow(first);
        layout->addRow(second);
        layout->addRow(QStringLiteral("Indent"), indent);
        return box;
    };
    QGroupBox *where = conditions(QStringLiteral("  WHERE  "), "gbWhere", cbWhereNewLine, cbWhereNested, seWhereIndent,
                                  "cbWhereNewLine", "cbWhereNested", "seWhereIndent");
    QGroupBox *having = conditions(QStringLiteral("  HAVING  "), "gbHaving", cbHavingNewLine, cbHavingNested,
                                   seHavingIndent, "cbHavingNewLine", "cbHavingNested", "seHavingIndent");

    QGroupBox *groupBy = group(QStringLiteral("  GROUP BY  "), "gbGroupBy");
    auto *groupLayout = new QVBoxLayout(groupBy);
    cbGroupItemNewLine = check(groupBy, "cbGroupItemNewLine", QStringLiteral("Each item from a new line"));
    groupLayout->addWidget(cbGroupItemNewLine);
    groupLayout->addStretch();

    grid->addWidget(common, 0, 0);
    grid->addWidget(select, 0, 1);
    grid->addWidget(from, 1, 0);
    grid->addWidget(where, 1, 1);
    grid->addWidget(groupBy, 2, 0);
    grid->addWidget(having, 2, 1);

    connect(cbWhereNewLine, &QCheckBox::clicked, this, &TfmSQLBuilderOptions::cbWhereNewLineClick);
    connect(cbWhereNested, &QCheckBox::clicked, this, &TfmSQLBuilderOptions::cbWhereNestedClick);
    connect(cbHavingNewLine, &QCheckBox::clicked, this, &TfmSQLBuilderOptions::cbHavingNewLineClick);
    connect(cbHavingNested, &QCheckBox::clicked, this, &TfmSQLBuilderOptions::cbHavingNestedClick);

    loadControls();
    adjustSize();
}

QGroupBox *TfmSQLBuilderOptions::group(const QString &caption, const char *name)
{
    auto *box = new QGroupBox(caption, TabSheet1());
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

QCheckBox *TfmSQLBuilderOptions::check(QWidget *parent, const char *name, const QString &caption)
{
    auto *box = new QCheckBox(caption, parent);
    box->setObjectName(QString::fromLatin1(name));
    return box;
}

QSpinBox *TfmSQLBuilderOptions::spin(QWidget *parent, const char *name)
{
    auto *box = new QSpinBox(parent);
    box->setObjectName(QString::fromLatin1(name));
    box->setRange(0, 40);
    return box;
}

void TfmSQLBuilderOptions::modeToChecks(int mode, bool &first, bool &second)
{
    first = mode >= 1 && mode <= 3;
    second = mode == 3;
}

int TfmSQLBuilderOptions::checksToMode(bool first, bool second, int previous)
{
    if (!first)
        return 0;
    if (second)
        return 3;
    // Both 1 and 2 show as the first box alone: keep whichever the format had.
    return previous == 1 || previous == 2 ? previous : 1;
}

void TfmSQLBuilderOptions::loadControls()
{
    const SqlFormat &f = *m_format;
    cbMainPartNewLine->setChecked(f.mainPartNewLine);
    cbKeywordsNewLine->setChecked(f.keywordsNewLine);
    sePartIndent->setValue(f.partIndent);
    seGlobalIndent->setValue(f.globalIndent);
    cbSelectItemNewLine->setChecked(f.selectItemNewLine);
    cbFromObjectNewLine->setChecked(f.fromObjectNewLine);
    cbFromJoinNewLine->setChecked(f.fromJoinNewLine);
    cbGroupItemNewLine->setChecked(f.groupItemNewLine);
    bool first = false, second = false;
    modeToChecks(f.whereNewLine, first, second);
    cbWhereNewLine->setChecked(first);
    cbWhereNested->setChecked(second);
    seWhereIndent->setValue(f.whereIndent);
    modeToChecks(f.havingNewLine, first, second);
    cbHavingNewLine->setChecked(first);
    cbHavingNested->setChecked(second);
    seHavingIndent->setValue(f.havingIndent);
    follow(cbWhereNewLine, cbWhereNested, seWhereIndent);
    follow(cbHavingNewLine, cbHavingNested, seHavingIndent);
}

void TfmSQLBuilderOptions::follow(QCheckBox *first, QCheckBox *second, QSpinBox *indent)
{
    if (!first->isChecked())
        second->setChecked(false);
    second->setEnabled(first->isChecked());
    indent->setEnabled(second->isChecked());
}

void TfmSQLBuilderOptions::cbWhereNewLineClick() { follow(cbWhereNewLine, cbWhereNested, seWhereIndent); }
void TfmSQLBuilderOptions::cbWhereNestedClick() { follow(cbWhereNewLine, cbWhereNested, seWhereIndent); }
void TfmSQLBuilderOptions::cbHavingNewLineClick() { follow(cbHavingNewLine, cbHavingNested, seHavingIndent); }
void TfmSQLBuilderOptions::cbHavingNestedClick() { follow(cbHavingNewLine, cbHavingNested, seHavingIndent); }

void TfmSQLBuilderOptions::OKBtnClick()
{
    TDefDlgFrm::OKBtnClick();
    SqlFormat &f = *m_format;
    f.mainPartNewLine = cbMainPartNewLine->isChecked();
    f.keywordsNewLine = cbKeywordsNewLine->isChecked();
    f.partIndent = sePartIndent->value();
    f.globalIndent = seGlobalIndent->value();
    f.selectItemNewLine = cbSelectItemNewLine->isChecked();
    f.fromObjectNewLine = cbFromObjectNewLine->isChecked();
    f.fromJoinNewLine = cbFromJoinNewLine->isChecked();
    f.groupItemNewLine = cbGroupItemNewLine->isChecked();
    f.whereNewLine = checksToMode(cbWhereNewLine->isChecked(), cbWhereNested->isChecked(), f.whereNewLine);
    f.whereIndent = seWhereIndent->value();
    f.havingNewLine = checksToMode(cbHavingNewLine->isChecked(), cbHavingNested->isChecked(), f.havingNewLine);
    f.havingIndent = seHavingIndent->value();
}
