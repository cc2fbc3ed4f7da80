// Every platform and camera call fails in turn: a clean error, nothing left behind, and the next session works.
#include "core/PassThroughDeviceMft.h"

#include "tests/core/FailureSession.h"
#include "tests/support/TestFrameServer.h"

using namespace tarn_test;
using tarn_sim::SimulatedCamera;

namespace
{

HRESULT Session(SimulatedCamera *camera)
{
    TestFrameServer server(user_space_frameworks::MakeCom<mft_core::PassThroughDeviceMft>("Test DMFT"), camera);
    HRESULT result = server.initialized;
    const auto type = SUCCEEDED(result) ? server.FindType(0, {64, 48, 30}) : nullptr;
    for (const auto state : {DeviceStreamState_Run, DeviceStreamState_Stop, DeviceStreamState_Run})
    {
        if (FAILED(result))
        {
            break;
        }
        result = server.Change(0, type, state);
        // A start that failed is reported stopped, not stalled.
        EXPECT_EQ(SUCCEEDED(result) ? state : DeviceStreamState_Stop, server.OutputState(0));
    }
    const HRESULT ended = server.ShutDown();
    return FAILED(result) ? result : ended;
}

const Sessions kSessions{Session, Session};

TEST(FailureTest, EveryPlatformCallMayFail)
{
    const auto camera = SteppedCamera();
    EXPECT_GT(FailEachInTurn(Failing::PlatformCall, camera.Get(), kSessions), 10);
}

TEST(FailureTest, EveryAllocationMayFail)
{
    const auto camera = SteppedCamera();
    EXPECT_GT(FailEachInTurn(Failing::Allocation, camera.Get(), kSessions), 10);
}

TEST(FailureTest, EveryCallOfTheCameraMayFail)
{
    const auto camera = SteppedCamera();
    EXPECT_GE(FailEachCameraCall(kTransformCalls, camera.Get(), kSessions), 4);
    // Without its topology the camera has no extension units, and works.
    EXPECT_EQ(0, FailEachCameraCall(kTopologyCalls, camera.Get(), kSessions));
}

} // namespace
