// A KS call as the simulated driver saw it.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <vector>

namespace tarn_sim
{

struct KsCall
{
    enum class Kind : std::uint8_t
    {
        Property,
        Method,
        Event
    };
    Kind kind = Kind::Property;
    KSIDENTIFIER identifier{};
    ULONG identifierLength = 0;
    ULONG dataLength = 0;
    HRESULT result = S_OK;
    std::vector<std::uint8_t> data; // a set's data, at most its first 1024 bytes
};

} // namespace tarn_sim
