// IMFSampleAllocatorControl ("IMFSampleAllocatorControl interface (mfidl.h)") and IMFVideoCaptureSampleAllocator
// ("IMFVideoCaptureSampleAllocator interface (mfidl.h)").
#pragma once

#include "platform/MediaFoundation.h"

enum MFSampleAllocatorUsage
{
    MFSampleAllocatorUsage_UsesProvidedAllocator = 0,
    MFSampleAllocatorUsage_UsesCustomAllocator = 1,
    MFSampleAllocatorUsage_DoesNotAllocate = 2
};

MIDL_INTERFACE("DA62B958-3A38-4A97-BD27-149C640C0771")
IMFSampleAllocatorControl : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE SetDefaultAllocator(DWORD dwOutputStreamID, IUnknown * pAllocator) = 0;
    virtual HRESULT STDMETHODCALLTYPE GetAllocatorUsage(DWORD dwOutputStreamID, DWORD * pdwInputStreamID,
                                                        MFSampleAllocatorUsage * peUsage) = 0;
};
__CRT_UUID_DECL(IMFSampleAllocatorControl, 0xDA62B958, 0x3A38, 0x4A97, 0xBD, 0x27, 0x14, 0x9C, 0x64, 0x0C, 0x07, 0x71)

MIDL_INTERFACE("725B77C7-CA9F-4FE5-9D72-9946BF9B3C70")
IMFVideoCaptureSampleAllocator : public IMFVideoSampleAllocator
{
    virtual HRESULT STDMETHODCALLTYPE InitializeCaptureSampleAllocator(
        DWORD cbSampleSize, DWORD cbCaptureMetadataSize, DWORD cbAlignment, DWORD cMinimumSamples,
        IMFAttributes * pAttributes, IMFMediaType * pMediaType) = 0;
};
__CRT_UUID_DECL(IMFVideoCaptureSampleAllocator, 0x725B77C7, 0xCA9F, 0x4FE5, 0x9D, 0x72, 0x99, 0x46, 0xBF, 0x9B, 0x3C,
                0x70)
