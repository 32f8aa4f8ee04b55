#pragma once
#include "core/base/BulkMemory.h"

#include <type_traits>
#include <utility>

// A growing array of plain values kept in BulkMemory: appending millions of values never copies
// the ones already there once the array is large, and its pages are mapped in large steps.
template<typename T>
class BulkArray
{
    static_assert(std::is_trivially_copyable_v<T>, "BulkArray moves its values as bytes");

public:
    BulkArray() = default;
    ~BulkArray() { BulkMemory::release(m_region); }
    BulkArray(const BulkArray &) = delete;
    BulkArray &operator=(const BulkArray &) = delete;
    BulkArray(BulkArray &&other) noexcept
        : m_region(std::exchange(other.m_region, {})), m_size(std::exchange(other.m_size, 0))
    {
    }
    BulkArray &operator=(BulkArray &&other) noexcept
    {
        if (this != &other) {
            BulkMemory::release(m_region);
            m_region = std::exchange(other.m_region, {});
            m_size = std::exchange(other.m_size, 0);
        }
        return *this;
    }

    size_t size() const { return m_size; }
    bool empty() const { return m_size == 0; }
    size_t capacity() const { return m_region.capacity / sizeof(T); }
    // Bytes of memory held, for the result's memory figure.
    size_t memoryBytes() const { return m_region.capacity; }

    T *begin() { return data(); }
    T *end() { return data() + m_size; }
    const T *begin() const { return data(); }
    const T *end() const { return data() + m_size; }
    T &operator[](size_t index) { return data()[index]; }
    const T &operator[](size_t index) const { return data()[index]; }
    T &back() { return data()[m_size - 1]; }

    void push_back(T value)
    {
        if (m_size == capacity())
            BulkMemory::grow(m_region, (m_size + 1) * sizeof(T));
        data()[m_size++] = value;
    }
    void reserve(size_t count)
    {
        if (count > capacity())
            BulkMemory::grow(m_region, count * sizeof(T));
    }
    // Gives back the memory beyond the values (once no more are coming).
    void shrinkToFit() { BulkMemory::shrink(m_region, m_size * sizeof(T)); }

private:
    T *data() { return reinterpret_cast<T *>(m_region.data); }
    const T *data() const { return reinterpret_cast<const T *>(m_region.data); }

    BulkMemory::Region m_region;
    size_t m_size = 0;
};
