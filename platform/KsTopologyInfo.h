// IKsTopologyInfo ("IKsTopologyInfo interface (vidcap.h)").
#pragma once

#include "platform/MediaFoundation.h"

MIDL_INTERFACE("720D4AC0-7533-11D0-A5D6-28DB04C10000")
IKsTopologyInfo : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE get_NumCategories(DWORD * pdwNumCategories) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_Category(DWORD dwIndex, GUID * pCategory) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_NumConnections(DWORD * pdwNumConnections) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_ConnectionInfo(DWORD dwIndex, KSTOPOLOGY_CONNECTION * pConnectionInfo) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_NodeName(DWORD dwNodeId, WCHAR * pwchNodeName, DWORD dwBufSize,
                                                   DWORD * pdwNameLen) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_NumNodes(DWORD * pdwNumNodes) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_NodeType(DWORD dwNodeId, GUID * pNodeType) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateNodeInstance(DWORD dwNodeId, REFIID iid, void **ppvObject) = 0;
};
__CRT_UUID_DECL(IKsTopologyInfo, 0x720D4AC0, 0x7533, 0x11D0, 0xA5, 0xD6, 0x28, 0xDB, 0x04, 0xC1, 0x00, 0x00)
static_assert(sizeof(KSTOPOLOGY_CONNECTION) == 16);
