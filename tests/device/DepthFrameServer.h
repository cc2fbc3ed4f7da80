// The test frame server over a depth transform, with the properties that applications use.
#pragma once

#include "platform/ExtendedCameraControl.h"

#include "sim/CameraIdentifiers.h"
#include "tarn/tarn_dmft.h"
#include "tests/support/TestFrameServer.h"
#include "tools/frameserver/TransformKind.h"

namespace tarn_test
{

inline constexpr DWORD kDepth = tarn_host::kDepthOutput;
inline constexpr DWORD kInfrared = tarn_host::kInfraredOutput;

class DepthFrameServer : public TestFrameServer
{
  public:
    using TestFrameServer::TestFrameServer;

    // The usual camera, or one that differs from it.
    static tarn_sim::CameraConfiguration SteppedTarnDepth(
        const std::function<void(tarn_sim::CameraConfiguration &)> &change = [](auto &) {})
    {
        auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
        configuration.pacing = tarn_sim::Pacing::Stepped;
        configuration.buffersPerPin = 64;
        change(configuration);
        return configuration;
    }

    // What the pin runs with, for example "INZI 640x480@30"; "stopped" when it does not run.
    std::string Pin()
    {
        if (camera->Pins().GetPinState(0) != DeviceStreamState_Run)
        {
            return "stopped";
        }
        ComPtr<IMFMediaType> type;
        EXPECT_HR(S_OK, transform->GetInputCurrentType(0, &type));
        return tarn_host::FrameFormat::Of(*type.Get()).ToText();
    }

    // One of the private properties that hold a number.
    HRESULT SetProperty(ULONG id, UINT32 value)
    {
        return SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, KSPROPERTY_TYPE_SET, &value, sizeof(value));
    }
    UINT32 Property(ULONG id)
    {
        UINT32 value = 0xFFFFFFFF;
        EXPECT_HR(S_OK,
                  SendProperty(KSPROPERTYSETID_TARN_DMFT_CONTROL, id, KSPROPERTY_TYPE_GET, &value, sizeof(value)));
        return value;
    }

    HRESULT SetConfidenceMap(bool enable)
    {
        const HRESULT result = SetProperty(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, enable ? 1 : 0);
        Pump();
        return result;
    }
    bool HasConfidenceMap() { return Property(KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP) != 0; }

    HRESULT SetFaceLogin(bool on)
    {
        struct
        {
            KSCAMERA_EXTENDEDPROP_HEADER header;
            KSCAMERA_EXTENDEDPROP_VALUE value;
        } mode{};
        mode.header.Flags = on ? KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION
                               : KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_DISABLED;
        return SendProperty(KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE,
                            KSPROPERTY_TYPE_SET, &mode, sizeof(mode));
    }

    // What applications want.
    UINT32 Preset() { return Property(KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS); }
};

} // namespace tarn_test
