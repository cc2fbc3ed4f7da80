// A frame size and rate as the user writes it, for example 640x480@30.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarn_host
{

struct VideoSize
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t framesPerSecond = 0;

    // Throws UsageError when the text is not WxH@FPS with three numbers from 1 to 16384.
    static VideoSize Parse(std::string_view text);
    std::string ToText() const;

    friend bool operator==(const VideoSize &, const VideoSize &) = default;
};

} // namespace tarn_host
