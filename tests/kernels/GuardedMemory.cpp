#include "tests/kernels/GuardedMemory.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#endif

#include <new>

namespace mft_kernels
{
namespace
{
constexpr std::size_t kPage = 4096;

#if defined(_WIN32)
std::uint8_t *Reserve(std::size_t size)
{
    return static_cast<std::uint8_t *>(VirtualAlloc(nullptr, size, MEM_RESERVE, PAGE_NOACCESS));
}
bool Open(std::uint8_t *start, std::size_t size)
{
    return VirtualAlloc(start, size, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}
void Free(std::uint8_t *start, std::size_t)
{
    VirtualFree(start, 0, MEM_RELEASE);
}
#else
std::uint8_t *Reserve(std::size_t size)
{
    void *start = mmap(nullptr, size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    return start == MAP_FAILED ? nullptr : static_cast<std::uint8_t *>(start);
}
bool Open(std::uint8_t *start, std::size_t size)
{
    return mprotect(start, size, PROT_READ | PROT_WRITE) == 0;
}
void Free(std::uint8_t *start, std::size_t size)
{
    munmap(start, size);
}
#endif
} // namespace

GuardedMemory::GuardedMemory(std::size_t size) : usable((size / kPage + 1) * kPage)
{
    pages = Reserve(usable + 2 * kPage);
    if (pages == nullptr || !Open(pages + kPage, usable))
    {
        throw std::bad_alloc();
    }
}

GuardedMemory::~GuardedMemory()
{
    Free(pages, usable + 2 * kPage);
}

std::uint8_t *GuardedMemory::Begin() const
{
    return pages + kPage;
}

std::uint8_t *GuardedMemory::End() const
{
    return Begin() + usable;
}
} // namespace mft_kernels
