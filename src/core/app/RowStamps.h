#pragma once
#include <QDateTime>
#include <QString>

// A stamp time: a local date and time, or as read from the catalogue its ISO text, made a
// QDateTime only when used. Making one costs the C library a look at the time zone file, and
// reading a thousand connections at start-up would otherwise make two thousand.
class StampTime
{
public:
    StampTime() = default;
    // Implicit, as stamps are set from QDateTime::currentDateTime() and read as QDateTimes.
    StampTime(const QDateTime &time) : m_time(time) {}
    static StampTime fromText(const QString &text)
    {
        StampTime stamp;
        stamp.m_text = text;
        return stamp;
    }

    QDateTime dateTime() const { return m_text.isNull() ? m_time : QDateTime::fromString(m_text, Qt::ISODateWithMs); }
    operator QDateTime() const { return dateTime(); }
    bool isValid() const { return dateTime().isValid(); }

    friend bool operator==(const StampTime &a, const StampTime &b) { return a.dateTime() == b.dateTime(); }
    friend bool operator!=(const StampTime &a, const StampTime &b) { return !(a == b); }
    friend bool operator<(const StampTime &a, const StampTime &b) { return a.dateTime() < b.dateTime(); }
    friend bool operator>=(const StampTime &a, const StampTime &b) { return !(a < b); }

private:
    QString m_text; // not null when read from the catalogue
    QDateTime m_time;
};

// Who created and last changed a catalogue row, and when (CREATED, CREATED_BY, CHANGED, CHANGED_BY).
struct RowStamps
{
    StampTime created;
    QString createdBy;
    StampTime changed;
    QString changedBy;
};

// The two stamping operations shared by every dataset with these four columns: the logon user
// first, then the local date and time.
void stampCreated(RowStamps &stamps);
void stampChanged(RowStamps &stamps);
