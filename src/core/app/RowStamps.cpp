#include "core/app/RowStamps.h"

#include "core/base/LogonUser.h"

void stampCreated(RowStamps &stamps)
{
    stamps.createdBy = LogonUser::name();
    stamps.created = QDateTime::currentDateTime();
}

void stampChanged(RowStamps &stamps)
{
    stamps.changedBy = LogonUser::name();
    stamps.changed = QDateTime::currentDateTime();
}
