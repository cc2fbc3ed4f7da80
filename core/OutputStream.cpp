#include "core/OutputStream.h"

#include <mutex>
#include <stdexcept>
#include <utility>

#include "core/MediaEventGenerator.h"
#include "trace/Check.h"
#include "base/ThrowIfFailed.h"
#include "media/MFAttributesParser.h"
#include "trace/TraceLogging.h"
#include "base/WideString.h"

using mft_utils::ComException;
using mft_utils::MFAttributesParser;
using mft_utils::ThrowIfFailed;
using mft_utils::TraceField;
using mft_utils::TraceLevel;
using mft_utils::TraceLoggingActivity;

namespace mft_core
{

OutputStream::OutputStream(UINT32 streamId, MediaEventGenerator *generator,
                           const OutputStreamConfiguration &configuration)
    : Stream(streamId, generator, configuration.parentName + " Output Stream " + std::to_string(streamId)),
      allocator(std::make_shared<mft_utils::SampleAllocator>(GetNameCopy()))
{
    if (!configuration.mtList || configuration.mtList->empty())
    {
        throw std::invalid_argument("stream must have media types");
    }
    ThrowIfFailed<ComException>(InitMediaTypes(configuration), "Failed to init media types list");
    ThrowIfFailed<ComException>(InitFrameSourceTypes(), "Failed to init frame source types");
    ThrowIfFailed<ComException>(InitAttributes(configuration), "invalid output stream attributes store");
}

HRESULT OutputStream::InitMediaTypes(const OutputStreamConfiguration &configuration)
{
    for (const auto &srcMt : *configuration.mtList)
    {
        CHECK_POINTER(srcMt);
        ComPtr<IMFMediaType> dstMt;
        CHECK_HR(MFCreateMediaType(dstMt.GetAddressOf()));
        CHECK_HR(srcMt->CopyAllItems(dstMt.Get()));
        supportedMediaTypes.push_back(dstMt);
    }
    return S_OK;
}

HRESULT OutputStream::InitAttributes(const OutputStreamConfiguration &configuration)
{
    const std::wstring urlString = mft_utils::Widen(configuration.parentName);
    ComPtr<IMFAttributes> attr;
    CHECK_HR(MFCreateAttributes(attr.GetAddressOf(), 12));
    CHECK_HR(attr->SetUINT32(MFT_SUPPORT_DYNAMIC_FORMAT_CHANGE, 1));
    CHECK_HR(attr->SetString(MFT_ENUM_HARDWARE_URL_Attribute, urlString.c_str()));
    CHECK_HR(attr->SetUINT32(MF_TRANSFORM_ASYNC, 1));
    CHECK_HR_AS("attr->SetGUID(MF_DEVICESTREAM_STREAM_CATEGORY, __uuidof(struct PINNAME_VIDEO_CAPTURE))",
                attr->SetGUID(MF_DEVICESTREAM_STREAM_CATEGORY, PINNAME_VIDEO_CAPTURE));
    CHECK_HR(attr->SetUINT32(MF_DEVICESTREAM_STREAM_ID, id));
    CHECK_HR(attr->SetUINT32(MF_DEVICESTREAM_FRAMESERVER_SHARED, 1));
    CHECK_HR(attr->SetUINT32(MF_DEVICESTREAM_ATTRIBUTE_FRAMESOURCE_TYPES, supportedFrameSourceTypes));
    attributes = attr;
    CHECK_HR(AddExtrinsicsToStreamAttributes(configuration.extrinsics));
    CHECK_HR(AddIntrinsicsToStreamAttributes(configuration.intrinsics));
    CHECK_HR(AddDepthAttributes(configuration.depth));
    if (configuration.attributes)
    {
        CHECK_HR_AS("MFAttributesParser::CopyStore(attr, configuration.attributes, false, "
                    "{MF_SA_D3D11_SHARED_WITHOUT_MUTEX })",
                    MFAttributesParser::CopyStore(attr.Get(), configuration.attributes.Get(), false,
                                                  {MF_SA_D3D11_SHARED_WITHOUT_MUTEX}));
    }
    return S_OK;
}

HRESULT OutputStream::AddExtrinsicsToStreamAttributes(const CameraBlob &extrinsics)
{
    if (extrinsics.data)
    {
        CHECK_HR_AS(
            "attr->SetBlob(MFStreamExtension_CameraExtrinsics, reinterpret_cast<const UINT8 "
            "*>(extrinsics.get()), size)",
            attributes->SetBlob(MFStreamExtension_CameraExtrinsics, extrinsics.data.get(), extrinsics.sizeBytes));
    }
    return S_OK;
}

HRESULT OutputStream::AddIntrinsicsToStreamAttributes(const CameraBlob &intrinsics)
{
    if (intrinsics.data)
    {
        CHECK_HR_AS("attr->SetBlob(MFStreamExtension_PinholeCameraIntrinsics, reinterpret_cast<const UINT8 "
                    "*>(intrinsics.get()), size)",
                    attributes->SetBlob(MFStreamExtension_PinholeCameraIntrinsics, intrinsics.data.get(),
                                        intrinsics.sizeBytes));
    }
    return S_OK;
}

HRESULT OutputStream::AddDepthAttributes(const std::optional<DepthDescription> &depth)
{
    if (!depth)
    {
        return S_OK;
    }
    const DepthDescription &configuration = *depth;
    const auto &attr = attributes;
    CHECK_HR(attr->SetUINT32(MF_MT_DEPTH_MEASUREMENT, configuration.measurementType));
    CHECK_HR(attr->SetUINT64(MF_MT_DEPTH_VALUE_UNIT, configuration.depthValueUnit));
    for (const auto &mt : supportedMediaTypes)
    {
        CHECK_HR(mt->SetUINT32(MF_MT_DEPTH_MEASUREMENT, configuration.measurementType));
        CHECK_HR(mt->SetUINT64(MF_MT_DEPTH_VALUE_UNIT, configuration.depthValueUnit));
    }
    return S_OK;
}

HRESULT OutputStream::Flush()
{
    std::list<ComPtr<IMFSample>> dropped; // released outside the lock
    const std::scoped_lock guard(lock);
    TakeSamples(dropped);
    return S_OK;
}

void OutputStream::TakeSamples(std::list<ComPtr<IMFSample>> &taken)
{
    taken.swap(samples);
    if (eventGenerator != nullptr)
    {
        eventGenerator->TellEmptied(id);
    }
    if (!taken.empty())
    {
        TRACE_INFO("%s: %zu samples flushed", GetName(), taken.size());
    }
}

HRESULT OutputStream::ProcessSample(IMFSample *sample)
{
    CHECK_POINTER(sample);
    TraceLoggingActivity activity("mft_core::OutputStream::ProcessSample");
    const std::scoped_lock guard(lock);
    inputRateMonitor.AddSample(NowMicroseconds());
    if (state != DeviceStreamState_Run || eventGenerator == nullptr)
    {
        TRACE_VERBOSE("%s: sample dropped, the stream does not run", GetName());
        return S_OK;
    }
    samples.emplace_back(sample);
    const HRESULT announced = eventGenerator->RaiseHaveOutput(id, sample);
    if (FAILED(announced))
    {
        samples.pop_back(); // nobody would come for it
    }
    CHECK_HR_AS("eventGenerator->QueueEvent(METransformHaveOutput, GUID_NULL, ((HRESULT)0L), nullptr)", announced);
    activity.Write(TraceLevel::Information, "Sample queued",
                   {TraceField::UInt32("SamplesQSize", static_cast<std::uint32_t>(samples.size())),
                    TraceField::String("Stream", GetName())});
    return S_OK;
}

HRESULT OutputStream::ProcessOutput(MFT_OUTPUT_DATA_BUFFER &buffer)
{
    TraceLoggingActivity activity("mft_core::OutputStream::ProcessOutput");
    const std::scoped_lock guard(lock);
    if (state != DeviceStreamState_Run)
    {
        return S_OK;
    }
    outputRateMonitor.AddSample(NowMicroseconds());
    if (samples.empty())
    {
        TRACE_INFO("No Sample");
        return MF_E_TRANSFORM_NEED_MORE_INPUT;
    }
    ComPtr<IMFSample> sample = std::move(samples.front());
    samples.pop_front();
    if (activity.IsRunning())
    {
        LONGLONG sampleTime = 0;
        if (FAILED(sample->GetSampleTime(&sampleTime)))
        {
            sampleTime = 0;
        }
        activity.Write(TraceLevel::Information, "Sample delivered",
                       {TraceField::Int64("SampleTime", sampleTime),
                        TraceField::UInt32("SamplesQSize", static_cast<std::uint32_t>(samples.size())),
                        TraceField::String("Stream", GetName())});
    }
    buffer.pSample = sample.Detach();
    buffer.dwStatus = 0;
    return S_OK;
}

HRESULT OutputStream::SetState(DeviceStreamState theState)
{
    const HRESULT changed = ChangeState(theState);
    if (SUCCEEDED(changed) && theState == DeviceStreamState_Run)
    {
        ComPtr<IMFMediaType> type; // not under the lock: the platform makes memory for it
        GetCurrentMediaType(type.GetAddressOf());
        allocator->Start(type.Get());
    }
    else if (SUCCEEDED(changed) && theState == DeviceStreamState_Stop)
    {
        allocator->Stop();
    }
    return changed;
}

HRESULT OutputStream::ChangeState(DeviceStreamState theState)
{
    std::list<ComPtr<IMFSample>> dropped; // released outside the lock
    const std::scoped_lock guard(lock);
    const DeviceStreamState previous = state;
    CHECK_HR(Stream::SetState(theState));
    if (theState == DeviceStreamState_Run)
    {
        const HRESULT announced = AnnounceRun();
        if (FAILED(announced))
        {
            state = previous;
        }
        return announced;
    }
    TRACE_INFO("%s: measured input %.1f fps, output %.1f fps", GetName(), inputRateMonitor.FPS(),
               outputRateMonitor.FPS());
    TakeSamples(dropped);
    return S_OK;
}

HRESULT OutputStream::AnnounceRun()
{
    ComPtr<IMFMediaEvent> event;
    CHECK_HR_AS("MFCreateMediaEvent(MEUnknown, MEDeviceStreamCreated, ((HRESULT)0L), 0, &event)",
                MFCreateMediaEvent(MEUnknown, MEDeviceStreamCreated, S_OK, nullptr, &event));
    CHECK_HR(event->SetUINT32(MF_EVENT_MFT_INPUT_STREAM_ID, id));
    CHECK_POINTER(eventGenerator);
    CHECK_HR_AS("eventGenerator->QueueEvent(event.Get())", eventGenerator->Raise(event.Get()));
    mft_utils::MediaTypeData data;
    if (currentMediaType && SUCCEEDED(mft_utils::MediaTypeParser::GetMediaTypeData(data, currentMediaType.Get())) &&
        data.denominator != 0 && data.numerator != 0)
    {
        const double expectedFps = static_cast<double>(data.numerator) / data.denominator;
        inputRateMonitor.Reset(expectedFps);
        outputRateMonitor.Reset(expectedFps);
    }
    else
    {
        inputRateMonitor.Clear();
        outputRateMonitor.Clear();
    }
    return S_OK;
}

} // namespace mft_core
