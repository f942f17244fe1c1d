// Small objects of many sizes from large blocks. The nodes of a run
// (expressions, operands) are made and dropped by the hundred thousand: one
// allocation per block of a megabyte instead of one per node, no per-node
// bookkeeping, and a dropped node's room is kept on a list for the next node
// of its size. Builds with AddressSanitizer allocate each node on its own, so
// that a use after free is still caught.
#ifndef VELCOR_MISC_SMALL_OBJECT_POOL_H
#define VELCOR_MISC_SMALL_OBJECT_POOL_H

#include <cstddef>
#include <list>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define VELCOR_POOL_OFF 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define VELCOR_POOL_OFF 1
#endif
#endif

namespace misc {

class SmallObjectPool {
public:
    void* allocate(std::size_t a_size)
    {
        std::size_t slot = slotOf(a_size);
        if (slot >= SLOTS)
            return ::operator new(a_size);
        if (FreeRoom* room = m_free[slot]) {
            m_free[slot] = room->m_next;
            return room;
        }
        std::size_t bytes = (slot + 1) * GRAIN;
        if (m_left < bytes)
            newBlock();
        void* object = m_next;
        m_next += bytes;
        m_left -= bytes;
        return object;
    }

    void release(void* a_object, std::size_t a_size)
    {
        std::size_t slot = slotOf(a_size);
        if (slot >= SLOTS) {
            ::operator delete(a_object);
            return;
        }
        FreeRoom* room = static_cast<FreeRoom*>(a_object);
        room->m_next = m_free[slot];
        m_free[slot] = room;
    }

private:
    struct FreeRoom {
        FreeRoom* m_next;
    };

    // Sizes are rounded up to the alignment of any object.
    static constexpr std::size_t GRAIN = alignof(std::max_align_t);
    static constexpr std::size_t SLOTS = 16;
    static constexpr std::size_t BLOCK_BYTES = std::size_t(2) << 20;

    static std::size_t slotOf(std::size_t a_size) { return a_size == 0 ? 0 : (a_size - 1) / GRAIN; }

    // Blocks are never given back: the pool lives as long as the process,
    // and its rooms are reused from run to run.
    void newBlock()
    {
        m_next = static_cast<char*>(allocateBlock(BLOCK_BYTES));
        m_left = BLOCK_BYTES;
    }
    // a_bytes (a power of two) on a boundary of a_bytes, from the system.
    static void* allocateBlock(std::size_t a_bytes);

    FreeRoom* m_free[SLOTS] = {};
    char* m_next = nullptr;
    std::size_t m_left = 0;
};

// The process's pool. It is never destroyed, so that nodes that outlive the
// static objects (held by other static objects) can still be dropped.
inline SmallObjectPool& smallObjects()
{
    static SmallObjectPool* pool = new SmallObjectPool;
    return *pool;
}

// The pool as a standard allocator, for the nodes of containers that are
// made and dropped as often as expressions are (the literals and clauses of
// path conditions).
template <class T>
struct PoolAllocator {
    using value_type = T;

    PoolAllocator() = default;
    template <class U>
    PoolAllocator(const PoolAllocator<U>&) {}

#ifdef VELCOR_POOL_OFF
    T* allocate(std::size_t a_count) { return static_cast<T*>(::operator new(a_count * sizeof(T))); }
    void deallocate(T* a_object, std::size_t) { ::operator delete(a_object); }
#else
    T* allocate(std::size_t a_count) { return static_cast<T*>(smallObjects().allocate(a_count * sizeof(T))); }
    void deallocate(T* a_object, std::size_t a_count) { smallObjects().release(a_object, a_count * sizeof(T)); }
#endif

    template <class U>
    bool operator==(const PoolAllocator<U>&) const { return true; }
    template <class U>
    bool operator!=(const PoolAllocator<U>&) const { return false; }
};

// A list whose nodes come from the pool.
template <class T>
using PooledList = std::list<T, PoolAllocator<T>>;

} // namespace misc

// Class-wide allocation of a node class from the pool.
#ifdef VELCOR_POOL_OFF
#define VELCOR_POOLED_ALLOCATION
#else
#define VELCOR_POOLED_ALLOCATION                                                                    \
    static void* operator new(std::size_t a_size) { return misc::smallObjects().allocate(a_size); } \
    static void operator delete(void* a_object, std::size_t a_size) { misc::smallObjects().release(a_object, a_size); }
#endif

#endif
