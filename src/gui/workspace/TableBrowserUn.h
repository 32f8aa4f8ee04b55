#pragma once
#include "gui/app/AppServices.h"
#include "core/connections/vtrIL.h"
#include "gui/ui/DefDlgUn.h"

#include <QStringList>

class TSqlFrm;

// The table browser: a resizable dialog whose client is one whole workspace frame, named "sql",
// working on one connection record.
class TTableBrowserFrm : public TDefDlgFrm
{
    Q_OBJECT
public:
    TTableBrowserFrm(const AppServices &services, QWidget *parent = nullptr);

    TSqlFrm *sql() const { return m_sql; }
    // The record becomes the frame's current connection; the names fill its table list.
    void setConnection(const TReaderConnection &record, const QStringList &tables);

    // Opens a browser on `record` with `tables`, modally, and frees it afterwards.
    static void browse(const AppServices &services, const TReaderConnection &record, const QStringList &tables,
                       QWidget *parent);

protected:
    void showEvent(QShowEvent *event) override;
    void done(int result) override;

private:
    TSqlFrm *m_sql;
    bool m_restore = true;
};
