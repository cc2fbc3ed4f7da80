#include "tools/replay/RecordedCamera.h"

#include <algorithm>

#include "tools/replay/ComValues.h"

namespace tarn_replay
{

using tarn_recording::Bytes;

namespace
{
Bytes BytesAt(const void *block, ULONG length)
{
    return block == nullptr ? Bytes{} : Bytes(static_cast<const std::uint8_t *>(block), length);
}
} // namespace

RecordedCamera::RecordedCamera(const tarn_recording::RecordedSession &session, std::uint32_t transform,
                               std::function<void(const std::string &)> whenDifferent)
    : answers(session, transform), tellDifference(std::move(whenDifferent))
{
    for (const auto &record : session.Records())
    {
        if (record.header.type == TARN_RECORD_CAMERA && record.header.transform == transform)
        {
            Learn(record);
        }
    }
    if (!attributes)
    {
        attributes = MakeAttributes({});
    }
}

void RecordedCamera::Learn(const tarn_recording::Record &record)
{
    const auto values = record.Values();
    const auto streamId = static_cast<DWORD>(values.Unsigned(TARN_VALUE_STREAM).value_or(0));
    const auto store = values.Find(TARN_VALUE_ATTRIBUTES);
    const bool hasStore = store && !store->IsNull();
    switch (record.header.subject)
    {
    case TARN_CAMERA_STREAM:
        StreamOf(streamId).attributes = hasStore ? MakeAttributes(store->Items()) : nullptr;
        break;
    case TARN_CAMERA_MEDIA_TYPE:
        StreamOf(streamId).types.push_back(MakeMediaType(values.Find(TARN_VALUE_MEDIA_TYPE)));
        break;
    case TARN_CAMERA_ATTRIBUTES:
        attributes = hasStore ? MakeAttributes(store->Items()) : nullptr;
        break;
    case TARN_CAMERA_TOPOLOGY_NODE: {
        const auto type = values.Find(TARN_VALUE_NODE_TYPE);
        const auto guid = type ? type->AsGuid() : std::nullopt;
        nodes.push_back(guid ? ToGuid(*guid) : GUID{});
        break;
    }
    default:
        break;
    }
}

RecordedCamera::Stream &RecordedCamera::StreamOf(DWORD id)
{
    const auto found = std::ranges::find(streams, id, &Stream::id);
    return found != streams.end() ? *found : streams.emplace_back(Stream{id, nullptr, {}});
}

const RecordedCamera::Stream *RecordedCamera::Find(DWORD id) const
{
    const auto found = std::ranges::find(streams, id, &Stream::id);
    return found == streams.end() ? nullptr : &*found;
}

void RecordedCamera::SignalEvent()
{
    events.SignalAll();
}

HRESULT RecordedCamera::MFTGetStreamCount(DWORD *inputs, DWORD *outputs)
{
    *inputs = 0;
    *outputs = static_cast<DWORD>(streams.size());
    return S_OK;
}

HRESULT RecordedCamera::MFTGetStreamIDs(DWORD, DWORD *, DWORD outSize, DWORD *outIds)
{
    if (outSize < streams.size())
    {
        return MF_E_BUFFERTOOSMALL;
    }
    std::ranges::transform(streams, outIds, &Stream::id);
    return S_OK;
}

HRESULT RecordedCamera::MFTGetOutputStreamInfo(DWORD, MFT_OUTPUT_STREAM_INFO *info)
{
    *info = {MFT_OUTPUT_STREAM_WHOLE_SAMPLES | MFT_OUTPUT_STREAM_PROVIDES_SAMPLES, 0, 0};
    return S_OK;
}

HRESULT RecordedCamera::GetAttributes(IMFAttributes **store)
{
    return attributes.CopyTo(store);
}

HRESULT RecordedCamera::GetOutputStreamAttributes(DWORD id, IMFAttributes **store)
{
    *store = nullptr;
    const Stream *const stream = Find(id);
    if (stream == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    return stream->attributes ? stream->attributes.CopyTo(store) : E_NOTIMPL;
}

// A copy, which the module may change.
HRESULT RecordedCamera::MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type)
{
    *type = nullptr;
    const Stream *const stream = Find(id);
    if (stream == nullptr)
    {
        return MF_E_INVALIDSTREAMNUMBER;
    }
    if (index >= stream->types.size())
    {
        return MF_E_NO_MORE_TYPES;
    }
    ComPtr<IMFMediaType> copy;
    HRESULT result = MFCreateMediaType(&copy);
    if (SUCCEEDED(result))
    {
        result = stream->types[index]->CopyAllItems(copy.Get());
    }
    *type = SUCCEEDED(result) ? copy.Detach() : nullptr;
    return result;
}

HRESULT RecordedCamera::MFTGetOutputCurrentType(DWORD, IMFMediaType **type)
{
    *type = nullptr;
    return MF_E_TRANSFORM_TYPE_NOT_SET;
}

HRESULT RecordedCamera::KsProperty(PKSPROPERTY property, ULONG length, void *data, ULONG dataLength,
                                   ULONG *bytesReturned)
{
    return Answer(TARN_KS_PROPERTY, property, length, data, dataLength, bytesReturned);
}

HRESULT RecordedCamera::KsMethod(PKSMETHOD method, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    return Answer(TARN_KS_METHOD, method, length, data, dataLength, bytesReturned);
}

HRESULT RecordedCamera::KsEvent(PKSEVENT event, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned)
{
    const HRESULT result = Answer(TARN_KS_EVENT, event, length, nullptr, dataLength, bytesReturned);
    if (SUCCEEDED(result) && data != nullptr && dataLength >= sizeof(KSEVENTDATA))
    {
        if (event == nullptr)
        {
            events.Disable(data);
        }
        else if ((event->Flags & KSEVENT_TYPE_ENABLE) != 0)
        {
            events.Enable(static_cast<const KSEVENTDATA *>(data), (event->Flags & KSEVENT_TYPE_ONESHOT) != 0);
        }
    }
    return result;
}

HRESULT RecordedCamera::Answer(std::uint16_t kind, const void *request, ULONG length, void *data, ULONG dataLength,
                               ULONG *bytesReturned)
{
    const KsAnswers::Answer answer =
        answers.Give({kind, BytesAt(request, length), BytesAt(data, dataLength), dataLength});
    if (!answer.difference.empty())
    {
        tellDifference(answer.difference);
    }
    if (data != nullptr && kind != TARN_KS_EVENT)
    {
        std::copy_n(answer.data.data(), std::min<std::size_t>(answer.data.size(), dataLength),
                    static_cast<std::uint8_t *>(data));
    }
    if (bytesReturned != nullptr && answer.bytesReturned)
    {
        *bytesReturned = *answer.bytesReturned;
    }
    return answer.result;
}

HRESULT RecordedCamera::get_NumNodes(DWORD *count)
{
    *count = static_cast<DWORD>(nodes.size());
    return S_OK;
}

HRESULT RecordedCamera::get_NodeType(DWORD node, GUID *type)
{
    if (node >= nodes.size())
    {
        return E_INVALIDARG;
    }
    *type = nodes[node];
    return S_OK;
}

} // namespace tarn_replay
