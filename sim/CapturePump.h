// The camera's pins and the capture thread, which makes their frames when they are due and hands them to the sink.
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

// Owned by the camera and by the thread it runs. Thread-safe. What names a pin is MF_E_INVALIDSTREAMNUMBER for an
// unknown one.
class CapturePump : public std::enable_shared_from_this<CapturePump>
{
  public:
    CapturePump(const CameraConfiguration &configuration, std::shared_ptr<IFrameSource> frameSource,
                std::shared_ptr<CameraControls> cameraControls, std::shared_ptr<FaultInjector> faultInjector);

    // What the pipeline does on the driver after the transform's SetInputStreamState. Run needs a type of the pin
    // (MF_E_INVALIDTYPE otherwise), or null for the pin's current one. Run with another type restarts the pin.
    // When it returns from Stop, Pause or a restart no frame of the earlier state is on its way (it waits for a sink
    // call in progress, except on the capture thread itself).
    HRESULT SetPinState(DWORD streamId, DeviceStreamState state, IMFMediaType *type);
    DeviceStreamState GetPinState(DWORD streamId) const; // Disabled for an unknown pin
    HRESULT GetPinType(DWORD streamId,
                       IMFMediaType **type) const; // not a copy; MF_E_TRANSFORM_TYPE_NOT_SET before the first

    // The sink is borrowed until another one (or null) is set; that call waits like SetPinState.
    void SetFrameSink(IFrameSink *newSink);

    // Pacing::Stepped: delivers so many frames and waits for it. HRESULT_FROM_WIN32(WAIT_TIMEOUT) when it takes longer,
    // E_UNEXPECTED when the pin does not run or paces itself.
    HRESULT Step(DWORD streamId, std::uint32_t frames, std::chrono::milliseconds limit = std::chrono::seconds(10));
    // Waits until the pin has delivered so many frames since it was made; HRESULT_FROM_WIN32(WAIT_TIMEOUT) otherwise.
    HRESULT WaitForFrames(DWORD streamId, std::uint64_t total, std::chrono::milliseconds limit);
    // Waits until nobody holds a frame of any pin; HRESULT_FROM_WIN32(WAIT_TIMEOUT) otherwise.
    HRESULT WaitForReturnOfFrames(std::chrono::milliseconds limit);
    // Stops every pin and joins the capture thread (from that thread: lets it end by itself). Pins can run again.
    void StopAll();

    PinStatistics Statistics(DWORD streamId) const; // zeros for an unknown pin

  private:
    using Clock = std::chrono::steady_clock;
    using Guard = std::unique_lock<std::mutex>;

    struct Pin
    {
        DWORD streamId = 0;
        PinConfiguration offered;
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
