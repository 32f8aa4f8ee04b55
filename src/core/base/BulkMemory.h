#pragma once
#include <cstddef>
#include <utility>

// Memory for bulk data: the columns of a result of millions of rows. Writing hundreds of
// megabytes into fresh memory one 4 KiB page fault at a time costs more than reading the rows
// from the database, and growing a buffer by copying it pays those faults again for every copy.
// So a large buffer lives in a reserved range of address space that it grows into in place,
// 2 MiB at a time, asking the system for huge pages and mapping each step in one call; a small
// one stays on the heap. Where the system offers none of this the buffer is an ordinary heap
// block that grows by copying.
namespace BulkMemory {

struct Region
{
    char *data = nullptr;
    size_t capacity = 0; // bytes that may be written
    size_t mapped = 0;   // bytes of address space held (reserved or fixed); 0 on the heap
    bool fixed = false;  // made by allocateFixed: never grows
};

// Makes room for at least `bytes` in `region`, keeping its content; throws std::bad_alloc.
void grow(Region &region, size_t bytes);
// Hands back what lies beyond the first `bytes` (rounded up to a page), keeping the rest.
void shrink(Region &region, size_t bytes);
// A block of exactly `bytes` or more that will not grow (a block of packed texts).
Region allocateFixed(size_t bytes);
void release(Region &region);

} // namespace BulkMemory

// A block of BulkMemory that keeps its size (a block of packed texts), released with its owner.
class BulkBlock
{
public:
    explicit BulkBlock(size_t bytes) : m_region(BulkMemory::allocateFixed(bytes)) {}
    ~BulkBlock() { BulkMemory::release(m_region); }
    BulkBlock(const BulkBlock &) = delete;
    BulkBlock &operator=(const BulkBlock &) = delete;
    BulkBlock(BulkBlock &&other) noexcept : m_region(std::exchange(other.m_region, {})) {}
    BulkBlock &operator=(BulkBlock &&other) noexcept
    {
        if (this != &other) {
            BulkMemory::release(m_region);
            m_region = std::exchange(other.m_region, {});
        }
        return *this;
    }

    char *data() const { return m_region.data; }
    size_t capacity() const { return m_region.capacity; }
    // Gives back the memory beyond the first `bytes`.
    void shrink(size_t bytes) { BulkMemory::shrink(m_region, bytes); }

private:
    BulkMemory::Region m_region;
};
