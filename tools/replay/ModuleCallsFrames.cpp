// ModuleCalls, second part: frames and events.
#include "tools/replay/ModuleCalls.h"

#include "tools/command/ExitCode.h"
#include "tools/replay/CallArguments.h"
#include "tools/replay/ComValues.h"
#include "tools/replay/EventArrival.h"
#include "base/PropVariant.h"
#include "base/TakeReference.h"

namespace tarn_replay
{

using tarn_host::HostError;
using tarn_host::ThrowIfFailed;

namespace
{
constexpr DWORD kMostBuffers = 1024;
constexpr std::chrono::seconds kEventLimit{5};

GUID GuidOf(tarn_recording::ValueList in, std::uint16_t name)
{
    const auto value = in.Find(name);
    const auto guid = value ? value->AsGuid() : std::nullopt;
    return guid ? ToGuid(*guid) : GUID{};
}

PROPVARIANT VariantOf(const std::optional<tarn_recording::Value> &value)
{
    PROPVARIANT variant;
    PropVariantInit(&variant);
    if (const auto number = value ? value->Unsigned() : std::nullopt)
    {
        variant.vt = value->Kind() == TARN_KIND_U32 ? VT_UI4 : VT_UI8;
        variant.uhVal.QuadPart = *number;
    }
    else if (const auto signedNumber = value ? value->Signed() : std::nullopt)
    {
        variant.vt = VT_I8;
        variant.hVal.QuadPart = *signedNumber;
    }
    return variant;
}

void PutEvent(ValueWriter &given, IMFMediaEvent *event)
{
    if (event == nullptr)
    {
        return;
    }
    MediaEventType type = MEUnknown;
    GUID extendedType{};
    HRESULT status = S_OK;
    mft_utils::PropVariant value;
    ThrowIfFailed(event->GetType(&type), "IMFMediaEvent::GetType");
    ThrowIfFailed(event->GetExtendedType(&extendedType), "GetExtendedType");
    ThrowIfFailed(event->GetStatus(&status), "GetStatus");
    ThrowIfFailed(event->GetValue(value.Receive()), "GetValue");
    given.U32(TARN_VALUE_EVENT_TYPE, static_cast<std::uint32_t>(type));
    given.Guid(TARN_VALUE_EXTENDED_TYPE, &extendedType);
    given.U32(TARN_VALUE_EVENT_STATUS, static_cast<std::uint32_t>(status));
    Put(given, TARN_VALUE_EVENT_VALUE, value.Get());
    Put(given, TARN_VALUE_ATTRIBUTES, event);
}
} // namespace

HRESULT ModuleCalls::ProcessEvent(Values in, ValueWriter &)
{
    ComPtr<IMFMediaEvent> event;
    const auto object = in.Find(TARN_VALUE_OBJECT);
    if (!object || !object->IsNull())
    {
        const PROPVARIANT value = VariantOf(in.Find(TARN_VALUE_EVENT_VALUE));
        ThrowIfFailed(MFCreateMediaEvent(Number(in, TARN_VALUE_EVENT_TYPE), GuidOf(in, TARN_VALUE_EXTENDED_TYPE),
                                         static_cast<HRESULT>(Number(in, TARN_VALUE_EVENT_STATUS)), &value, &event),
                      "MFCreateMediaEvent");
    }
    return transform->ProcessEvent(Number(in, TARN_VALUE_STREAM), event.Get());
}

// Whether the module takes a reference over shows at a frame that it drops at once: one before any state was set.
HRESULT ModuleCalls::ProcessInput(const tarn_recording::Record &call)
{
    const auto in = call.Values();
    const auto recorded = in.Find(TARN_VALUE_SAMPLE);
    if (!recorded || recorded->IsNull())
    {
        return transform->ProcessInput(Number(in, TARN_VALUE_STREAM), nullptr, Number(in, TARN_VALUE_FLAGS));
    }
    const ComPtr<IMFSample> sample = MakeSample(recorded->Items(), pixels.Of(call));
    sample.Get()->AddRef();
    const HRESULT result =
        transform->ProcessInput(Number(in, TARN_VALUE_STREAM), sample.Get(), Number(in, TARN_VALUE_FLAGS));
    if (!hasChangedState)
    {
        sample.Get()->AddRef();
        consumesInput = sample.Get()->Release() == 1;
    }
    if (!consumesInput)
    {
        sample.Get()->Release();
    }
    return result;
}

HRESULT ModuleCalls::ProcessOutput(Values in, ValueWriter &given)
{
    std::vector<MFT_OUTPUT_DATA_BUFFER> buffers;
    bool hasBuffers = true;
    for (const auto &value : in)
    {
        if (value.Name() == TARN_VALUE_BUFFER)
        {
            hasBuffers = !value.IsNull();
            buffers.emplace_back().dwStreamID = Number(value.Items(), TARN_VALUE_STREAM);
        }
    }
    const auto told = in.Unsigned(TARN_VALUE_COUNT);
    const DWORD count = told ? static_cast<DWORD>(*told) : static_cast<DWORD>(buffers.size());
    buffers.resize(std::max<std::size_t>(buffers.size(), std::min(count, kMostBuffers)));
    DWORD status = 0;
    const HRESULT result = transform->ProcessOutput(
        Number(in, TARN_VALUE_FLAGS), count, hasBuffers ? Out(in, 0, buffers.data()) : nullptr, Out(in, 1, &status));
    for (const MFT_OUTPUT_DATA_BUFFER &buffer : buffers)
    {
        ComPtr<IMFSample> sample;
        ComPtr<IMFCollection> events;
        user_space_frameworks::TakeReference(sample, buffer.pSample);
        user_space_frameworks::TakeReference(events, buffer.pEvents);
        const std::size_t begun = given.BeginList(TARN_VALUE_BUFFER);
        given.U32(TARN_VALUE_STREAM, buffer.dwStreamID);
        given.U32(TARN_VALUE_STATUS, buffer.dwStatus);
        Put(given, TARN_VALUE_SAMPLE, sample.Get(), sample ? ++outputNumbers[buffer.dwStreamID] : 0);
        if (sample && hashesWanted)
        {
            given.U64(TARN_VALUE_HASH, HashOf(*sample.Get()));
        }
        given.End(begun);
    }
    given.U32(TARN_VALUE_STATUS, status);
    return result;
}

HRESULT ModuleCalls::GetEvent(Values in, ValueWriter &given)
{
    ComPtr<IMFMediaEvent> event;
    const HRESULT result =
        Ask<IMFMediaEventGenerator>()->GetEvent(Number(in, TARN_VALUE_FLAGS), Out(in, 0, event.GetAddressOf()));
    PutEvent(given, event.Get());
    return result;
}

HRESULT ModuleCalls::BeginGetEvent(Values in, ValueWriter &)
{
    const auto callback = in.Find(TARN_VALUE_OBJECT);
    const bool isNull = callback && callback->IsNull();
    return Ask<IMFMediaEventGenerator>()->BeginGetEvent(isNull ? nullptr : arrival.Get(), nullptr);
}

HRESULT ModuleCalls::EndGetEvent(Values in, ValueWriter &given)
{
    const auto object = in.Find(TARN_VALUE_OBJECT);
    const bool isNull = object && object->IsNull();
    const ComPtr<IMFAsyncResult> arrived = isNull ? nullptr : arrival->Take(kEventLimit);
    if (!isNull && !arrived)
    {
        throw HostError("no event came");
    }
    ComPtr<IMFMediaEvent> event;
    const HRESULT result = Ask<IMFMediaEventGenerator>()->EndGetEvent(arrived.Get(), Out(in, 0, event.GetAddressOf()));
    PutEvent(given, event.Get());
    return result;
}

HRESULT ModuleCalls::QueueEvent(Values in, ValueWriter &)
{
    const PROPVARIANT value = VariantOf(in.Find(TARN_VALUE_EVENT_VALUE));
    return Ask<IMFMediaEventGenerator>()->QueueEvent(Number(in, TARN_VALUE_EVENT_TYPE),
                                                     GuidOf(in, TARN_VALUE_EXTENDED_TYPE),
                                                     static_cast<HRESULT>(Number(in, TARN_VALUE_EVENT_STATUS)), &value);
}

} // namespace tarn_replay
