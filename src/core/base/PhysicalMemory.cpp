#include "core/base/PhysicalMemory.h"

#include <unistd.h>

qint64 physicalMemoryBytes()
{
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageSize = sysconf(_SC_PAGE_SIZE);
    return pages > 0 && pageSize > 0 ? qint64(pages) * qint64(pageSize) : 0;
}
