// Every platform and camera call fails in turn: a clean error, nothing left behind, and the next session works.
#include "core/PassThroughDeviceMft.h"

#include <gtest/gtest.h>

#include "tests/core/FailureSession.h"
#include "tests/support/TestFrameServer.h"

using tarn_sim::SimulatedCamera;
using tarn_test::Failing;

namespace
{

HRESULT StartStopStart(IMFDeviceTransform *transform)
{
    ComPtr<IMFMediaType> type;
    HRESULT result = transform->GetOutputAvailableType(0, 0, &type);
    for (const auto state : {DeviceStreamState_Run, DeviceStreamState_Stop, DeviceStreamState_Run})
    {
        if (FAILED(result))
        {
            break;
        }
        result = transform->SetOutputStreamState(0, type.Get(), state, 0);
        DeviceStreamState reached = DeviceStreamState_Disabled;
        EXPECT_HR(S_OK, transform->GetOutputStreamState(0, &reached));
        // A start that failed is reported stopped, not stalled.
        EXPECT_EQ(SUCCEEDED(result) ? state : DeviceStreamState_Stop, reached);
    }
    return result;
}

HRESULT Session(SimulatedCamera *camera)
{
    return tarn_test::RunSession(
        [] { return user_space_frameworks::MakeCom<mft_core::PassThroughDeviceMft>("Test DMFT"); }, camera,
        StartStopStart);
}

const tarn_test::Sessions kSessions{Session, Session};

TEST(FailureTest, EveryPlatformCallMayFail)
{
    const auto camera = tarn_test::SteppedCamera();
    EXPECT_GT(tarn_test::FailEachInTurn(Failing::PlatformCall, camera.Get(), kSessions), 10);
}

TEST(FailureTest, EveryAllocationMayFail)
{
    const auto camera = tarn_test::SteppedCamera();
    EXPECT_GT(tarn_test::FailEachInTurn(Failing::Allocation, camera.Get(), kSessions), 10);
}

TEST(FailureTest, EveryCallOfTheCameraMayFail)
{
    const auto camera = tarn_test::SteppedCamera();
    EXPECT_GE(tarn_test::FailEachCameraCall(tarn_test::kTransformCalls, camera.Get(), kSessions), 4);
    // Without its topology the camera has no extension units, and works.
    EXPECT_EQ(0, tarn_test::FailEachCameraCall(tarn_test::kTopologyCalls, camera.Get(), kSessions));
}

} // namespace
