// The capture thread: makes frames when they are due and hands them to the sink.
#pragma once

#include "platform/DeviceTransform.h"
#include "platform/MediaFoundation.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "sim/CameraConfiguration.h"
#include "sim/FrameComposer.h"
#include "sim/FrameSink.h"

namespace tarn_sim
{

// Owned by the camera and by the thread it runs. The functions are those of SimulatedCamera. Thread-safe.
class CapturePump : public std::enable_shared_from_this<CapturePump>
{
  public:
    CapturePump(const CameraConfiguration &configuration, std::shared_ptr<IFrameSource> frameSource,
                std::shared_ptr<CameraControls> cameraControls, std::shared_ptr<FaultInjector> faultInjector);

    HRESULT SetPinState(DWORD streamId, DeviceStreamState state, IMFMediaType *type);
    DeviceStreamState GetPinState(DWORD streamId) const;
    HRESULT GetPinType(DWORD streamId,
                       IMFMediaType **type) const; // a copy; MF_E_TRANSFORM_TYPE_NOT_SET before the first
    void SetFrameSink(IFrameSink *newSink);
    HRESULT Step(DWORD streamId, std::uint32_t frames, std::chrono::milliseconds limit);
    HRESULT WaitForFrames(DWORD streamId, std::uint64_t total, std::chrono::milliseconds limit);
    HRESULT WaitForReturnOfFrames(std::chrono::milliseconds limit);
    void StopAll();
    PinStatistics Statistics(DWORD streamId) const;

  private:
    using Clock = std::chrono::steady_clock;
    using Guard = std::unique_lock<std::mutex>;

    struct Pin
    {
        DWORD streamId = 0;
        DeviceStreamState state = DeviceStreamState_Stop;
        ComPtr<IMFMediaType> type;
        FrameFormat format;
        std::shared_ptr<BufferAccount> account;
        Clock::time_point nextDue;
        LONGLONG nextTime100ns = 0; // of the frames when they are not paced in real time
        std::uint64_t nextNumber = 0;
        std::uint32_t steps = 0; // asked for and not yet taken
        bool lateFrame = false;  // one frame is owed after the stop
        PinStatistics statistics;
    };

    Pin *Find(DWORD streamId);
    const Pin *Find(DWORD streamId) const;
    bool OnCaptureThread() const noexcept;

    // These are called under the signal's lock; WaitForDelivery and Deliver let go of it meanwhile.
    void WaitForDelivery(Guard &guard) const;
    void StartThread();
    Pin *NextDue(Clock::time_point &due);
    bool IsReady(Pin &pin, Clock::time_point &due);
    void SkipMissedFrames(Pin &pin, Clock::time_point now);
    void Deliver(Guard &guard, Pin &pin);

    void Loop(std::uint64_t ownGeneration);

    const Pacing pacing;
    const std::uint32_t buffersPerPin;
    const std::uint64_t frameLimit;
    const GuardPage guardPage;
    const std::shared_ptr<IFrameSource> source;
    const std::shared_ptr<CameraControls> controls;
    const std::shared_ptr<FaultInjector> faults;
    const std::shared_ptr<CaptureSignal> signal = std::make_shared<CaptureSignal>();

    // Guarded by signal->lock.
    std::vector<Pin> pins; // never grows or shrinks
    IFrameSink *sink = nullptr;
    bool delivering = false;
    std::uint64_t deliveries = 0; // begun and ended
    std::size_t lastServed = 0;
    std::uint64_t generation = 0; // a thread ends when it is no longer its own
    std::thread thread;
};

} // namespace tarn_sim
