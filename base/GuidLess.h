// Order of GUIDs for maps.
#pragma once

#include <windows.h>

#include <cstring>

namespace mft_utils
{

// Any strict order: by the bytes as they lie in memory.
struct GuidLess
{
    bool operator()(const GUID &a, const GUID &b) const noexcept
    {
        return std::memcmp(&a, &b, sizeof(GUID)) < 0;
    }
};

} // namespace mft_utils
