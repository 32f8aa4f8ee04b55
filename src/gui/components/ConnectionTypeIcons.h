#pragma once
#include <QIcon>
#include <QString>

// The picture of each connection type: a coloured badge with a short tag, drawn once and cached.
namespace ConnectionTypeIcons {

// By the type's position in the connection dialog's type list (0 to 8).
QIcon forIndex(int dialogIndex);
// By the CONNECTION_TYPE code stored in the catalogue (unknown codes get a neutral badge).
QIcon forCode(int connectionTypeCode);
QString nameForCode(int connectionTypeCode);

} // namespace ConnectionTypeIcons
