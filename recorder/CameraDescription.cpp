#include "recorder/CameraDescription.h"

#include "platform/KsTopologyInfo.h"

#include <vector>

#include "recorder/AttributeEncoder.h"

namespace mft_der
{

namespace
{
constexpr DWORD kMostTypes = 4096; // a filter that never ends would never be told

RecordHead HeadOf(std::uint16_t subject) noexcept
{
    return {.type = TARN_RECORD_CAMERA, .subject = subject, .entry = CallUnderWay::OfThisThread()};
}

std::vector<DWORD> StreamsOf(IMFTransform &filter)
{
    DWORD inputs = 0;
    DWORD outputs = 0;
    if (FAILED(filter.MFTGetStreamCount(&inputs, &outputs)))
    {
        return {};
    }
    std::vector<DWORD> inputIds(inputs);
    std::vector<DWORD> ids(outputs);
    if (FAILED(filter.MFTGetStreamIDs(inputs, inputIds.data(), outputs, ids.data())))
    {
        for (DWORD i = 0; i < outputs; ++i)
        {
            ids[i] = i;
        }
    }
    return ids;
}

void RecordStream(const TransformRecording &transform, IMFTransform &filter, DWORD stream)
{
    ComPtr<IMFAttributes> attributes;
    filter.GetOutputStreamAttributes(stream, &attributes);
    transform.Write(HeadOf(TARN_CAMERA_STREAM), [&](RecordBuilder &values) {
        values.U32(TARN_VALUE_STREAM, stream);
        AddAttributes(values, TARN_VALUE_ATTRIBUTES, attributes.Get());
    });
    for (DWORD index = 0; index < kMostTypes; ++index)
    {
        ComPtr<IMFMediaType> type;
        if (FAILED(filter.MFTGetOutputAvailableType(stream, index, &type)))
        {
            return;
        }
        transform.Write(HeadOf(TARN_CAMERA_MEDIA_TYPE), [&](RecordBuilder &values) {
            values.U32(TARN_VALUE_STREAM, stream).U32(TARN_VALUE_INDEX, index);
            AddAttributes(values, TARN_VALUE_MEDIA_TYPE, type.Get());
        });
    }
}

void RecordTopology(const TransformRecording &transform, IMFTransform &filter)
{
    ComPtr<IKsTopologyInfo> topology;
    DWORD count = 0;
    if (FAILED(filter.QueryInterface(IID_PPV_ARGS(&topology))) || FAILED(topology->get_NumNodes(&count)))
    {
        return;
    }
    for (DWORD index = 0; index < count && index < kMostTypes; ++index)
    {
        GUID type{};
        if (SUCCEEDED(topology->get_NodeType(index, &type)))
        {
            transform.Write(HeadOf(TARN_CAMERA_TOPOLOGY_NODE), [&](RecordBuilder &values) {
                values.U32(TARN_VALUE_INDEX, index).Guid(TARN_VALUE_NODE_TYPE, BytesOf(type));
            });
        }
    }
}
} // namespace

void RecordCamera(const TransformRecording &transform, IMFTransform *filter) noexcept
{
    mft_utils::Guarded([&] {
        ComPtr<IMFAttributes> attributes;
        filter->GetAttributes(&attributes);
        transform.Write(HeadOf(TARN_CAMERA_ATTRIBUTES),
                        [&](RecordBuilder &values) { AddAttributes(values, TARN_VALUE_ATTRIBUTES, attributes.Get()); });
        for (const DWORD stream : StreamsOf(*filter))
        {
            RecordStream(transform, *filter, stream);
        }
        RecordTopology(transform, *filter);
        return S_OK;
    });
}

} // namespace mft_der
