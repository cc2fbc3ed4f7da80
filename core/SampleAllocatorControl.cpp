#include "core/SampleAllocatorControl.h"

#include "trace/Guard.h"

using mft_utils::EntryPoint;

namespace mft_core
{

SampleAllocatorControl::SampleAllocatorControl() : Object("Sample allocator control") {}

HRESULT SampleAllocatorControl::SetDefaultAllocator(DWORD dwOutputStreamID, IUnknown *pAllocator)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        Outlet outlet;
        CHECK_HR(FindOutlet(dwOutputStreamID, outlet));
        CHECK_POINTER_AS("outputStream", outlet.stream, E_INVALIDARG);
        if (outlet.allocates)
        {
            CHECK_HR(outlet.stream->Allocator()->Offer(pAllocator));
        }
        return S_OK;
    });
}

HRESULT SampleAllocatorControl::GetAllocatorUsage(DWORD dwOutputStreamID, DWORD *pdwInputStreamID,
                                                  MFSampleAllocatorUsage *peUsage)
{
    return EntryPoint(GetName(), [&]() -> HRESULT {
        CHECK_POINTER(peUsage);
        Outlet outlet;
        CHECK_HR(FindOutlet(dwOutputStreamID, outlet));
        CHECK_POINTER_AS("outputStream", outlet.stream, MF_E_INVALIDSTREAMNUMBER);
        if (outlet.allocates)
        {
            *peUsage = MFSampleAllocatorUsage_UsesProvidedAllocator;
            return S_OK;
        }
        CHECK_POINTER(pdwInputStreamID);
        *pdwInputStreamID = outlet.inputStreamId;
        *peUsage = MFSampleAllocatorUsage_DoesNotAllocate;
        return S_OK;
    });
}

} // namespace mft_core
