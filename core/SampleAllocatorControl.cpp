#include "core/SampleAllocatorControl.h"

#include "trace/Guard.h"

using namespace mft_der;

namespace mft_core
{

SampleAllocatorControl::SampleAllocatorControl() : Object("Sample allocator control") {}

HRESULT SampleAllocatorControl::SetDefaultAllocator(DWORD dwOutputStreamID, IUnknown *pAllocator)
{
    const auto given = Values(StreamId(dwOutputStreamID), ObjectGiven(pAllocator));
    return Recorded(TARN_CALL_SET_DEFAULT_ALLOCATOR, given, Values(), [&]() -> HRESULT {
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
    const auto given = Values(StreamId(dwOutputStreamID), OutPointer(0, pdwInputStreamID), OutPointer(1, peUsage));
    const auto taken = NumberAt(TARN_VALUE_USAGE, peUsage);
    return Recorded(TARN_CALL_GET_ALLOCATOR_USAGE, given, taken, [&]() -> HRESULT {
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
