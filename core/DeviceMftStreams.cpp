// DeviceMft, second part: what streams there are, their media types and their states.
#include "core/DeviceMft.h"

#include "trace/Guard.h"

using mft_utils::EntryPoint;

namespace mft_core
{

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
    return EntryPoint(GetName(), [&]() -> HRESULT {
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
    return EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_HR_AS("RedirectCallToInputStream(dwInputStreamID, [&](InputStream &stream) { return "
                    "stream.GetCurrentMediaType(ppMediaType); })",
                    RedirectCallToInputStream(
                        dwInputStreamID, [&](InputStream &stream) { return stream.GetCurrentMediaType(ppMediaType); }));
        return S_OK;
    });
}

HRESULT DeviceMft::GetInputStreamAttributes(DWORD dwInputStreamID, IMFAttributes **ppAttributes)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_HR(RedirectCallToInputStream(dwInputStreamID,
                                           [&](InputStream &stream) { return stream.GetAttributes(ppAttributes); }));
        return S_OK;
    });
}

HRESULT DeviceMft::GetOutputAvailableType(DWORD dwOutputStreamID, DWORD dwTypeIndex, IMFMediaType **ppMediaType)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
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
    return EntryPoint(GetName(), [&]() -> HRESULT {
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
    return EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_HR(RedirectCallToOutputStream(dwOutputStreamID,
                                            [&](OutputStream &stream) { return stream.GetAttributes(ppAttributes); }));
        return S_OK;
    });
}

HRESULT DeviceMft::GetStreamCount(DWORD *pdwInputStreams, DWORD *pdwOutputStreams)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_POINTER(pdwInputStreams);
        CHECK_POINTER(pdwOutputStreams);
        *pdwInputStreams = static_cast<DWORD>(inputStreams.size());
        *pdwOutputStreams = static_cast<DWORD>(outputStreams.size());
        return S_OK;
    });
}

HRESULT DeviceMft::GetStreamIDs(DWORD inSize, DWORD *pInIds, DWORD outSize, DWORD *pOutIds)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_HR(inputStreams.WriteIds(inSize, pInIds));
        CHECK_HR(outputStreams.WriteIds(outSize, pOutIds));
        return S_OK;
    });
}

HRESULT DeviceMft::GetInputStreamState(DWORD dwStreamID, DeviceStreamState *value)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
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
    return EntryPoint(GetName(), [&]() -> HRESULT {
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
    return EntryPoint(GetName(), [&]() -> HRESULT {
        DeviceStreamState *const state = value;
        CHECK_HR_AS("RedirectCallToInputStream(dwStreamID, [&](InputStream &stream) { return "
                    "stream.GetPreferredState(state, ppMediaType); })",
                    RedirectCallToInputStream(
                        dwStreamID, [&](InputStream &stream) { return stream.GetPreferredState(state, ppMediaType); }));
        return S_OK;
    });
}

} // namespace mft_core
