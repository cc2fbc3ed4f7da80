// DeviceMft, third part: frames, messages and changes of state.
#include "core/DeviceMft.h"

#include <algorithm>
#include <mutex>

#include "trace/Guard.h"
#include "trace/StreamNames.h"
#include "trace/TraceLogging.h"

using namespace mft_der;
using mft_utils::EntryExitTrace;
using mft_utils::Guarded;
using mft_utils::TraceField;
using mft_utils::TraceLoggingActivity;

namespace mft_core
{

namespace
{
// Takes over the reference that comes with a sample, whatever becomes of it: the pipeline does not release it. The
// build option leaves it with the caller, as other COM calls do.
class InputReference
{
  public:
    explicit InputReference(IMFSample *inputSample) noexcept : sample(inputSample) {}
    ~InputReference()
    {
        if (kConsumesReference && sample != nullptr)
        {
            sample->Release();
        }
    }
    InputReference(const InputReference &) = delete;
    InputReference &operator=(const InputReference &) = delete;

  private:
#ifdef TARN_PROCESS_INPUT_KEEPS_REFERENCE
    static constexpr bool kConsumesReference = false;
#else
    static constexpr bool kConsumesReference = true;
#endif
    IMFSample *const sample;
};

// What a change of state is given.
auto Change(DWORD streamId, IMFMediaType *mediaType, DeviceStreamState value, DWORD flags) noexcept
{
    return Values(StreamId(streamId), Store(TARN_VALUE_MEDIA_TYPE, mediaType),
                  Number(TARN_VALUE_STATE, static_cast<std::uint32_t>(value)), Number(TARN_VALUE_FLAGS, flags));
}
} // namespace

HRESULT DeviceMft::ProcessEvent(DWORD dwInputStreamID, IMFMediaEvent *pEvent)
{
    return Recorded(TARN_CALL_PROCESS_EVENT, Values(StreamId(dwInputStreamID), EventGiven(pEvent)), Values(),
                    [&]() -> HRESULT {
                        TRACE_INFO("Not Implemented");
                        return S_OK;
                    });
}

HRESULT DeviceMft::ProcessInput(DWORD dwInputStreamID, IMFSample *pSample, DWORD dwFlags)
{
    SampleIdentity identity;
    const auto given = [&](RecordBuilder &values) {
        identity = recorder.Samples().Identify(SampleDirection::Input, dwInputStreamID, pSample, IsPrivate(pSample));
        values.U32(TARN_VALUE_STREAM, dwInputStreamID).U32(TARN_VALUE_FLAGS, dwFlags);
        SampleRecorder::Add(values, identity, pSample);
    };
    return Recorded(TARN_CALL_PROCESS_INPUT, given, Values(), [&]() -> HRESULT {
        const InputReference reference(pSample);
        CHECK_POINTER(pSample);
        recorder.Picture(identity, pSample); // before a node changes it in place
        LONGLONG llTime = 0;
        CHECK_HR(pSample->GetSampleTime(&llTime));
        const TraceLoggingActivity activity("mft_core::DeviceMft::ProcessInput",
                                            {TraceField::Int64("SampleTime", llTime)});
        CHECK_HR_AS("RedirectCallToInputStream(dwInputStreamID, [&](InputStream &stream) { stream.Process(pSample); "
                    "return ((HRESULT)0L); })",
                    RedirectCallToInputStream(dwInputStreamID, [&](InputStream &stream) {
                        stream.Process(pSample);
                        return S_OK;
                    }));
        return S_OK;
    });
}

HRESULT DeviceMft::ProcessOutput(DWORD dwFlags, DWORD cOutputBufferCount, MFT_OUTPUT_DATA_BUFFER *pOutputSamples,
                                 DWORD *pdwStatus)
{
    const auto given = [&](RecordBuilder &values) {
        values.U32(TARN_VALUE_FLAGS, dwFlags).U32(TARN_VALUE_COUNT, cOutputBufferCount);
        Values(OutPointer(0, pOutputSamples), OutPointer(1, pdwStatus))(values);
        const bool isServed = pOutputSamples != nullptr && cOutputBufferCount <= outputStreams.size();
        for (DWORD i = 0; isServed && i < cOutputBufferCount; ++i)
        {
            values.List(TARN_VALUE_BUFFER, [&] { values.U32(TARN_VALUE_STREAM, pOutputSamples[i].dwStreamID); });
        }
    };
    std::uint64_t filled = 0; // bits of the buffers that got a sample; others hold what the caller left there
    const auto taken = [&](RecordBuilder &values) {
        values.U32(TARN_VALUE_STATUS, *pdwStatus);
        for (DWORD i = 0; i < cOutputBufferCount; ++i)
        {
            RecordOutput(values, pOutputSamples[i], (filled >> i & 1U) != 0);
        }
    };
    const EntryExitTrace trace(GetName());
    return recorder.Around(TARN_CALL_PROCESS_OUTPUT, given, taken, [&]() -> HRESULT {
        if (cOutputBufferCount > outputStreams.size())
        {
            TRACE_ERROR("%s: %lu buffers for %zu output streams", GetName(), cOutputBufferCount, outputStreams.size());
            return E_INVALIDARG;
        }
        CHECK_POINTER(pdwStatus);
        CHECK_POINTER(pOutputSamples);
        *pdwStatus = 0;
        HRESULT result = MF_E_TRANSFORM_NEED_MORE_INPUT;
        for (DWORD i = 0; i < cOutputBufferCount; ++i)
        {
            MFT_OUTPUT_DATA_BUFFER &buffer = pOutputSamples[i];
            const IMFSample *const before = buffer.pSample;
            for (const auto &stream : outputStreams)
            {
                if (stream->GetID() == buffer.dwStreamID)
                {
                    if (stream->ProcessOutput(buffer) == S_OK)
                    {
                        result = S_OK;
                        filled |= std::uint64_t{buffer.pSample != before} << i;
                    }
                    break;
                }
            }
        }
        if (result != S_OK)
        {
            TRACE_INFO("%s: no sample, hr 0x%08lX", GetName(), static_cast<unsigned long>(result));
        }
        return result;
    });
}

void DeviceMft::RecordOutput(RecordBuilder &values, const MFT_OUTPUT_DATA_BUFFER &buffer, bool isFilled)
{
    IMFSample *const sample = isFilled ? buffer.pSample : nullptr;
    values.List(TARN_VALUE_BUFFER, [&] {
        values.U32(TARN_VALUE_STREAM, buffer.dwStreamID).U32(TARN_VALUE_STATUS, buffer.dwStatus);
        SampleIdentity identity;
        if (sample != nullptr)
        {
            identity =
                recorder.Samples().Identify(SampleDirection::Output, buffer.dwStreamID, sample, IsPrivate(nullptr));
            recorder.Picture(identity, sample);
        }
        SampleRecorder::Add(values, identity, sample);
    });
}

bool DeviceMft::IsPrivate(IMFSample * /*input*/)
{
    return false;
}

HRESULT DeviceMft::ProcessMessage(MFT_MESSAGE_TYPE eMessage, ULONG_PTR ulParam)
{
    const auto given = Values(Number(TARN_VALUE_MESSAGE, static_cast<std::uint32_t>(eMessage)),
                              [=](RecordBuilder &values) { values.U64(TARN_VALUE_PARAMETER, ulParam); });
    return Recorded(TARN_CALL_PROCESS_MESSAGE, given, Values(), [&]() -> HRESULT {
        switch (eMessage)
        {
        case MFT_MESSAGE_COMMAND_FLUSH:
            CHECK_HR(FlushAllStreams());
            return S_OK;
        case MFT_MESSAGE_SET_D3D_MANAGER:
            TRACE_INFO("%s: MFT_MESSAGE_SET_D3D_MANAGER is not supported", GetName());
            return E_NOTIMPL;
        default:
            TRACE_INFO("%s: message 0x%lX needs nothing", GetName(), static_cast<unsigned long>(eMessage));
            return S_OK;
        }
    });
}

HRESULT DeviceMft::FlushAllStreams()
{
    for (const auto &inputStream : inputStreams)
    {
        CHECK_HR(inputStream->Flush());
    }
    for (const auto &outputStream : outputStreams)
    {
        CHECK_HR(outputStream->Flush());
    }
    return S_OK;
}

HRESULT DeviceMft::SetInputStreamState(DWORD dwStreamID, IMFMediaType *pMediaType, DeviceStreamState value,
                                       DWORD dwFlags)
{
    const auto given = Change(dwStreamID, pMediaType, value, dwFlags);
    return Recorded(TARN_CALL_SET_INPUT_STREAM_STATE, given, Values(), [&]() -> HRESULT {
        const DeviceStreamState state = value;
        if (state < DeviceStreamState_Stop || state > DeviceStreamState_Disabled)
        {
            return E_INVALIDARG;
        }
        if (state == DeviceStreamState_Run)
        {
            CHECK_POINTER(pMediaType);
        }
        CHECK_HR(RedirectCallToInputStream(dwStreamID, [&](InputStream &stream) -> HRESULT {
            CHECK_HR(stream.SetCurrentMediaType(pMediaType));
            CHECK_HR(stream.SetState(state));
            return S_OK;
        }));
        return S_OK;
    });
}

HRESULT DeviceMft::SetOutputStreamState(DWORD dwStreamID, IMFMediaType *pMediaType, DeviceStreamState value,
                                        DWORD dwFlags)
{
    const auto given = Change(dwStreamID, pMediaType, value, dwFlags);
    return Recorded(TARN_CALL_SET_OUTPUT_STREAM_STATE, given, Values(), [&]() -> HRESULT {
        const std::scoped_lock guard(stateChangeLock);
        recorder.ChangeBegins();
        return ChangeOutputStreamState(dwStreamID, pMediaType, value);
    });
}

HRESULT DeviceMft::ChangeOutputStreamState(DWORD streamId, IMFMediaType *nextMediaType, DeviceStreamState value)
{
    std::shared_ptr<OutputStream> stream;
    CHECK_HR_AS("GetStream(stream, streamId, outputStreams)", outputStreams.Find(stream, streamId));
    const DeviceStreamState previous = stream->GetState();
    if (value == previous && nextMediaType != nullptr)
    {
        ComPtr<IMFMediaType> current;
        DWORD equality = 0;
        if (SUCCEEDED(stream->GetCurrentMediaType(current.GetAddressOf())) &&
            current->IsEqual(nextMediaType, &equality) == S_OK)
        {
            TRACE_INFO("%s: state and media type are unchanged", stream->GetName());
            return S_OK;
        }
    }
    TRACE_INFO("%s: asked to go %s -> %s", stream->GetName(), mft_utils::StreamStateName(previous),
               mft_utils::StreamStateName(value));
    switch (value)
    {
    case DeviceStreamState_Stop:
        return StopAndReport(stream, nextMediaType);
    case DeviceStreamState_Run:
        CHECK_POINTER(nextMediaType);
        return StartWithListener(stream, nextMediaType, previous);
    case DeviceStreamState_Pause:
    case DeviceStreamState_Disabled:
        TRACE_INFO("%s: ignored", stream->GetName());
        return S_OK;
    }
    return E_INVALIDARG;
}

HRESULT DeviceMft::StopAndReport(const std::shared_ptr<OutputStream> &stream, IMFMediaType *nextMediaType)
{
    autoUpdateEventListener.Stop(); // with every stop, also while another output still runs
    CHECK_HR(StopOutputStream(stream, nextMediaType));
    return S_OK;
}

HRESULT DeviceMft::StartWithListener(const std::shared_ptr<OutputStream> &stream, IMFMediaType *nextMediaType,
                                     DeviceStreamState previous)
{
    const HRESULT started = Guarded([&] {
        stateChangeLock.AssertHeld();
        return StartOutputStream(stream, nextMediaType);
    });
    if (FAILED(started) && !AnyOutputRuns())
    {
        autoUpdateEventListener.Stop(); // the failure may have ended an output that had started it
    }
    CHECK_HR_AS("StartOutputStream(stream, nextMediaType)", started);
    if (previous == DeviceStreamState_Run)
    {
        return S_OK;
    }
    const HRESULT listening = Guarded([&] {
        stateChangeLock.AssertHeld();
        return autoUpdateEventListener.Start();
    });
    if (FAILED(listening))
    {
        StopOutputStream(stream, nextMediaType); // a failed start leaves the stream stopped
    }
    return listening;
}

bool DeviceMft::AnyOutputRuns() const
{
    return std::any_of(outputStreams.begin(), outputStreams.end(),
                       [](const auto &stream) { return stream->GetState() == DeviceStreamState_Run; });
}

HRESULT DeviceMft::FlushInputStream(DWORD dwStreamIndex, DWORD dwFlags)
{
    const auto given = Values(StreamId(dwStreamIndex), Number(TARN_VALUE_FLAGS, dwFlags));
    return Recorded(TARN_CALL_FLUSH_INPUT_STREAM, given, Values(), [&]() -> HRESULT {
        TRACE_INFO("Not Implemented");
        return S_OK;
    });
}

HRESULT DeviceMft::FlushOutputStream(DWORD dwStreamIndex, DWORD dwFlags)
{
    const auto given = Values(StreamId(dwStreamIndex), Number(TARN_VALUE_FLAGS, dwFlags));
    return Recorded(TARN_CALL_FLUSH_OUTPUT_STREAM, given, Values(), [&]() -> HRESULT {
        const DWORD dwStreamID = dwStreamIndex;
        CHECK_HR(RedirectCallToOutputStream(dwStreamID, [&](OutputStream &stream) { return stream.Flush(); }));
        return S_OK;
    });
}

} // namespace mft_core
