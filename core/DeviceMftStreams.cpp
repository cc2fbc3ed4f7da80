// DeviceMft, second part: what streams there are, their media types and their states.
#include "core/DeviceMft.h"

#include "trace/Guard.h"

using namespace mft_der;

namespace mft_core
{

namespace
{
auto Ids(const DWORD *ids, std::size_t count) noexcept
{
    return [=](RecordBuilder &values) {
        if (ids == nullptr)
        {
            values.Null(TARN_VALUE_STREAMS);
            return;
        }
        values.List(TARN_VALUE_STREAMS, [&] {
            for (std::size_t i = 0; i < count; ++i)
            {
                values.U32(TARN_VALUE_STREAM, ids[i]);
            }
        });
    };
}
} // namespace

HRESULT DeviceMft::RedirectCallToInputStream(DWORD streamId, const std::function<HRESULT(InputStream &stream)> &body)
{
    std::shared_ptr<InputStream> stream;
    CHECK_HR_AS("GetStream(stream, streamId, inputStreams)", inputStreams.Find(stream, streamId));
    return body(*stream);
}

HRESULT DeviceMft::RedirectCallToOutputStream(DWORD streamId, const std::function<HRESULT(OutputStream &stream)> &body)
{
    std::shared_ptr<OutputStream> stream;
    CHECK_HR_AS("GetStream(stream, streamId, outputStreams)", outputStreams.Find(stream, streamId));
    return body(*stream);
}

HRESULT DeviceMft::GetInputAvailableType(DWORD dwInputStreamID, DWORD dwTypeIndex, IMFMediaType **ppMediaType)
{
    return Recorded(
        TARN_CALL_GET_INPUT_AVAILABLE_TYPE,
        Values(StreamId(dwInputStreamID), Number(TARN_VALUE_INDEX, dwTypeIndex), OutPointer(0, ppMediaType)),
        StoreAt(TARN_VALUE_MEDIA_TYPE, ppMediaType), [&]() -> HRESULT {
            CHECK_HR_AS("RedirectCallToInputStream(dwInputStreamID, [&](InputStream &stream) { return "
                        "stream.GetMediaTypeAt(dwTypeIndex, ppMediaType); })",
                        RedirectCallToInputStream(dwInputStreamID, [&](InputStream &stream) {
                            return stream.GetMediaTypeAt(dwTypeIndex, ppMediaType);
                        }));
            return S_OK;
        });
}

HRESULT DeviceMft::GetInputCurrentType(DWORD dwInputStreamID, IMFMediaType **ppMediaType)
{
    return Recorded(TARN_CALL_GET_INPUT_CURRENT_TYPE, Values(StreamId(dwInputStreamID), OutPointer(0, ppMediaType)),
                    StoreAt(TARN_VALUE_MEDIA_TYPE, ppMediaType), [&]() -> HRESULT {
                        CHECK_HR_AS("RedirectCallToInputStream(dwInputStreamID, [&](InputStream &stream) { return "
                                    "stream.GetCurrentMediaType(ppMediaType); })",
                                    RedirectCallToInputStream(dwInputStreamID, [&](InputStream &stream) {
                                        return stream.GetCurrentMediaType(ppMediaType);
                                    }));
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetInputStreamAttributes(DWORD dwInputStreamID, IMFAttributes **ppAttributes)
{
    return Recorded(TARN_CALL_GET_INPUT_STREAM_ATTRIBUTES,
                    Values(StreamId(dwInputStreamID), OutPointer(0, ppAttributes)),
                    StoreAt(TARN_VALUE_ATTRIBUTES, ppAttributes), [&]() -> HRESULT {
                        CHECK_HR(RedirectCallToInputStream(
                            dwInputStreamID, [&](InputStream &stream) { return stream.GetAttributes(ppAttributes); }));
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetOutputAvailableType(DWORD dwOutputStreamID, DWORD dwTypeIndex, IMFMediaType **ppMediaType)
{
    return Recorded(
        TARN_CALL_GET_OUTPUT_AVAILABLE_TYPE,
        Values(StreamId(dwOutputStreamID), Number(TARN_VALUE_INDEX, dwTypeIndex), OutPointer(0, ppMediaType)),
        StoreAt(TARN_VALUE_MEDIA_TYPE, ppMediaType), [&]() -> HRESULT {
            CHECK_HR_AS("RedirectCallToOutputStream(dwOutputStreamID, [&](OutputStream &stream) { return "
                        "stream.GetMediaTypeAt(dwTypeIndex, ppMediaType); })",
                        RedirectCallToOutputStream(dwOutputStreamID, [&](OutputStream &stream) {
                            return stream.GetMediaTypeAt(dwTypeIndex, ppMediaType);
                        }));
            return S_OK;
        });
}

HRESULT DeviceMft::GetOutputCurrentType(DWORD dwOutputStreamID, IMFMediaType **ppMediaType)
{
    return Recorded(TARN_CALL_GET_OUTPUT_CURRENT_TYPE, Values(StreamId(dwOutputStreamID), OutPointer(0, ppMediaType)),
                    StoreAt(TARN_VALUE_MEDIA_TYPE, ppMediaType), [&]() -> HRESULT {
                        CHECK_HR_AS("RedirectCallToOutputStream(dwOutputStreamID, [&](OutputStream &stream) { return "
                                    "stream.GetCurrentMediaType(ppMediaType); })",
                                    RedirectCallToOutputStream(dwOutputStreamID, [&](OutputStream &stream) {
                                        return stream.GetCurrentMediaType(ppMediaType);
                                    }));
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetOutputStreamAttributes(DWORD dwOutputStreamID, IMFAttributes **ppAttributes)
{
    return Recorded(TARN_CALL_GET_OUTPUT_STREAM_ATTRIBUTES,
                    Values(StreamId(dwOutputStreamID), OutPointer(0, ppAttributes)),
                    StoreAt(TARN_VALUE_ATTRIBUTES, ppAttributes), [&]() -> HRESULT {
                        CHECK_HR(RedirectCallToOutputStream(dwOutputStreamID, [&](OutputStream &stream) {
                            return stream.GetAttributes(ppAttributes);
                        }));
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetStreamCount(DWORD *pdwInputStreams, DWORD *pdwOutputStreams)
{
    return Recorded(TARN_CALL_GET_STREAM_COUNT, Values(OutPointer(0, pdwInputStreams), OutPointer(1, pdwOutputStreams)),
                    Values(NumberAt(TARN_VALUE_COUNT, pdwInputStreams), NumberAt(TARN_VALUE_COUNT, pdwOutputStreams)),
                    [&]() -> HRESULT {
                        CHECK_POINTER(pdwInputStreams);
                        CHECK_POINTER(pdwOutputStreams);
                        *pdwInputStreams = static_cast<DWORD>(inputStreams.size());
                        *pdwOutputStreams = static_cast<DWORD>(outputStreams.size());
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetStreamIDs(DWORD inSize, DWORD *pInIds, DWORD outSize, DWORD *pOutIds)
{
    return Recorded(TARN_CALL_GET_STREAM_IDS,
                    Values(Number(TARN_VALUE_COUNT, inSize), Number(TARN_VALUE_COUNT, outSize), OutPointer(0, pInIds),
                           OutPointer(1, pOutIds)),
                    Values(Ids(pInIds, inputStreams.size()), Ids(pOutIds, outputStreams.size())), [&]() -> HRESULT {
                        CHECK_HR(inputStreams.WriteIds(inSize, pInIds));
                        CHECK_HR(outputStreams.WriteIds(outSize, pOutIds));
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetInputStreamState(DWORD dwStreamID, DeviceStreamState *value)
{
    return Recorded(TARN_CALL_GET_INPUT_STREAM_STATE, Values(StreamId(dwStreamID), OutPointer(0, value)),
                    NumberAt(TARN_VALUE_STATE, value), [&]() -> HRESULT {
                        DeviceStreamState *const state = value;
                        CHECK_POINTER(state);
                        CHECK_HR(RedirectCallToInputStream(dwStreamID, [&](InputStream &stream) -> HRESULT {
                            *state = stream.GetState();
                            return S_OK;
                        }));
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetOutputStreamState(DWORD dwStreamID, DeviceStreamState *value)
{
    return Recorded(TARN_CALL_GET_OUTPUT_STREAM_STATE, Values(StreamId(dwStreamID), OutPointer(0, value)),
                    NumberAt(TARN_VALUE_STATE, value), [&]() -> HRESULT {
                        DeviceStreamState *const state = value;
                        CHECK_POINTER(state);
                        CHECK_HR(RedirectCallToOutputStream(dwStreamID, [&](OutputStream &stream) -> HRESULT {
                            *state = stream.GetState();
                            return S_OK;
                        }));
                        return S_OK;
                    });
}

HRESULT DeviceMft::GetInputStreamPreferredState(DWORD dwStreamID, DeviceStreamState *value, IMFMediaType **ppMediaType)
{
    return Recorded(TARN_CALL_GET_INPUT_STREAM_PREFERRED_STATE,
                    Values(StreamId(dwStreamID), OutPointer(0, value), OutPointer(1, ppMediaType)),
                    Values(NumberAt(TARN_VALUE_STATE, value), StoreAt(TARN_VALUE_MEDIA_TYPE, ppMediaType)),
                    [&]() -> HRESULT {
                        DeviceStreamState *const state = value;
                        CHECK_HR_AS("RedirectCallToInputStream(dwStreamID, [&](InputStream &stream) { return "
                                    "stream.GetPreferredState(state, ppMediaType); })",
                                    RedirectCallToInputStream(dwStreamID, [&](InputStream &stream) {
                                        return stream.GetPreferredState(state, ppMediaType);
                                    }));
                        return S_OK;
                    });
}

} // namespace mft_core
