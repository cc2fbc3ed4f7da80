// Number of kernel handles the process has open.
#pragma once

#include <windows.h>

#include <cstdint>

namespace tarn_test
{

// Tries every value in the range that a test program reaches: Wine's GetProcessHandleCount always says the same.
inline int CountHandles()
{
    constexpr std::uintptr_t kLast = 0x4000;
    int open = 0;
    for (std::uintptr_t value = 4; value < kLast; value += 4)
    {
        DWORD flags = 0;
        open += GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != FALSE;
    }
    return open;
}

} // namespace tarn_test
