// The length check of the private property handlers.
#pragma once

#include <windows.h>

#include <cstdint>
#include <limits>

namespace mft_core
{

// Lengths come from applications: sums of them are made in 64 bits, so that none wraps.
// ERROR_MORE_DATA as an HRESULT when the buffer is shorter than needed.
constexpr HRESULT CheckLength(ULONG dataLength, std::uint64_t neededLength) noexcept
{
    return dataLength < neededLength ? HRESULT_FROM_WIN32(ERROR_MORE_DATA) : S_OK;
}

// A needed length as a caller hears it: what no ULONG can hold reads as the largest one.
constexpr ULONG SaturatedLength(std::uint64_t neededLength) noexcept
{
    constexpr std::uint64_t kMost = std::numeric_limits<ULONG>::max();
    return static_cast<ULONG>(neededLength < kMost ? neededLength : kMost);
}

} // namespace mft_core
