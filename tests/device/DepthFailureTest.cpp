// Every platform call, allocation and camera call fails in turn: a clean error, nothing left behind, and the next try
// on the same camera works.
#include <new>

#include "device/TarnDepthDeviceMft.h"
#include "platform/ExtendedCameraControl.h"
#include "tests/core/FailingPlatform.h"
#include "tests/support/TestFrameServer.h"

using tarn_sim::SimulatedCamera;
using tarn_test::FailingPlatform;
using user_space_frameworks::MakeCom;

namespace
{

constexpr DWORD kDepth = 0;
constexpr DWORD kInfrared = 1;

struct Change
{
    DWORD output;
    DeviceStreamState state;
};

HRESULT Apply(const ComPtr<IMFDeviceTransform> &transform, const Change &change)
{
    ComPtr<IMFMediaType> type; // of infrared the face-login type
    const HRESULT found = transform->GetOutputAvailableType(change.output, 0, &type);
    if (FAILED(found))
    {
        return found;
    }
    const HRESULT result = transform->SetOutputStreamState(change.output, type.Get(), change.state, 0);
    DeviceStreamState reached = DeviceStreamState_Disabled;
    EXPECT_HR(S_OK, transform->GetOutputStreamState(change.output, &reached));
    if (SUCCEEDED(result))
    {
        EXPECT_EQ(change.state, reached);
    }
    else if (change.state == DeviceStreamState_Run)
    {
        EXPECT_EQ(DeviceStreamState_Stop, reached); // reported stopped, not stalled
    }
    return result;
}

HRESULT TurnOnFaceLogin(const ComPtr<IMFDeviceTransform> &transform)
{
    ComPtr<IKsControl> control;
    EXPECT_HR(S_OK, transform.As(&control));
    KSPROPERTY property{};
    property.Set = KSPROPERTYSETID_ExtendedCameraControl;
    property.Id = KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE;
    property.Flags = KSPROPERTY_TYPE_SET;
    struct
    {
        KSCAMERA_EXTENDEDPROP_HEADER header;
        KSCAMERA_EXTENDEDPROP_VALUE value;
    } mode{};
    mode.header.Flags = KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION;
    ULONG returned = 0;
    return control->KsProperty(&property, sizeof(property), &mode, sizeof(mode), &returned);
}

// From creation to shutdown through each topology; returns the first failure and goes no further.
HRESULT Scenario(SimulatedCamera *camera)
{
    const ComPtr<IMFDeviceTransform> transform = MakeCom<mft_core::TarnDepthDeviceMft>();
    ComPtr<IMFAttributes> filter;
    {
        const FailingPlatform::Pause pause; // the pipeline's own call
        EXPECT_HR(S_OK, MFCreateAttributes(&filter, 1));
        EXPECT_HR(S_OK,
                  filter->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, static_cast<IMFTransform *>(camera)));
    }
    HRESULT result = transform->InitializeTransform(filter.Get());
    if (SUCCEEDED(result))
    {
        result = TurnOnFaceLogin(transform);
    }
    for (const Change &change : {Change{kInfrared, DeviceStreamState_Run}, Change{kDepth, DeviceStreamState_Run},
                                 Change{kInfrared, DeviceStreamState_Stop}, Change{kDepth, DeviceStreamState_Stop},
                                 Change{kDepth, DeviceStreamState_Run}})
    {
        if (SUCCEEDED(result))
        {
            result = Apply(transform, change);
        }
    }
    ComPtr<IMFShutdown> shutdown;
    EXPECT_HR(S_OK, transform.As(&shutdown));
    const HRESULT ended = shutdown->Shutdown();
    shutdown.Reset();
    EXPECT_REFS(transform, 1);
    return FAILED(result) ? result : ended;
}

ComPtr<SimulatedCamera> NewCamera()
{
    auto configuration = tarn_sim::CameraConfiguration::TarnDepth();
    configuration.pacing = tarn_sim::Pacing::Stepped;
    return MakeCom<SimulatedCamera>(configuration);
}

TEST(DepthFailureTest, EveryPlatformCallMayFail)
{
    const auto camera = NewCamera();
    int failures = 0;
    for (int call = 1;; ++call)
    {
        bool failed = false;
        {
            const FailingPlatform platform(call);
            const HRESULT result = Scenario(camera.Get());
            failed = platform.HasFailed();
            // A shutdown that cannot announce the pin's stop goes on.
            EXPECT_TRUE(result == S_OK || (failed && result == E_OUTOFMEMORY))
                << "call " << call << ": " << std::hex << result;
            failures += FAILED(result) ? 1 : 0;
        }
        EXPECT_REFS(camera, 1);
        if (!failed)
        {
            break;
        }
        if (call % 10 == 0)
        {
            EXPECT_HR(S_OK, Scenario(camera.Get())) << "after call " << call;
        }
    }
    EXPECT_GT(failures, 30); // types, attributes and events
}

TEST(DepthFailureTest, EveryAllocationMayFail)
{
    int failures = 0;
    for (int allocation = 1;; ++allocation)
    {
        const auto camera = NewCamera();
        bool failed = false;
        HRESULT result = E_FAIL;
        {
            const tarn_test::FailingAllocation failing(allocation);
            try
            {
                result = Scenario(camera.Get());
            }
            catch (const std::bad_alloc &)
            {
                result = E_OUTOFMEMORY; // while the test itself created the object
            }
            failed = failing.HasFailed();
        }
        EXPECT_REFS(camera, 1) << "allocation " << allocation;
        EXPECT_TRUE(result == S_OK || (failed && result == E_OUTOFMEMORY))
            << "allocation " << allocation << ": " << std::hex << result;
        failures += FAILED(result) ? 1 : 0;
        if (!failed)
        {
            break;
        }
    }
    EXPECT_GT(failures, 100);
}

TEST(DepthFailureTest, EveryKsCallMayFail)
{
    const auto camera = NewCamera();
    int failures = 0;
    int successes = 0;
    for (std::uint32_t call = 1; call <= 120; ++call)
    {
        tarn_sim::FaultPlan plan;
        plan.ksCall = {call, E_ABORT, false};
        camera->SetFaultPlan(plan);
        const HRESULT result = Scenario(camera.Get());
        EXPECT_REFS(camera, 1);
        EXPECT_TRUE(result == S_OK || result == E_ABORT || result == E_NOINTERFACE)
            << "call " << call << ": " << std::hex << result;
        ++(FAILED(result) ? failures : successes);
    }
    EXPECT_GT(failures, 20); // the unit, the record, the presets, the event
    EXPECT_GT(successes, 0); // the last calls are never made
    camera->SetFaultPlan({});
    EXPECT_HR(S_OK, Scenario(camera.Get()));
}

} // namespace
