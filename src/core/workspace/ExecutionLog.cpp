#include "core/workspace/ExecutionLog.h"

#include "core/base/VantryError.h"

ExecutionLog::ExecutionLog(QObject *parent)
    : QObject(parent)
{
}

void ExecutionLog::SetSQL(const QString &sql)
{
    LogEntry entry;
    entry.number = m_nextNumber++;
    entry.time = QTime::currentTime();
    entry.timeEnd = entry.time;
    entry.sql = sql;
    m_rows.append(entry);
    emit rowAppended(int(m_rows.size()) - 1);
}

void ExecutionLog::SetMessage(const QString &message, int status)
{
    if (m_rows.isEmpty())
        throw VantryError(QStringLiteral("The execution log has no statement to attach the message \"%1\" to.").arg(message));
    LogEntry &entry = m_rows.last();
    entry.message = message;
    entry.status = status;
    entry.timeEnd = QTime::currentTime();
    emit rowChanged(int(m_rows.size()) - 1);
}

void ExecutionLog::clear()
{
    m_rows.clear();
    m_nextNumber = 1;
    emit cleared();
}

QString ExecutionLog::trimmedForText(const QString &text)
{
    int begin = 0;
    int end = int(text.size());
    while (begin < end && text.at(begin).unicode() < 33)
        ++begin;
    while (end > begin && text.at(end - 1).unicode() < 33)
        --end;
    return text.mid(begin, end - begin);
}

QString ExecutionLog::formatTime(const QTime &time)
{
    return time.isValid() ? time.toString(QStringLiteral("HH:mm:ss")) : QString();
}

QString ExecutionLog::formatDuration(qint64 ms)
{
    const bool negative = ms < 0;
    const qint64 seconds = (negative ? -ms : ms) / 1000;
    const QString text = QStringLiteral("%1:%2:%3")
                             .arg(seconds / 3600, 2, 10, QLatin1Char('0'))
                             .arg((seconds / 60) % 60, 2, 10, QLatin1Char('0'))
                             .arg(seconds % 60, 2, 10, QLatin1Char('0'));
    return negative ? QLatin1Char('-') + text : text;
}
