// A scene that costs nothing: every pixel of a picture has the same value, which tells the frame's number.
#pragma once

#include <cstdint>
#include <cstring>

#include "sim/FrameSource.h"

namespace tarn_test
{

// Thread-safe.
class FlatScene : public tarn_sim::IFrameSource
{
  public:
    void Render(const tarn_sim::FrameRequest &request, tarn_sim::Plane plane, std::uint8_t *pixels) override
    {
        const std::size_t count = std::size_t{request.width} * request.height;
        switch (plane)
        {
        case tarn_sim::Plane::DepthEighthMm:
            std::memset(pixels, DepthByte(request.number), count * 2);
            break;
        case tarn_sim::Plane::Confidence:
            std::memset(pixels, 127, count);
            break;
        default:
            std::memset(pixels, InfraredByte(request.number), count * 2);
        }
    }

    // Both bytes of every depth value; never the infrared's.
    static std::uint8_t DepthByte(std::uint64_t number) { return static_cast<std::uint8_t>(0x10 + number % 64); }
    // Of 0x0101, 0x0202 or 0x0303: 10 bits.
    static std::uint8_t InfraredByte(std::uint64_t number) { return static_cast<std::uint8_t>(1 + number % 3); }
    // What becomes of it in 8 bits.
    static std::uint8_t InfraredPixel(std::uint64_t number)
    {
        const unsigned value = InfraredByte(number) * 0x0101U;
        return static_cast<std::uint8_t>((value * 64 * 255 + 65535 / 2) / 65535);
    }
};

} // namespace tarn_test
