// IMFRealTimeClientEx ("IMFRealTimeClientEx interface (mfidl.h)").
#pragma once

#include "platform/MediaFoundation.h"

MIDL_INTERFACE("03910848-AB16-4611-B100-17B88AE2F248")
IMFRealTimeClientEx : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE RegisterThreadsEx(DWORD * pdwTaskIndex, LPCWSTR wszClassName,
                                                        LONG lBasePriority) = 0;
    virtual HRESULT STDMETHODCALLTYPE UnregisterThreads() = 0;
    virtual HRESULT STDMETHODCALLTYPE SetWorkQueueEx(DWORD dwMultithreadedWorkQueueId, LONG lWorkItemBasePriority) = 0;
};
__CRT_UUID_DECL(IMFRealTimeClientEx, 0x03910848, 0xAB16, 0x4611, 0xB1, 0x00, 0x17, 0xB8, 0x8A, 0xE2, 0xF2, 0x48)
