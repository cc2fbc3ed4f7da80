// Range of depths, in centimetres, in which the camera's values can be relied on.
#pragma once

#include <cstdint>

namespace mft_core
{

inline constexpr std::uint32_t kMinReliableDepthCm = 20;
inline constexpr std::uint32_t kMaxReliableDepthCm = 150;

} // namespace mft_core
