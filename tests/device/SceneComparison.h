// Samples against the rendered scene, pixel by pixel.
#pragma once

#include <cmath>
#include <cstring>

#include "sim/GeneratedScene.h"
#include "tarn/frame_metadata.h"
#include "tarn/sample_attributes.h"
#include "tests/device/DepthFrameServer.h"

namespace tarn_test
{

// What the camera saw in this frame.
inline tarn_sim::FrameRequest RequestOf(const ComPtr<IMFSample> &sample)
{
    TARN_FRAME_METADATA record{};
    EXPECT_TRUE(HasBlob(sample, TARN_SAMPLE_FRAME_METADATA, record));
    return {record.frameCounter, record.width, record.height, record.illumination != 0};
}

// Number of pixels that differ from the scene, the output being the centre of what the camera saw. The first
// width * height values of the buffer count.
inline std::size_t WrongDepths(const ComPtr<IMFSample> &sample, UINT32 width, UINT32 height)
{
    const tarn_sim::FrameRequest request = RequestOf(sample);
    const std::vector<BYTE> pixels = PixelsOf(sample);
    EXPECT_GE(pixels.size(), std::size_t{width} * height * 2);
    std::size_t wrong = 0;
    for (UINT32 y = 0; y < height; ++y)
    {
        for (UINT32 x = 0; x < width; ++x)
        {
            std::uint16_t depth = 0;
            std::memcpy(&depth, pixels.data() + (std::size_t{y} * width + x) * 2, sizeof(depth));
            wrong += depth != tarn_sim::GeneratedScene::DepthEighthMm(request, x + (request.width - width) / 2,
                                                                      y + (request.height - height) / 2)
                         ? 1
                         : 0;
        }
    }
    return wrong;
}

inline std::size_t WrongInfrared(const ComPtr<IMFSample> &sample, UINT32 width, UINT32 height)
{
    const tarn_sim::FrameRequest request = RequestOf(sample);
    const std::vector<BYTE> pixels = PixelsOf(sample);
    EXPECT_EQ(std::size_t{width} * height, pixels.size());
    std::size_t wrong = 0;
    for (UINT32 y = 0; y < height; ++y)
    {
        for (UINT32 x = 0; x < width; ++x)
        {
            const int tenBits = tarn_sim::GeneratedScene::Infrared(request, x + (request.width - width) / 2,
                                                                   y + (request.height - height) / 2);
            const auto expected = std::lround(tenBits * 64 * 255.0 / 65535);
            wrong += pixels[std::size_t{y} * width + x] != expected ? 1 : 0;
        }
    }
    return wrong;
}

} // namespace tarn_test
