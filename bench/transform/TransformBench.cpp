// What the transform adds to a frame: ProcessInput to ProcessOutput, beside the bare platform work that any
// asynchronous transform does - one work item and one event through an event queue - measured in turn in the same run.
#include "platform/MediaFoundation.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <vector>

#include "core/PassThroughDeviceMft.h"
#include "sim/SimulatedCamera.h"
#include "bench/transform/AsyncDeviceMft.h"
#include "tests/support/GiveInput.h"
#include "trace/Check.h"
#include "base/ComObject.h"
#include "base/ThrowIfFailed.h"

using mft_core::PassThroughDeviceMft;
using mft_utils::ThrowIfFailed;
using user_space_frameworks::ComObject;
using user_space_frameworks::MakeCom;

namespace
{

using Clock = std::chrono::steady_clock;
constexpr int kFramesPerRound = 2000;
constexpr int kRounds = 15;

// One frame through a transform: in, wait for the announcement, out.
class TransformRound
{
  public:
    TransformRound(ComPtr<IMFDeviceTransform> deviceTransform, DWORD workQueue) : transform(std::move(deviceTransform))
    {
        camera = MakeCom<tarn_sim::SimulatedCamera>(tarn_sim::CameraConfiguration::GenericDepth16(64, 48, 30));
        ComPtr<IMFAttributes> filter;
        ThrowIfFailed(MFCreateAttributes(&filter, 1), "MFCreateAttributes");
        ThrowIfFailed(
            filter->SetUnknown(MF_DEVICEMFT_CONNECTED_FILTER_KSCONTROL, static_cast<IMFTransform *>(camera.Get())),
            "SetUnknown");
        ThrowIfFailed(transform->InitializeTransform(filter.Get()), "InitializeTransform");
        ComPtr<IMFRealTimeClientEx> realTime;
        ThrowIfFailed(transform.As(&realTime), "IMFRealTimeClientEx");
        ThrowIfFailed(realTime->SetWorkQueueEx(workQueue, 0), "SetWorkQueueEx");
        ComPtr<IMFMediaType> type;
        ThrowIfFailed(transform->GetOutputAvailableType(0, 0, &type), "GetOutputAvailableType");
        ThrowIfFailed(transform->SetOutputStreamState(0, type.Get(), DeviceStreamState_Run, 0), "SetOutputStreamState");
        ThrowIfFailed(transform.As(&events), "IMFMediaEventGenerator");
        ComPtr<IMFMediaEvent> event;
        while (SUCCEEDED(events->GetEvent(MF_EVENT_FLAG_NO_WAIT, event.ReleaseAndGetAddressOf())))
        {
        }
        ThrowIfFailed(MFCreateSample(&sample), "MFCreateSample");
        ThrowIfFailed(sample->SetSampleTime(1), "SetSampleTime");
    }
    ~TransformRound()
    {
        ComPtr<IMFShutdown> shutdown;
        transform.As(&shutdown);
        shutdown->Shutdown();
    }

    void Frame()
    {
        tarn_test::GiveInput(transform, 0, sample.Get());
        ComPtr<IMFMediaEvent> event;
        events->GetEvent(0, &event);
        MFT_OUTPUT_DATA_BUFFER buffer{};
        DWORD status = 0;
        ThrowIfFailed(transform->ProcessOutput(0, 1, &buffer, &status), "ProcessOutput");
        buffer.pSample->Release();
    }

  private:
    ComPtr<tarn_sim::SimulatedCamera> camera;
    ComPtr<IMFDeviceTransform> transform;
    ComPtr<IMFMediaEventGenerator> events;
    ComPtr<IMFSample> sample;
};

// The same with nothing but the platform: a work item whose callback queues an event, and the event taken.
class BareRound
{
  public:
    explicit BareRound(DWORD workQueue) : queueId(workQueue)
    {
        ThrowIfFailed(MFCreateEventQueue(&events), "MFCreateEventQueue");
        callback = MakeCom<Callback>(events.Get());
        ThrowIfFailed(MFCreateSample(&sample), "MFCreateSample");
    }

    void Frame()
    {
        MFPutWorkItem2(queueId, 0, callback.Get(), sample.Get());
        ComPtr<IMFMediaEvent> event;
        events->GetEvent(0, &event);
    }

  private:
    class Callback : public ComObject<IMFAsyncCallback>
    {
      public:
        explicit Callback(IMFMediaEventQueue *eventQueue) : queue(eventQueue) {}
        HRESULT STDMETHODCALLTYPE GetParameters(DWORD *, DWORD *) noexcept override
        {
            return E_NOTIMPL;
        }
        HRESULT STDMETHODCALLTYPE Invoke(IMFAsyncResult *) noexcept override
        {
            return queue->QueueEventParamVar(METransformHaveOutput, GUID{}, S_OK, nullptr);
        }

      private:
        ComPtr<IMFMediaEventQueue> queue;
    };

    DWORD queueId;
    ComPtr<IMFMediaEventQueue> events;
    ComPtr<Callback> callback;
    ComPtr<IMFSample> sample;
};

template <class Round>
double MicrosecondsPerFrame(Round &round)
{
    const auto start = Clock::now();
    for (int i = 0; i < kFramesPerRound; ++i)
    {
        round.Frame();
    }
    return std::chrono::duration<double, std::micro>(Clock::now() - start).count() / kFramesPerRound;
}

double Median(std::array<double, kRounds> values)
{
    std::sort(values.begin(), values.end());
    return values[kRounds / 2];
}

} // namespace

int main()
{
    ThrowIfFailed(CoInitializeEx(nullptr, COINIT_MULTITHREADED), "CoInitializeEx");
    ThrowIfFailed(MFStartup(MF_VERSION, MFSTARTUP_FULL), "MFStartup");
    DWORD workQueue = 0;
    ThrowIfFailed(MFAllocateWorkQueueEx(MF_MULTITHREADED_WORKQUEUE, &workQueue), "MFAllocateWorkQueueEx");
    {
        BareRound bare(workQueue);
        TransformRound async(MakeCom<tarn_bench::AsyncDeviceMft>(), workQueue);
        TransformRound passThrough(MakeCom<PassThroughDeviceMft>("Bench DMFT"), workQueue);
        std::array<double, kRounds> bareTimes{};
        std::array<double, kRounds> asyncTimes{};
        std::array<double, kRounds> passThroughTimes{};
        std::array<double, kRounds> asyncRatios{};
        std::array<double, kRounds> passThroughRatios{};
        for (std::size_t i = 0; i < kRounds; ++i)
        {
            bareTimes.at(i) = MicrosecondsPerFrame(bare);
            asyncTimes.at(i) = MicrosecondsPerFrame(async);
            passThroughTimes.at(i) = MicrosecondsPerFrame(passThrough);
            asyncRatios.at(i) = asyncTimes.at(i) / bareTimes.at(i);
            passThroughRatios.at(i) = passThroughTimes.at(i) / bareTimes.at(i);
        }
        std::printf("%-44s %8s %8s\n", "per frame, median of 15 rounds of 2000", "us", "ratio");
        std::printf("%-44s %8.2f %8.2f\n", "work item and event, bare platform", Median(bareTimes), 1.0);
        std::printf("%-44s %8.2f %8.2f\n", "ProcessInput to ProcessOutput, work queue", Median(asyncTimes),
                    Median(asyncRatios));
        std::printf("%-44s %8.2f %8.2f\n", "ProcessInput to ProcessOutput, pass-through", Median(passThroughTimes),
                    Median(passThroughRatios));
    }
    MFUnlockWorkQueue(workQueue);
    MFShutdown();
    CoUninitialize();
    return 0;
}
