#include "nodes/FrameSize.h"

#include <limits>
#include <stdexcept>

namespace mft_core
{

FrameSize::FrameSize(std::int64_t frameWidth, std::int64_t frameHeight, std::uint32_t bytesNeededPerPixel)
    : width(static_cast<std::uint32_t>(frameWidth)), height(static_cast<std::uint32_t>(frameHeight))
{
    if (frameWidth <= 0 || frameHeight <= 0)
    {
        throw std::invalid_argument("frame size must be above 0");
    }
    if (frameHeight > std::int64_t{std::numeric_limits<std::uint32_t>::max()} / bytesNeededPerPixel / frameWidth)
    {
        throw std::invalid_argument("frame size exceeds 32 bits");
    }
}

} // namespace mft_core
