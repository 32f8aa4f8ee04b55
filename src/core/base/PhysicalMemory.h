#pragma once
#include <QtGlobal>

// Bytes of physical memory of this machine; 0 when the system does not tell.
qint64 physicalMemoryBytes();
