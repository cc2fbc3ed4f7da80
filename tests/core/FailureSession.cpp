#include "tests/core/FailureSession.h"

#include <new>

#include "tests/support/Expect.h"
#include "tests/support/OwnWork.h"

using namespace tarn_sim;

namespace tarn_test
{

namespace
{
// A session after which nobody holds the camera or one of its frames.
HRESULT RunClean(SimulatedCamera *camera, const Session &session)
{
    HRESULT result = E_FAIL;
    try
    {
        result = session(camera);
    }
    catch (const std::bad_alloc &)
    {
        result = E_OUTOFMEMORY; // while the test itself created the object
    }
    const OwnWork own;
    EXPECT_TRUE(WaitUntil([&] { return ReferenceCount(camera) == 1; })) << ReferenceCount(camera) << " references";
    EXPECT_HR(S_OK, camera->Pins().WaitForReturnOfFrames(std::chrono::seconds(5)));
    return result;
}

std::uint64_t CountOf(const CameraCalls &calls, const SimulatedCamera &camera)
{
    std::uint64_t count = 0;
    for (auto method = static_cast<int>(calls.first); method <= static_cast<int>(calls.last); ++method)
    {
        count += camera.Calls(static_cast<Method>(method));
    }
    return count;
}
} // namespace

int FailEachInTurn(Failing kind, SimulatedCamera *camera, const Sessions &sessions)
{
    EXPECT_HR(S_OK, RunClean(camera, sessions.failing)); // what is made once and kept is made now
    int calls = 0;
    {
        const FailingPlatform counting(kind, 0);
        EXPECT_HR(S_OK, RunClean(camera, sessions.failing));
        calls = counting.Calls();
    }
    int failures = 0;
    for (int call = 1; call <= calls && !testing::Test::HasFailure(); ++call)
    {
        SCOPED_TRACE("call " + std::to_string(call));
        {
            const FailingPlatform failing(kind, call);
            const HRESULT result = RunClean(camera, sessions.failing);
            EXPECT_TRUE(SUCCEEDED(result) || (failing.HasFailed() && result == E_OUTOFMEMORY)) << std::hex << result;
            failures += FAILED(result) ? 1 : 0;
            EXPECT_TRUE(camera->Ks().EventListenerCount() == 0 || !FailingPlatform::LeavesTheCameraAlone());
        }
        EXPECT_HR(S_OK, RunClean(camera, sessions.next)) << "the session after it";
    }
    return failures;
}

int FailEachCameraCall(const CameraCalls &calls, SimulatedCamera *camera, const Sessions &sessions)
{
    const std::uint64_t before = CountOf(calls, *camera);
    EXPECT_HR(S_OK, RunClean(camera, sessions.failing));
    const std::uint64_t positions = CountOf(calls, *camera) - before;
    int failures = 0;
    for (std::uint32_t call = 1; call <= positions && !testing::Test::HasFailure(); ++call)
    {
        for (const bool allFollowing : {false, true})
        {
            SCOPED_TRACE("call " + std::to_string(call) + (allFollowing ? " and all that follow" : ""));
            FaultPlan plan;
            plan.*calls.fault = {call, E_ABORT, allFollowing};
            camera->Faults().SetPlan(plan);
            const HRESULT result = RunClean(camera, sessions.failing);
            EXPECT_TRUE(SUCCEEDED(result) || result == E_ABORT || result == E_NOINTERFACE) << std::hex << result;
            failures += FAILED(result) ? 1 : 0;
            camera->Faults().SetPlan({});
            const std::uint32_t listeners = camera->Ks().EventListenerCount(); // one that it refused to forget stays
            EXPECT_HR(S_OK, RunClean(camera, sessions.next)) << "the session after it";
            EXPECT_EQ(listeners, camera->Ks().EventListenerCount());
        }
    }
    return failures;
}

} // namespace tarn_test
