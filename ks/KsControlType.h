// Kind of a KS call as observers see it.
#pragma once

#include <cstdint>

namespace mft_core
{

// The numbers appear in recordings and differ from those of KsControlKind.
enum class KsControlType : std::uint32_t
{
    Event = 0,
    Property = 1,
    Method = 2
};

} // namespace mft_core
