#include "sim/RefusingFilter.h"

namespace tarn_sim
{

HRESULT RefusingFilter::RefuseTransformCall()
{
    return TransformCall(Method::OtherTransform, [] { return E_NOTIMPL; });
}

HRESULT RefusingFilter::RefuseTopologyCall()
{
    return TopologyCall(Method::OtherTopology, [] { return E_NOTIMPL; });
}

HRESULT RefusingFilter::MFTGetStreamLimits(DWORD *, DWORD *, DWORD *, DWORD *)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTGetInputStreamInfo(DWORD, MFT_INPUT_STREAM_INFO *)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::GetInputStreamAttributes(DWORD, IMFAttributes **)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTDeleteInputStream(DWORD)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTAddInputStreams(DWORD, DWORD *)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTGetInputAvailableType(DWORD, DWORD, IMFMediaType **)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTSetInputType(DWORD, IMFMediaType *, DWORD)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTSetOutputType(DWORD, IMFMediaType *, DWORD)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTGetInputCurrentType(DWORD, IMFMediaType **)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTGetInputStatus(DWORD, DWORD *)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTGetOutputStatus(DWORD *)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTSetOutputBounds(LONGLONG, LONGLONG)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTProcessEvent(DWORD, IMFMediaEvent *)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTProcessMessage(MFT_MESSAGE_TYPE, ULONG_PTR)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTProcessInput(DWORD, IMFSample *, DWORD)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::MFTProcessOutput(DWORD, DWORD, MFT_OUTPUT_DATA_BUFFER *, DWORD *)
{
    return RefuseTransformCall();
}

HRESULT RefusingFilter::get_NumCategories(DWORD *)
{
    return RefuseTopologyCall();
}

HRESULT RefusingFilter::get_Category(DWORD, GUID *)
{
    return RefuseTopologyCall();
}

HRESULT RefusingFilter::get_NumConnections(DWORD *)
{
    return RefuseTopologyCall();
}

HRESULT RefusingFilter::get_ConnectionInfo(DWORD, KSTOPOLOGY_CONNECTION *)
{
    return RefuseTopologyCall();
}

HRESULT RefusingFilter::get_NodeName(DWORD, WCHAR *, DWORD, DWORD *)
{
    return RefuseTopologyCall();
}

HRESULT RefusingFilter::CreateNodeInstance(DWORD, REFIID, void **)
{
    return RefuseTopologyCall();
}

} // namespace tarn_sim
