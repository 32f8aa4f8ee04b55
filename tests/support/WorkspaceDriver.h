#pragma once
#include "core/app/StatusMessage.h"
#include "core/connections/ConnectionTypes.h"
#include "core/connections/vtrtools.h"
#include "core/workspace/ConnectionList.h"
#include "core/workspace/ExecutionLog.h"
#include "gui/workspace/SqlLogFrameUn.h"
#include "gui/workspace/SqlUn.h"

#include <Qsci/qsciscintilla.h>

#include <QtTest>

// Drives a workspace tab the way a user does: stores a connection, selects it, types and runs.
namespace WorkspaceDriver {

// Stores `record` as a new connection of the tab's list and makes it the current row.
inline void addConnection(TSqlFrm *frame, const TReaderConnection &record)
{
    ConnectionList *list = frame->mdsConnections();
    ConnectionRow &row = list->insertRow();
    row.connectionName = record.Description;
    row.connectionParameters = PackParameters(ReaderConnectionToStr(record));
    row.connectionType = ConnectionTypes::codeOfType(record.ConnectionType);
    list->post();
}

inline void selectConnection(TSqlFrm *frame, const QString &name)
{
    ConnectionList *list = frame->mdsConnections();
    for (int i = 0; i < list->count(); ++i) {
        if (list->row(i).connectionName == name)
            list->setCurrentIndex(i);
    }
}

// Lets the tab's run service finish what it was asked to do; the window stays live meanwhile.
inline bool waitIdle(TSqlFrm *frame, int timeoutMs = 30000)
{
    return QTest::qWaitFor([frame] { return !frame->isRunning(); }, timeoutMs);
}

inline void run(TSqlFrm *frame, const QString &sql)
{
    frame->editor()->setText(sql);
    frame->ToolButton7Click();
    QVERIFY(waitIdle(frame));
}

// Loads the table list of the current connection, as a click on the connection grid does.
inline void listTables(TSqlFrm *frame)
{
    frame->cbConListClick();
    QVERIFY(waitIdle(frame));
}

// Shows the rows of the table chosen in the table list.
inline void clickTable(TSqlFrm *frame)
{
    frame->lbTablesListClick();
    QVERIFY(waitIdle(frame));
}

inline void runScript(TSqlFrm *frame, const QString &script)
{
    frame->editor()->setText(script);
    frame->tbRunScriptClick();
    QVERIFY(waitIdle(frame));
}

inline const LogEntry &lastLog(TSqlFrm *frame)
{
    const ExecutionLog *log = frame->log()->table();
    Q_ASSERT(log->count() > 0);
    return log->row(log->count() - 1);
}

// Collects the status texts posted to a window, in the order they arrive.
class StatusRecorder : public QObject
{
public:
    explicit StatusRecorder(QObject *window) { window->installEventFilter(this); }
    QStringList texts;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == StatusMessageEvent::kType)
            texts << static_cast<StatusMessageEvent *>(event)->text();
        return false;
    }
};

} // namespace WorkspaceDriver
