#pragma once
#include <QDateTime>
#include <QString>

// Who created and last changed a catalogue row, and when (CREATED, CREATED_BY, CHANGED, CHANGED_BY).
struct RowStamps
{
    QDateTime created;
    QString createdBy;
    QDateTime changed;
    QString changedBy;
};

// The two stamping operations shared by every dataset with these four columns: the logon user
// first, then the local date and time.
void stampCreated(RowStamps &stamps);
void stampChanged(RowStamps &stamps);
