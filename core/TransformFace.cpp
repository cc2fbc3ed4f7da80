#include "core/TransformFace.h"

namespace mft_core
{

HRESULT TransformFace::MFTGetStreamCount(DWORD *inputStreams, DWORD *outputStreams)
{
    return DeviceFace().GetStreamCount(inputStreams, outputStreams);
}

HRESULT TransformFace::MFTGetStreamIDs(DWORD inputSize, DWORD *inputs, DWORD outputSize, DWORD *outputs)
{
    return DeviceFace().GetStreamIDs(inputSize, inputs, outputSize, outputs);
}

HRESULT TransformFace::MFTGetInputAvailableType(DWORD id, DWORD index, IMFMediaType **type)
{
    return DeviceFace().GetInputAvailableType(id, index, type);
}

HRESULT TransformFace::MFTGetOutputAvailableType(DWORD id, DWORD index, IMFMediaType **type)
{
    return DeviceFace().GetOutputAvailableType(id, index, type);
}

HRESULT TransformFace::MFTGetOutputCurrentType(DWORD id, IMFMediaType **type)
{
    return DeviceFace().GetOutputCurrentType(id, type);
}

HRESULT TransformFace::MFTProcessEvent(DWORD id, IMFMediaEvent *event)
{
    return DeviceFace().ProcessEvent(id, event);
}

HRESULT TransformFace::MFTGetStreamLimits(DWORD *, DWORD *, DWORD *, DWORD *)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTGetInputStreamInfo(DWORD, MFT_INPUT_STREAM_INFO *)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTGetOutputStreamInfo(DWORD, MFT_OUTPUT_STREAM_INFO *)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTDeleteInputStream(DWORD)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTAddInputStreams(DWORD, DWORD *)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTSetInputType(DWORD, IMFMediaType *, DWORD)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTSetOutputType(DWORD, IMFMediaType *, DWORD)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTGetInputCurrentType(DWORD, IMFMediaType **)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTGetInputStatus(DWORD, DWORD *)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTGetOutputStatus(DWORD *)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTSetOutputBounds(LONGLONG, LONGLONG)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTProcessMessage(MFT_MESSAGE_TYPE, ULONG_PTR)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTProcessInput(DWORD, IMFSample *, DWORD)
{
    return E_NOTIMPL;
}

HRESULT TransformFace::MFTProcessOutput(DWORD, DWORD, MFT_OUTPUT_DATA_BUFFER *, DWORD *)
{
    return E_NOTIMPL;
}

} // namespace mft_core
