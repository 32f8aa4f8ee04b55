#pragma once
#include "gui/ui/DefDlgUn.h"

#include "core/querybuilder/SqlFormat.h"

class QCheckBox;
class QGroupBox;
class QSpinBox;

// The format editor ("SQL Builder Options"): how the generator lays out one kind of query (the
// main query, expression subqueries or derived subqueries). It edits a format object of its
// caller's; OK writes the controls back into it.
//
// The new-line mode of WHERE and of HAVING takes four values but shows as two check boxes: the
// first is checked for 1, 2 and 3, the second for 3 only. The second is usable only while the
// first is checked, and the clause's indent only while the second is.
class TfmSQLBuilderOptions : public TDefDlgFrm
{
    Q_OBJECT
public:
    TfmSQLBuilderOptions(SqlFormat *format, QWidget *parent = nullptr);

    // The two check boxes of a four-valued new-line mode, and back. With the first box alone
    // checked the mode stays 1 or 2 when it was one of those, else becomes 1.
    static void modeToChecks(int mode, bool &first, bool &second);
    static int checksToMode(bool first, bool second, int previous);

public slots:
    void OKBtnClick() override;
    void cbWhereNewLineClick();
    void cbHavingNewLineClick();
    void cbWhereNestedClick();
    void cbHavingNestedClick();

private:
    QGroupBox *group(const QString &caption, const char *name);
    QCheckBox *check(QWidget *parent, const char *name, const QString &caption);
    QSpinBox *spin(QWidget *parent, const char *name);
    void loadControls();
    // The second box and the indent follow the first box and the second.
    static void follow(QCheckBox *first, QCheckBox *second, QSpinBox *indent);

    SqlFormat *m_format;
    QCheckBox *cbMainPartNewLine;
    QCheckBox *cbKeywordsNewLine;
    QSpinBox *sePartIndent;
    QSpinBox *seGlobalIndent;
    QCheckBox *cbSelectItemNewLine;
    QCheckBox *cbFromObjectNewLine;
    QCheckBox *cbFromJoinNewLine;
    QCheckBox *cbWhereNewLine;
    QCheckBox *cbWhereNested;
    QSpinBox *seWhereIndent;
    QCheckBox *cbGroupItemNewLine;
    QCheckBox *cbHavingNewLine;
    QCheckBox *cbHavingNested;
    QSpinBox *seHavingIndent;
};
