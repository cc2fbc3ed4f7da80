// Size of the infrared frames that face login works on.
#pragma once

#include <cstdint>

namespace mft_core
{

inline constexpr std::uint32_t kFaceLoginSide = 360; // pixels; the frames are square

} // namespace mft_core
