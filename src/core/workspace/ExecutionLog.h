#pragma once
#include <QList>
#include <QObject>
#include <QString>
#include <QTime>

// One row of a tab's execution log.
struct LogEntry
{
    int number = 0;        // "N:", running number within the log
    int status = 0;        // 0 success or not finished, 1 warning, 2 error
    QTime time;            // when the row was created (start of execution)
    QString sql;           // the statement exactly as executed
    QString message;       // "OK." or the error text
    QTime timeEnd;         // set at every post of the row

    // TimeEnd minus Time in milliseconds. Not corrected across midnight (it goes negative).
    qint64 timeTakenMs() const { return time.msecsTo(timeEnd); }
};

// The in-memory log of one tab. Appending is constant time however long the log grows.
class ExecutionLog : public QObject
{
    Q_OBJECT
public:
    explicit ExecutionLog(QObject *parent = nullptr);

    int count() const { return int(m_rows.size()); }
    const LogEntry &row(int index) const { return m_rows.at(index); }
    const QList<LogEntry> &rows() const { return m_rows; }

    // Appends a row for `sql` with status 0; both times are now.
    void SetSQL(const QString &sql);
    // Stores the outcome on the last appended row; throws VantryError on an empty log.
    void SetMessage(const QString &message, int status);
    // Drops every row; numbering restarts at 1.
    void clear();

    // The text view's form of a statement or message: white space (codes below 33) cut off both ends.
    static QString trimmedForText(const QString &text);
    // "HH:mm:ss" of a time of day, and of a (possibly negative) duration in milliseconds.
    static QString formatTime(const QTime &time);
    static QString formatDuration(qint64 ms);

signals:
    void rowAppended(int index);
    void rowChanged(int index);
    void cleared();

private:
    QList<LogEntry> m_rows;
    int m_nextNumber = 1;
};
