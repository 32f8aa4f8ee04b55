#include "core/base/BulkMemory.h"

#include <QtGlobal>
#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#ifdef Q_OS_LINUX
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

// Below this a buffer stays on the heap: a small result should not hold a huge page per column.
constexpr size_t MapFrom = 64 * 1024;
// The step a reserved range is made usable in, and the size of a huge page.
constexpr size_t Step = 2 * 1024 * 1024;
// Address space a growing buffer reserves (1 GiB holds 128 million 8-byte values); only what it
// has grown into is memory. A buffer that outgrows it moves once into a range four times larger.
constexpr size_t Reservation = size_t(1) << 30;

size_t roundUp(size_t bytes, size_t unit)
{
    return (bytes + unit - 1) / unit * unit;
}

void growOnHeap(BulkMemory::Region &region, size_t bytes)
{
    const size_t capacity = std::max({bytes, region.capacity * 2, size_t(256)});
    void *data = std::realloc(region.data, capacity);
    if (!data)
        throw std::bad_alloc();
    region.data = static_cast<char *>(data);
    region.capacity = capacity;
}

#ifdef Q_OS_LINUX

size_t pageSize()
{
    static const size_t size = size_t(sysconf(_SC_PAGESIZE));
    return size;
}

// Address space of `bytes` (a multiple of Step) starting on a Step boundary, so that huge pages
// can back it; none of it is memory yet. An empty region when the system refuses.
BulkMemory::Region reserve(size_t bytes)
{
    void *start = mmap(nullptr, bytes + Step, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (start == MAP_FAILED)
        return {};
    char *const first = static_cast<char *>(start);
    char *const aligned = reinterpret_cast<char *>(roundUp(reinterpret_cast<size_t>(first), Step));
    if (aligned > first)
        munmap(first, size_t(aligned - first));
    const size_t tail = size_t(first + bytes + Step - (aligned + bytes));
    if (tail)
        munmap(aligned + bytes, tail);
    // Only a hint: where huge pages are off, the range is backed by ordinary pages.
    madvise(aligned, bytes, MADV_HUGEPAGE);
    BulkMemory::Region region;
    region.data = aligned;
    region.mapped = bytes;
    return region;
}

// Makes [capacity, target) of a mapped region usable and maps its pages in one call rather than
// one fault per page; the caller writes to it right away.
void commit(BulkMemory::Region &region, size_t target)
{
    char *const from = region.data + region.capacity;
    const size_t length = target - region.capacity;
    if (mprotect(from, length, PROT_READ | PROT_WRITE) != 0)
        throw std::bad_alloc();
#ifdef MADV_POPULATE_WRITE
    // Failing (an older kernel, memory short) only means the pages fault in one by one.
    madvise(from, length, MADV_POPULATE_WRITE);
#endif
    region.capacity = target;
}

void growMapped(BulkMemory::Region &region, size_t bytes)
{
    if (bytes <= region.mapped) {
        const size_t wanted = std::max(bytes, region.capacity + region.capacity / 8);
        commit(region, std::min(region.mapped, roundUp(wanted, Step)));
        return;
    }
    BulkMemory::Region larger = reserve(roundUp(std::max(bytes * 2, region.mapped * 4), Step));
    if (!larger.data)
        throw std::bad_alloc();
    commit(larger, roundUp(bytes, Step));
    std::memcpy(larger.data, region.data, region.capacity);
    BulkMemory::release(region);
    region = larger;
}

#endif

} // namespace

void BulkMemory::grow(Region &region, size_t bytes)
{
    if (bytes <= region.capacity)
        return;
    if (region.fixed) {
        Region moved;
        grow(moved, bytes);
        std::memcpy(moved.data, region.data, region.capacity);
        release(region);
        region = moved;
        return;
    }
#ifdef Q_OS_LINUX
    if (region.mapped) {
        growMapped(region, bytes);
        return;
    }
    if (bytes >= MapFrom) {
        Region reserved = reserve(std::max(Reservation, roundUp(bytes * 2, Step)));
        if (reserved.data) {
            commit(reserved, roundUp(bytes, Step));
            if (region.capacity)
                std::memcpy(reserved.data, region.data, region.capacity);
            std::free(region.data);
            region = reserved;
            return;
        }
    }
#endif
    growOnHeap(region, bytes);
}

void BulkMemory::shrink(Region &region, size_t bytes)
{
    if (bytes >= region.capacity)
        return;
    if (!region.mapped) {
        if (bytes == 0) {
            release(region);
            return;
        }
        // Shrinking a heap block never moves it in practice, and keeps it valid when it does.
        if (void *data = std::realloc(region.data, bytes)) {
            region.data = static_cast<char *>(data);
            region.capacity = bytes;
        }
        return;
    }
#ifdef Q_OS_LINUX
    const size_t keep = roundUp(bytes, pageSize());
    if (keep >= region.capacity)
        return;
    if (region.fixed) {
        munmap(region.data + keep, region.mapped - keep);
        region.mapped = keep;
    } else {
        // Mapping the tail afresh gives its pages back and keeps the range reserved, so that a
        // later batch of rows still grows in place.
        void *tail = mmap(region.data + keep, region.capacity - keep, PROT_NONE,
                          MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE | MAP_FIXED, -1, 0);
        if (tail == MAP_FAILED)
            return;
        madvise(tail, region.capacity - keep, MADV_HUGEPAGE);
    }
    region.capacity = keep;
#endif
}

BulkMemory::Region BulkMemory::allocateFixed(size_t bytes)
{
    Region region;
#ifdef Q_OS_LINUX
    if (bytes >= Step) {
        region = reserve(roundUp(bytes, Step));
        if (region.data) {
            commit(region, region.mapped);
            region.fixed = true;
            return region;
        }
    }
#endif
    growOnHeap(region, bytes);
    region.fixed = true;
    return region;
}

void BulkMemory::release(Region &region)
{
#ifdef Q_OS_LINUX
    if (region.mapped)
        munmap(region.data, region.mapped);
    else
#endif
        std::free(region.data);
    region = Region();
}
