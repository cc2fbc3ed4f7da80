// What every handler does with the raw arguments of a KS call.
#pragma once

#include <cstring>

#include "platform/MediaFoundation.h"

namespace mft_core
{

// The caller need not ask for the count.
inline void SetReturnedSize(ULONG *bytesReturned, ULONG size) noexcept
{
    if (bytesReturned != nullptr)
    {
        *bytesReturned = size;
    }
}

// An aligned copy: nothing obliges an application to align its blocks.
template <class T>
T ReadBlock(const void *source) noexcept
{
    T block;
    std::memcpy(&block, source, sizeof(block));
    return block;
}

template <class T>
void WriteBlock(void *destination, const T &block) noexcept
{
    std::memcpy(destination, &block, sizeof(block));
}

inline ULONG FlagsOf(const KSIDENTIFIER *request) noexcept
{
    return ReadBlock<KSIDENTIFIER>(request).Flags;
}

} // namespace mft_core
