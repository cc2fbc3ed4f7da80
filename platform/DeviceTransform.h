// IMFDeviceTransform and what belongs to it ("IMFDeviceTransform interface (mftransform.h)").
#pragma once

#include "platform/MediaFoundation.h"

// The type is fixed so that any value a caller passes can be looked at.
enum DeviceStreamState : int
{
    DeviceStreamState_Stop = 0,
    DeviceStreamState_Pause = 1,
    DeviceStreamState_Run = 2,
    DeviceStreamState_Disabled = 3
};
static_assert(sizeof(DeviceStreamState) == 4);

MIDL_INTERFACE("D818FBD8-FC46-42F2-87AC-1EA2D1F9BF32")
IMFDeviceTransform : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE InitializeTransform(IMFAttributes * pAttributes) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputAvailableType(DWORD dwInputStreamID, DWORD dwTypeIndex,
                                                            IMFMediaType * *pMediaType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputCurrentType(DWORD dwInputStreamID, IMFMediaType * *pMediaType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputStreamAttributes(DWORD dwInputStreamID,
                                                               IMFAttributes * *ppAttributes) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetOutputAvailableType(DWORD dwOutputStreamID, DWORD dwTypeIndex,
                                                             IMFMediaType * *pMediaType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetOutputCurrentType(DWORD dwOutputStreamID, IMFMediaType * *pMediaType) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetOutputStreamAttributes(DWORD dwOutputStreamID,
                                                                IMFAttributes * *ppAttributes) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStreamCount(DWORD * pcInputStreams, DWORD * pcOutputStreams) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetStreamIDs(DWORD dwInputIDArraySize, DWORD * pdwInputStreamIds,
                                                   DWORD dwOutputIDArraySize, DWORD * pdwOutputStreamIds) = 0;
    virtual HRESULT STDMETHODCALLTYPE ProcessEvent(DWORD dwInputStreamID, IMFMediaEvent * pEvent) = 0;
    virtual HRESULT STDMETHODCALLTYPE ProcessInput(DWORD dwInputStreamID, IMFSample * pSample, DWORD dwFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE ProcessMessage(MFT_MESSAGE_TYPE eMessage, ULONG_PTR ulParam) = 0;
    virtual HRESULT STDMETHODCALLTYPE ProcessOutput(DWORD dwFlags, DWORD cOutputBufferCount,
                                                    MFT_OUTPUT_DATA_BUFFER * pOutputSample, DWORD * pdwStatus) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetInputStreamState(DWORD dwStreamID, IMFMediaType * pMediaType,
                                                          DeviceStreamState value, DWORD dwFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputStreamState(DWORD dwStreamID, DeviceStreamState * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetOutputStreamState(DWORD dwStreamID, IMFMediaType * pMediaType,
                                                           DeviceStreamState value, DWORD dwFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetOutputStreamState(DWORD dwStreamID, DeviceStreamState * value) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetInputStreamPreferredState(DWORD dwStreamID, DeviceStreamState * value,
                                                                   IMFMediaType * *ppMediaType) = 0;
    virtual HRESULT STDMETHODCALLTYPE FlushInputStream(DWORD dwStreamIndex, DWORD dwFlags) = 0;
    virtual HRESULT STDMETHODCALLTYPE FlushOutputStream(DWORD dwStreamIndex, DWORD dwFlags) = 0;
};
__CRT_UUID_DECL(IMFDeviceTransform, 0xD818FBD8, 0xFC46, 0x42F2, 0x87, 0xAC, 0x1E, 0xA2, 0xD1, 0xF9, 0xBF, 0x32)

// Extended type of the MEUnknown event that announces a started output stream.
inline constexpr GUID MEDeviceStreamCreated = {
    0x0252A1CF, 0x3540, 0x43B4, {0x91, 0x64, 0xD7, 0x2E, 0xB4, 0x05, 0xFA, 0x40}};

// Messages that the MFT_MESSAGE_TYPE of these headers lacks ("MFT_MESSAGE_TYPE enumeration (mftransform.h)").
inline constexpr auto MFT_MESSAGE_DROP_SAMPLES = static_cast<MFT_MESSAGE_TYPE>(3);
inline constexpr auto MFT_MESSAGE_COMMAND_TICK = static_cast<MFT_MESSAGE_TYPE>(4);
inline constexpr auto MFT_MESSAGE_NOTIFY_RELEASE_RESOURCES = static_cast<MFT_MESSAGE_TYPE>(0x10000004);
inline constexpr auto MFT_MESSAGE_NOTIFY_REACQUIRE_RESOURCES = static_cast<MFT_MESSAGE_TYPE>(0x10000005);
inline constexpr auto MFT_MESSAGE_NOTIFY_EVENT = static_cast<MFT_MESSAGE_TYPE>(0x10000006);
inline constexpr auto MFT_MESSAGE_COMMAND_SET_OUTPUT_STREAM_STATE = static_cast<MFT_MESSAGE_TYPE>(0x10000007);
inline constexpr auto MFT_MESSAGE_COMMAND_FLUSH_OUTPUT_STREAM = static_cast<MFT_MESSAGE_TYPE>(0x10000008);
