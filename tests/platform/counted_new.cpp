// Counts how often this program asks for memory with new, from any thread. Out of the sight of those who ask: the compiler
// pairs what it sees of new and delete.
#include <atomic>
#include <cstdlib>
#include <new>

namespace rbk::test {
std::atomic<int> allocations;
}

void* operator new(std::size_t size)
{
    ++rbk::test::allocations;
    if (void* block = std::malloc(size)) return block;
    throw std::bad_alloc();
}

void operator delete(void* block) noexcept
{
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    std::free(block);
}
