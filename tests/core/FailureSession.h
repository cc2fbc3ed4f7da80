// A session of a transform over a camera, and the loops that fail each of its calls in turn.
#pragma once

#include <functional>

#include "sim/SimulatedCamera.h"
#include "tests/core/FailingPlatform.h"

namespace tarn_test
{

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
