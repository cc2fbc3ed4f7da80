#include "sim/CapturePump.h"

#include <algorithm>
#include <exception>

#include "sim/SimulatedStream.h"

namespace tarn_sim
{

namespace
{
const HRESULT kTimedOut = HRESULT_FROM_WIN32(WAIT_TIMEOUT);

thread_local const CapturePump *pumpOfThisThread = nullptr;

std::chrono::nanoseconds IntervalOf(const FrameFormat &format)
{
    return std::chrono::nanoseconds(format.interval100ns * 100);
}
} // namespace

CapturePump::CapturePump(const CameraConfiguration &configuration, std::shared_ptr<IFrameSource> frameSource,
                         std::shared_ptr<CameraControls> cameraControls, std::shared_ptr<FaultInjector> faultInjector)
    : pacing(configuration.pacing), buffersPerPin(std::max(configuration.buffersPerPin, 1U)),
      frameLimit(configuration.frameLimit), guardPage(configuration.guardPages ? GuardPage::Yes : GuardPage::No),
      source(std::move(frameSource)), controls(std::move(cameraControls)), faults(std::move(faultInjector))
{
    for (const auto &pinConfiguration : configuration.pins)
    {
        Pin pin;
        pin.streamId = pinConfiguration.streamId;
        pin.offered = pinConfiguration;
        pin.account = std::make_shared<BufferAccount>(signal);
        pins.push_back(std::move(pin));
    }
}

CapturePump::Pin *CapturePump::Find(DWORD streamId)
{
    const auto found = std::ranges::find(pins, streamId, &Pin::streamId);
    return found == pins.end() ? nullptr : &*found;
}

const CapturePump::Pin *CapturePump::Find(DWORD streamId) const
{
    const auto found = std::ranges::find(pins, streamId, &Pin::streamId);
    return found == pins.end() ? nullptr : &*found;
}

bool CapturePump::OnCaptureThread() const noexcept
{
    return pumpOfThisThread == this;
}

void CapturePump::WaitForDelivery(Guard &guard) const
{
    if (delivering && !OnCaptureThread())
    {
        signal->changed.wait(guard, [this, current = deliveries] { return !delivering || deliveries != current; });
    }
}

void CapturePump::StartThread()
{
    if (!thread.joinable())
    {
        thread = std::thread([self = shared_from_this(), own = generation] { self->Loop(own); });
    }
}

HRESULT CapturePump::SetPinState(DWORD streamId, DeviceStreamState state, IMFMediaType *type)
{
    Guard guard(signal->lock);
    Pin *const pin = Find(streamId);
    if (pin == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    if (state != DeviceStreamState_Run)
    {
        pin->lateFrame = pin->state == DeviceStreamState_Run && faults->FrameAfterStop();
        pin->state = state;
        pin->steps = 0;
        signal->changed.notify_all();
        WaitForDelivery(guard);
        return S_OK;
    }

    FrameFormat format = pin->format;
    if (type != nullptr ? !Offers(pin->offered, type) || FAILED(ReadFrameFormat(type, format)) : !pin->type)
    {
        return MF_E_INVALIDTYPE;
    }
    if (pin->state == DeviceStreamState_Run && format == pin->format)
    {
        return S_OK;
    }
    pin->state = DeviceStreamState_Stop;
    WaitForDelivery(guard);
    if (type != nullptr)
    {
        pin->type = type;
    }
    pin->format = format;
    pin->nextDue = Clock::now();
    pin->lateFrame = false;
    StartThread();
    pin->state = DeviceStreamState_Run;
    signal->changed.notify_all();
    return S_OK;
}

DeviceStreamState CapturePump::GetPinState(DWORD streamId) const
{
    const Guard guard(signal->lock);
    const Pin *const pin = Find(streamId);
    return pin == nullptr ? DeviceStreamState_Disabled : pin->state;
}

HRESULT CapturePump::GetPinType(DWORD streamId, IMFMediaType **type) const
{
    const Guard guard(signal->lock);
    const Pin *const pin = Find(streamId);
    if (pin == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    return pin->type ? pin->type.CopyTo(type) : MF_E_TRANSFORM_TYPE_NOT_SET;
}

void CapturePump::SetFrameSink(IFrameSink *newSink)
{
    Guard guard(signal->lock);
    sink = newSink;
    WaitForDelivery(guard);
}

HRESULT CapturePump::Step(DWORD streamId, std::uint32_t frames, std::chrono::milliseconds limit)
{
    Guard guard(signal->lock);
    Pin *const pin = Find(streamId);
    if (pin == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    if (pacing != Pacing::Stepped || pin->state != DeviceStreamState_Run || OnCaptureThread())
    {
        return E_UNEXPECTED;
    }
    pin->steps += frames;
    signal->changed.notify_all();
    const bool done = signal->changed.wait_for(
        guard, limit, [this, pin] { return (pin->steps == 0 && !delivering) || pin->state != DeviceStreamState_Run; });
    if (pin->state != DeviceStreamState_Run)
    {
        return E_UNEXPECTED;
    }
    if (!done)
    {
        pin->steps = 0;
        return kTimedOut;
    }
    return S_OK;
}

HRESULT CapturePump::WaitForFrames(DWORD streamId, std::uint64_t total, std::chrono::milliseconds limit)
{
    Guard guard(signal->lock);
    const Pin *const pin = Find(streamId);
    if (pin == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    const bool done =
        signal->changed.wait_for(guard, limit, [pin, total] { return pin->statistics.delivered >= total; });
    return done ? S_OK : kTimedOut;
}

HRESULT CapturePump::WaitForReturnOfFrames(std::chrono::milliseconds limit)
{
    Guard guard(signal->lock);
    const bool done = signal->changed.wait_for(guard, limit, [this] {
        return std::ranges::all_of(pins, [](const Pin &pin) { return pin.account->outstanding == 0; });
    });
    return done ? S_OK : kTimedOut;
}

void CapturePump::StopAll()
{
    std::thread ending;
    {
        Guard guard(signal->lock);
        for (auto &pin : pins)
        {
            pin.state = DeviceStreamState_Stop;
            pin.steps = 0;
            pin.lateFrame = false;
        }
        ++generation;
        ending = std::move(thread);
        signal->changed.notify_all();
        if (OnCaptureThread() && ending.joinable())
        {
            ending.detach(); // it ends when this call has returned to it
        }
    }
    if (ending.joinable())
    {
        ending.join();
    }
}

PinStatistics CapturePump::Statistics(DWORD streamId) const
{
    const Guard guard(signal->lock);
    const Pin *const pin = Find(streamId);
    if (pin == nullptr)
    {
        return {};
    }
    PinStatistics statistics = pin->statistics;
    statistics.outstanding = pin->account->outstanding;
    return statistics;
}

void CapturePump::SkipMissedFrames(Pin &pin, Clock::time_point now)
{
    const auto interval = IntervalOf(pin.format);
    while (pin.nextDue + interval <= now)
    {
        pin.nextDue += interval;
        ++pin.nextNumber;
        ++pin.statistics.dropped;
    }
}

bool CapturePump::IsReady(Pin &pin, Clock::time_point &due)
{
    if (pin.lateFrame)
    {
        due = Clock::time_point::min();
        return true;
    }
    if (pin.state != DeviceStreamState_Run || (frameLimit != 0 && pin.nextNumber >= frameLimit))
    {
        return false;
    }
    if (pacing == Pacing::RealTime)
    {
        const auto now = Clock::now();
        SkipMissedFrames(pin, now);
        if (pin.nextDue <= now && pin.account->outstanding >= buffersPerPin)
        {
            pin.nextDue += IntervalOf(pin.format); // no buffer to capture into
            ++pin.nextNumber;
            ++pin.statistics.dropped;
        }
        due = pin.nextDue;
        return true;
    }
    due = Clock::time_point::min();
    return (pacing == Pacing::AsFastAsTaken || pin.steps > 0) && pin.account->outstanding < buffersPerPin;
}

// The pin whose frame is due first; among equals the one after the last served.
CapturePump::Pin *CapturePump::NextDue(Clock::time_point &due)
{
    Pin *next = nullptr;
    for (std::size_t i = 1; i <= pins.size(); ++i)
    {
        Pin &pin = pins[(lastServed + i) % pins.size()];
        Clock::time_point pinDue;
        if (IsReady(pin, pinDue) && (next == nullptr || pinDue < due))
        {
            next = &pin;
            due = pinDue;
        }
    }
    return next;
}

void CapturePump::Deliver(Guard &guard, Pin &pin)
{
    FrameToCompose frame;
    frame.format = pin.format;
    frame.number = pin.nextNumber++;
    frame.time100ns = pin.nextTime100ns;
    frame.guardPage = guardPage;
    pin.nextTime100ns += pin.format.interval100ns;
    pin.nextDue += IntervalOf(pin.format);
    pin.steps -= pin.steps > 0 ? 1 : 0;
    pin.lateFrame = false;
    lastServed = static_cast<std::size_t>(&pin - pins.data());
    delivering = true;
    IFrameSink *const receiver = sink;
    const DWORD streamId = pin.streamId;
    const auto account = pin.account;
    guard.unlock();

    std::uint64_t delivered = 0;
    bool failed = false;
    try
    {
        if (pacing == Pacing::RealTime)
        {
            frame.time100ns = MFGetSystemTime();
        }
        frame.fault = faults->OnFrame();
        const auto sample = ComposeFrame(frame, *source, *controls, account);
        for (int copies = frame.fault.isDuplicated ? 2 : 1; receiver != nullptr && copies > 0; --copies)
        {
            receiver->OnFrame(streamId, sample.Get());
            ++delivered;
        }
    }
    catch (const std::exception &)
    {
        failed = true;
    }

    guard.lock();
    delivering = false;
    ++deliveries;
    pin.statistics.delivered += delivered;
    pin.statistics.failed += failed ? 1 : 0;
    pin.statistics.dropped += delivered == 0 && !failed ? 1 : 0;
    signal->changed.notify_all();
}

void CapturePump::Loop(std::uint64_t ownGeneration)
{
    pumpOfThisThread = this;
    Guard guard(signal->lock);
    while (generation == ownGeneration)
    {
        Clock::time_point due;
        Pin *const pin = NextDue(due);
        if (pin == nullptr)
        {
            signal->changed.wait(guard);
        }
        else if (due > Clock::now())
        {
            signal->changed.wait_until(guard, due);
        }
        else
        {
            Deliver(guard, *pin);
        }
    }
}

} // namespace tarn_sim
