// Every platform and camera call fails in turn: a clean error, nothing left behind, and the next try works.
#include "core/PassThroughDeviceMft.h"

#include <functional>

#include <gtest/gtest.h>

#include "tests/core/FailingPlatform.h"
#include "tests/support/TestFrameServer.h"

using mft_core::PassThroughDeviceMft;
using tarn_sim::SimulatedCamera;
using tarn_test::FailingPlatform;
using tarn_test::SteppedCamera;
using user_space_frameworks::MakeCom;

namespace
{

// From creation to release; returns the first failure and goes no further than a frame server would.
// `onlyShutdownLeft` is called when everything but the shutdown has been done.
HRESULT Scenario(
    SimulatedCamera *camera, const std::function<void()> &onlyShutdownLeft = [] {})
{
    const ComPtr<IMFDeviceTransform> transform = MakeCom<PassThroughDeviceMft>("Test DMFT");
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
        ComPtr<IMFMediaType> type;
        result = transform->GetOutputAvailableType(0, 0, &type);
        for (const auto state : {DeviceStreamState_Run, DeviceStreamState_Stop, DeviceStreamState_Run})
        {
            if (SUCCEEDED(result))
            {
                result = transform->SetOutputStreamState(0, type.Get(), state, 0);
                DeviceStreamState reached = DeviceStreamState_Disabled;
                EXPECT_HR(S_OK, transform->GetOutputStreamState(0, &reached));
                if (SUCCEEDED(result))
                {
                    EXPECT_EQ(state, reached);
                }
                else if (state == DeviceStreamState_Run)
                {
                    EXPECT_EQ(DeviceStreamState_Stop, reached); // reported stopped, not stalled
                }
            }
        }
    }
    onlyShutdownLeft();
    ComPtr<IMFShutdown> shutdown;
    EXPECT_HR(S_OK, transform.As(&shutdown));
    const HRESULT ended = shutdown->Shutdown();
    shutdown.Reset();
    EXPECT_REFS(transform, 1);
    return FAILED(result) ? result : ended;
}

TEST(FailureTest, EveryPlatformCallMayFail)
{
    int failures = 0;
    for (int call = 1;; ++call)
    {
        auto camera = SteppedCamera();
        const FailingPlatform platform(call);
        bool failedEarly = false;
        const HRESULT result = Scenario(camera.Get(), [&] { failedEarly = platform.HasFailed(); });
        EXPECT_REFS(camera, 1);
        if (!platform.HasFailed())
        {
            EXPECT_HR(S_OK, result);
            break;
        }
        // A shutdown that cannot announce the pin's stop goes on.
        EXPECT_HR(failedEarly ? E_OUTOFMEMORY : S_OK, result) << "call " << call << ", " << platform.FailedCall();
        ++failures;
    }
    EXPECT_GT(failures, 10); // event queue, attribute stores, media types, events
}

TEST(FailureTest, EveryAllocationMayFail)
{
    int failures = 0;
    for (int allocation = 1;; ++allocation)
    {
        auto camera = SteppedCamera();
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
        EXPECT_REFS(camera, 1);
        if (!failed)
        {
            EXPECT_HR(S_OK, result);
            break;
        }
        ++failures;
    }
    EXPECT_GT(failures, 10);
}

TEST(FailureTest, EveryCallOfTheCamerasFilterMayFail)
{
    int failures = 0;
    for (std::uint32_t call = 1;; ++call)
    {
        auto camera = SteppedCamera();
        tarn_sim::FaultPlan plan;
        plan.transformCall = {call, E_ABORT, false};
        camera->SetFaultPlan(plan);
        const HRESULT result = Scenario(camera.Get());
        EXPECT_REFS(camera, 1);
        std::uint64_t calls = 0;
        for (const auto method :
             {tarn_sim::Method::GetStreamCount, tarn_sim::Method::GetStreamIDs,
              tarn_sim::Method::GetOutputStreamAttributes, tarn_sim::Method::GetOutputAvailableType})
        {
            calls += camera->Calls(method);
        }
        if (calls < call)
        {
            EXPECT_HR(S_OK, result);
            break;
        }
        // A pin without attributes is no reason to refuse the camera; any other failure is handed on as it is.
        EXPECT_TRUE(result == E_ABORT || result == S_OK) << std::hex << result;
        failures += FAILED(result) ? 1 : 0;
    }
    EXPECT_GE(failures, 4);
}

} // namespace
