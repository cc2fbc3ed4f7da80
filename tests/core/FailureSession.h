// Makes the nth platform call, allocation or camera call of a session fail, for every n in turn.
#pragma once

#include <functional>

#include "sim/SimulatedCamera.h"

namespace tarn_test
{

enum class Failing
{
    PlatformCall, // those that are wrapped return E_OUTOFMEMORY
    Allocation    // operator new throws std::bad_alloc
};

// While it lives, the calls of that kind are counted, on all threads, and the one with this number (from 1) fails; 0
// only counts; what a test does itself (OwnWork) is neither counted nor failed. One at a time. The program is linked
// with --wrap for the platform's calls.
class FailingPlatform
{
  public:
    FailingPlatform(Failing kind, int failingCall);
    ~FailingPlatform();
    FailingPlatform(const FailingPlatform &) = delete;
    FailingPlatform &operator=(const FailingPlatform &) = delete;

    // Of platform calls only: allocations are the camera's too, and may keep it from doing what it is told.
    static bool LeavesTheCameraAlone();

    int Calls() const;
    bool HasFailed() const;

    // Meanwhile no thread's calls are counted or failed: the camera works on a frame.
    class Suspension
    {
      public:
        Suspension();
        ~Suspension();
        Suspension(const Suspension &) = delete;
        Suspension &operator=(const Suspension &) = delete;
    };
};

// A whole session over the camera; S_OK, another success code when a fault cost no more than a frame, or the first
// failure. Expects of each step what holds however it ends.
using Session = std::function<HRESULT(tarn_sim::SimulatedCamera *camera)>;

// What fails in turn, and what must work on the same camera after each failure.
struct Sessions
{
    Session failing;
    Session next;
};

// Runs the session as often as it makes calls of that kind. Each time one of them fails: the result is E_OUTOFMEMORY,
// or a success where the transform can do without; nobody holds the camera; and the camera serves a session without
// fault. Returns how often the session failed.
int FailEachInTurn(Failing kind, tarn_sim::SimulatedCamera *camera, const Sessions &sessions);

// Calls of the camera that fail together.
struct CameraCalls
{
    tarn_sim::FailingCall tarn_sim::FaultPlan::*fault;
    tarn_sim::Method first;
    tarn_sim::Method last;
};

inline constexpr CameraCalls kKsCalls{&tarn_sim::FaultPlan::ksCall, tarn_sim::Method::KsProperty,
                                      tarn_sim::Method::KsEvent};
inline constexpr CameraCalls kTransformCalls{&tarn_sim::FaultPlan::transformCall, tarn_sim::Method::GetStreamCount,
                                             tarn_sim::Method::OtherTransform};
inline constexpr CameraCalls kTopologyCalls{&tarn_sim::FaultPlan::topologyCall, tarn_sim::Method::GetNumNodes,
                                            tarn_sim::Method::OtherTopology};

// The same for calls of the camera, which fail with E_ABORT, each once alone and once with all that follow. Where the
// unit was not found the session may also end with E_NOINTERFACE.
int FailEachCameraCall(const CameraCalls &calls, tarn_sim::SimulatedCamera *camera, const Sessions &sessions);

} // namespace tarn_test
