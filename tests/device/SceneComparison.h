// What the transform must make of the generated scene.
#pragma once

#include <cmath>

#include "sim/GeneratedScene.h"
#include "tests/device/DepthFrameServer.h"
#include "tools/frameserver/LockedFrame.h"
#include "tools/frameserver/SampleDetails.h"

namespace tarn_test
{

// Keeps its backgrounds from one picture to the next.
inline tarn_sim::GeneratedScene &Scene()
{
    static tarn_sim::GeneratedScene scene;
    return scene;
}

// What the camera saw in this frame.
inline tarn_sim::FrameRequest RequestOf(const ComPtr<IMFSample> &sample)
{
    const auto record = tarn_host::SampleDetails::Of(*sample.Get()).record;
    EXPECT_TRUE(record);
    return record
               ? tarn_sim::FrameRequest{record->frameCounter, record->width, record->height, record->illumination != 0}
               : tarn_sim::FrameRequest{};
}

// Whether every pixel is the scene's: the output shows the centre of what the camera saw, depth as it is, infrared in
// 8 bits. The first width * height pixels of the buffer count.
inline bool ShowsScene(DWORD output, const ComPtr<IMFSample> &sample, UINT32 width, UINT32 height)
{
    static const std::array<BYTE, 1024> kEightBits = [] {
        std::array<BYTE, 1024> table{};
        for (std::size_t tenBits = 0; tenBits < table.size(); ++tenBits)
        {
            table[tenBits] = static_cast<BYTE>(std::lround(static_cast<double>(tenBits * 64) * 255.0 / 65535));
        }
        return table;
    }();
    const tarn_sim::FrameRequest request = RequestOf(sample);
    std::vector<std::uint16_t> plane(std::size_t{request.width} * request.height);
    Scene().Render(request, output == kDepth ? tarn_sim::Plane::DepthEighthMm : tarn_sim::Plane::Infrared,
                   reinterpret_cast<std::uint8_t *>(plane.data()));
    const tarn_host::LockedFrame frame(*sample.Get());
    const std::size_t rowBytes = std::size_t{width} * (output == kDepth ? 2 : 1);
    bool isEqual = frame.Bytes().size() >= rowBytes * height;
    for (UINT32 y = 0; isEqual && y < height; ++y)
    {
        const auto *const shown = reinterpret_cast<const BYTE *>(frame.Bytes().data()) + y * rowBytes;
        const std::uint16_t *const seen =
            &plane.at(std::size_t{y + (request.height - height) / 2} * request.width + (request.width - width) / 2);
        isEqual = output == kDepth ? std::memcmp(seen, shown, rowBytes) == 0
                                   : std::equal(seen, seen + width, shown, [](std::uint16_t tenBits, BYTE pixel) {
                                         return kEightBits[tenBits % kEightBits.size()] == pixel;
                                     });
    }
    return isEqual;
}

// Whether the sample carries the scene's confidence in 16 levels, in front of the rest of its plane.
inline bool HasConfidenceOfScene(const ComPtr<IMFSample> &sample)
{
    const tarn_sim::FrameRequest request = RequestOf(sample);
    Bytes expected(std::size_t{request.width} * request.height);
    Scene().Render(request, tarn_sim::Plane::Confidence, expected.data());
    std::transform(expected.begin(), expected.end(), expected.begin(),
                   [](BYTE raw) { return static_cast<BYTE>(std::clamp(raw - 15, 0, 127) / 8); });
    const Bytes map = tarn_host::SampleDetails::Of(*sample.Get()).confidence;
    return map.size() == 2 * expected.size() && std::equal(expected.begin(), expected.end(), map.begin());
}

} // namespace tarn_test
