#include "tobjectarena.h"

namespace TechDB {

TObjectArena::~TObjectArena()
{
    for (char* block : qAsConst(m_blocks))
        ::operator delete(block);
}

void* TObjectArena::allocate(std::size_t size)
{
    size = (size + Alignment - 1) & ~(Alignment - 1);
    if (size > m_left) {
        const std::size_t blockSize = size > BlockSize ? size : BlockSize;
        // operator new returns memory aligned for any fundamental type (16
        // bytes here), and every size handed out is a multiple of 16.
        char* block = static_cast<char*>(::operator new(blockSize));
        m_blocks.append(block);
        m_next = block;
        m_left = blockSize;
    }
    void* result = m_next;
    m_next += size;
    m_left -= size;
    return result;
}

} // namespace TechDB
