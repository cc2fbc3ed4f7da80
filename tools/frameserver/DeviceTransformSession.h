// The frame server's side of one device transform: creation, event loop, stream states, samples in and out, shutdown.
#pragma once

#include "platform/DeviceTransform.h"
#include "platform/RealTimeClientEx.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "tools/frameserver/WorkQueue.h"

namespace tarn_host
{

// Called on the session's event loop thread.
class SessionListener
{
  public:
    virtual ~SessionListener() = default;

    // The transform accepted this state for its input; the camera's pin has to follow.
    virtual HRESULT OnInputState(DWORD inputId, DeviceStreamState state, IMFMediaType *type) = 0;
    // The listener takes its own reference if it keeps the sample.
    virtual void OnOutputSample(DWORD outputId, IMFSample *sample) = 0;
    // The event loop came upon a failure; the session is of no more use than to be closed.
    virtual void OnSessionFailure() = 0;
};

struct SessionCounters
{
    std::uint64_t outputEvents = 0;        // METransformHaveOutput
    std::uint64_t inputStateEvents = 0;    // METransformInputStreamStateChanged
    std::uint64_t streamCreatedEvents = 0; // MEDeviceStreamCreated
    std::uint64_t otherEvents = 0;
};

// Owns the transform, its work queue and the event loop thread. ProcessInput: any thread. The rest: confined.
class DeviceTransformSession
{
  public:
    // `sessionListener` outlives the session.
    explicit DeviceTransformSession(SessionListener &sessionListener);
    // Closes without looking at the outcome when Close was not called.
    ~DeviceTransformSession();
    DeviceTransformSession(const DeviceTransformSession &) = delete;
    DeviceTransformSession &operator=(const DeviceTransformSession &) = delete;

    // Initialises the transform, fresh from its class, over the camera filter. Throws HostError.
    void Open(ComPtr<IMFDeviceTransform> freshTransform, IUnknown *cameraFilter);

    const std::vector<DWORD> &InputIds() const noexcept
    {
        return inputIds;
    }
    const std::vector<DWORD> &OutputIds() const noexcept
    {
        return outputIds;
    }
    // The types that an output offers, in its order. Throws HostError.
    std::vector<ComPtr<IMFMediaType>> OutputTypes(DWORD outputId) const;

    // What applications send properties through. Throws HostError.
    ComPtr<IKsControl> KsControl() const;

    void SendMessage(MFT_MESSAGE_TYPE message) const;
    // From now on each output is offered a sample allocator of the platform before it starts, if it says that it uses
    // one.
    void OfferAllocators() noexcept
    {
        offersAllocators = true;
    }
    // Throws HostError when the transform refuses.
    void SetOutputState(DWORD outputId, DeviceStreamState state, IMFMediaType *type);
    // Waits until the transform has asked for `state` on as many inputs and the pins followed. Throws HostError when
    // that takes longer than `limit`.
    void WaitForInputs(DeviceStreamState state, std::size_t count, std::chrono::milliseconds limit);
    // Waits until every event that the transform has raised so far has been answered. Throws HostError when that takes
    // longer than `limit`.
    void Synchronise(std::chrono::milliseconds limit);
    // The caller's reference stays its own, whichever rule the transform follows.
    HRESULT ProcessInput(DWORD inputId, IMFSample *sample) const;

    // The first failure of the event loop.
    std::optional<std::string> Failure() const;
    SessionCounters Counters() const;

    // Shuts the transform down, ends the event loop and lets go of everything. Returns how many references on the
    // transform were left behind. Throws HostError when shutdown is refused; ends the process if the event loop runs
    // then.
    ULONG Close();

  private:
    void ReadStreamIds();
    void FindInputRule();
    void OfferAllocator(DWORD outputId);
    void RunEventLoop();
    HRESULT HandleEvent(IMFMediaEvent &event);
    HRESULT FollowInputState(IMFMediaEvent &event);
    HRESULT CollectOutputs();
    void Fail(const std::string &step, HRESULT result);

    SessionListener &listener;
    bool isInputConsumed = true; // ProcessInput takes over the reference on the sample; immutable after Open
    bool offersAllocators = false;
    std::optional<WorkQueue> workQueue;
    ComPtr<IMFDeviceTransform> transform;
    ComPtr<IMFMediaEventGenerator> events;
    std::vector<DWORD> inputIds;
    std::vector<DWORD> outputIds;
    std::thread eventLoop;

    mutable std::mutex lock;
    std::condition_variable changed;
    std::map<DWORD, DeviceStreamState> inputStates; // guarded by lock
    std::optional<std::string> failure;             // guarded by lock
    SessionCounters counters;                       // guarded by lock
    std::uint64_t markersQueued = 0;                // guarded by lock
    std::uint64_t markersSeen = 0;                  // guarded by lock
};

} // namespace tarn_host
