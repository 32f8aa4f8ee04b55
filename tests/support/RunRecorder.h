#pragma once
// Everything a run service reports, in the order it arrives, for tests that drive one.
#include "core/workspace/ResultTable.h"
#include "core/workspace/RunService.h"

#include <QList>
#include <QPair>
#include <QStringList>
#include <QtTest>

#include <memory>

struct RunRecorder
{
    QStringList statements;
    QList<QPair<QString, int>> messages;
    std::shared_ptr<ResultTable> table;
    bool more = false;
    QStringList stops;

    explicit RunRecorder(RunService &run)
    {
        QObject::connect(&run, &RunService::statementStarted, [this](const QString &s) { statements << s; });
        QObject::connect(&run, &RunService::messageLogged,
                         [this](const QString &m, int level) { messages << qMakePair(m, level); });
        QObject::connect(&run, &RunService::resultOpened,
                         [this](std::shared_ptr<ResultTable> t, const ResultSource &, bool moreRemain) {
                             table = std::move(t);
                             more = moreRemain;
                         });
        QObject::connect(&run, &RunService::rowsFetched, [this](std::shared_ptr<ResultTable> batch, bool moreRemain) {
            table->appendBatch(std::move(*batch), moreRemain);
            more = moreRemain;
        });
        QObject::connect(&run, &RunService::fetchStopped, [this](const QString &reason) { stops << reason; });
    }
    const QPair<QString, int> &last() const { return messages.last(); }
    int errorCount() const
    {
        int n = 0;
        for (const auto &m : messages)
            n += m.second == 2;
        return n;
    }

    static bool idle(const RunService &run, int ms = 30000)
    {
        return QTest::qWaitFor([&run] { return !run.isBusy(); }, ms);
    }
};
