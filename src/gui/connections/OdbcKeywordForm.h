#pragma once
// The form of a driver's connection keywords: it stands in for the completion dialog a driver
// would show on Windows, which drivers can't show here. OK tests the string with the driver and
// keeps the completed string the driver gives back; a failing test shows the driver's words and
// leaves the form open with everything typed.

#include "core/connections/OdbcConnectionBuilder.h"
#include "gui/ui/DefDlgUn.h"

class QLabel;
class QLineEdit;

class OdbcKeywordForm : public TDefDlgFrm
{
    Q_OBJECT
public:
    // The boxes start from `current` when it names the same driver, else from the defaults.
    OdbcKeywordForm(const QString &driverName, const OdbcConnectionBuilder::DriverKeywords &keywords,
                    const QString &current, QWidget *parent = nullptr);

    // The string the boxes make, before the driver completes it.
    QString connectionString() const;
    // After OK: the completed string the driver returned.
    QString completedString() const { return m_completed; }

    // The box of a keyword: a QLineEdit, a QComboBox or a TFileNameEdit named "kw" + keyword.
    QWidget *editorOf(const QString &keyword) const;
    void setValue(const QString &keyword, const QString &value);
    QLineEdit *OtherKeywordsEdt;

public slots:
    void OKBtnClick() override;

private:
    QString valueOf(const QWidget *editor) const;
    QVector<OdbcKeywordValue> values() const;

    QString m_driver;
    QVector<OdbcKeyword> m_keywords;
    QVector<QWidget *> m_editors;
    QString m_completed;
};
