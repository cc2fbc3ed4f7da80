// A frame server over a depth transform of this process.
#pragma once

#include "device/TarnDepthDeviceMft.h"
#include "tests/device/DepthFrameServer.h"

namespace tarn_test
{

class DepthServer : public DepthFrameServer
{
  public:
    explicit DepthServer(const tarn_sim::CameraConfiguration &configuration = SteppedTarnDepth())
        : DepthServer(user_space_frameworks::MakeCom<tarn_sim::SimulatedCamera>(configuration))
    {
    }
    explicit DepthServer(const ComPtr<tarn_sim::SimulatedCamera> &simulatedCamera)
        : DepthFrameServer(user_space_frameworks::MakeCom<mft_core::TarnDepthDeviceMft>(), simulatedCamera)
    {
    }

    static tarn_sim::CameraConfiguration WithoutSubtype(const GUID &subtype)
    {
        return SteppedTarnDepth([&](auto &configuration) {
            std::erase_if(configuration.pins.front().types, [&](const ComPtr<IMFMediaType> &type) {
                GUID present{};
                return SUCCEEDED(type->GetGUID(MF_MT_SUBTYPE, &present)) && IsEqualGUID(present, subtype) != 0;
            });
        });
    }
};

} // namespace tarn_test
