#pragma once

#include <QVector>

#include <cstddef>
#include <new>
#include <utility>

namespace TechDB {

// Memory for a database's objects, taken from large blocks and given back
// all at once when the arena is destroyed. A project holds hundreds of
// thousands of small objects that live exactly as long as the database:
// allocating them one by one costs as much as reading them from SQLite, and
// freeing them one by one more still.
class TObjectArena
{
public:
    TObjectArena() = default;
    ~TObjectArena();
    TObjectArena(const TObjectArena&) = delete;
    TObjectArena& operator=(const TObjectArena&) = delete;

    template <typename T, typename... Args>
    T* make(Args&&... args)
    {
        static_assert(alignof(T) <= Alignment, "over-aligned object");
        return new (allocate(sizeof(T))) T(std::forward<Args>(args)...);
    }
    // Runs the destructor; the memory returns with the arena.
    template <typename T>
    static void destroy(T* object)
    {
        object->~T();
    }

private:
    static const std::size_t Alignment = 16;
    // Below malloc's mmap threshold: blocks come from the heap and their
    // pages are reused by the next project instead of being mapped afresh.
    static const std::size_t BlockSize = 64 * 1024 - 64;
    void* allocate(std::size_t size);

    QVector<char*> m_blocks; // owned
    char* m_next = nullptr;  // not owned: free space in the last block
    std::size_t m_left = 0;
};

} // namespace TechDB
