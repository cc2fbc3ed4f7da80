// What every handler does with the raw arguments of a KS call.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstring>

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

// The answer to "how long is it?", asked by passing no room.
inline bool IsLengthAnswer(HRESULT result, ULONG dataLength) noexcept
{
    return dataLength == 0 && result == HRESULT_FROM_WIN32(ERROR_MORE_DATA);
}

inline ULONG FlagsOf(const KSIDENTIFIER *request) noexcept
{
    return ReadBlock<KSIDENTIFIER>(request).Flags;
}

} // namespace mft_core
