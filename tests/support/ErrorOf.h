#pragma once
// The message of the VantryError a call throws, or an empty text when it throws none: lets a
// test compare a refusal's wording in one line.
#include "core/base/VantryError.h"

#include <QString>

template<typename Call>
QString errorOf(Call call)
{
    try {
        call();
    } catch (const VantryError &e) {
        return e.message();
    }
    return QString();
}
