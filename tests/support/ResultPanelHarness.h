#pragma once
// A result panel wired to a run service over a SQLite file, as a workspace tab wires them: the
// service opens queries and the panel shows, fetches and writes back through it.
#include "TestServers.h"
#include "gui/workspace/ResultPanel.h"
#include "core/workspace/RunService.h"

#include <QtTest>
#include <memory>

struct ResultPanelHarness
{
    std::unique_ptr<RunService> run = std::make_unique<RunService>();
    std::unique_ptr<ResultPanel> panel = std::make_unique<ResultPanel>();
    QString file;

    explicit ResultPanelHarness(const QString &sqliteFile) : file(sqliteFile)
    {
        panel->setRunService(run.get(), [] { return RunService::Options(); });
        QObject::connect(run.get(), &RunService::resultOpened, panel.get(), &ResultPanel::showResult);
        QObject::connect(run.get(), &RunService::rowsFetched, panel.get(), &ResultPanel::appendRows);
    }
    ~ResultPanelHarness()
    {
        panel.reset();
        run.reset();
    }

    // Lets the service finish what it was asked to do.
    bool waitIdle() const { return QTest::qWaitFor([this] { return !run->isBusy(); }, 10000); }

    bool open(const QString &statement)
    {
        run->openTable(TestServers::sqlite(file), statement, {});
        return waitIdle() && panel->isResultOpen();
    }
};
