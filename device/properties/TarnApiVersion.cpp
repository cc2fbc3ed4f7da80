#include "device/properties/TarnApiVersion.h"

#include "device/properties/CheckLength.h"
#include "ks/KsRequest.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

namespace mft_core
{

TarnApiVersion::TarnApiVersion()
    : KsPropHandler(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION, "Tarn API Version")
{
}

HRESULT TarnApiVersion::Run(PKSPROPERTY pProperty, ULONG, LPVOID pvPropertyData, ULONG ulDataLength,
                            ULONG *pBytesReturned)
{
    SetReturnedSize(pBytesReturned, sizeof(KSPROPERTY_TARN_API_VERSION));
    CHECK_HR_AS("CheckLength(ulDataLength, sizeof(KSPROPERTY_TARN_API_VERSION), *pBytesReturned)",
                CheckLength(ulDataLength, sizeof(KSPROPERTY_TARN_API_VERSION)));
    CHECK_POINTER(pProperty);
    const ULONG flags = FlagsOf(pProperty);
    if ((flags & KSPROPERTY_TYPE_SET) != 0)
    {
        TRACE_ERROR("%s is read-only", GetName());
        return E_UNEXPECTED;
    }
    if ((flags & KSPROPERTY_TYPE_GET) == 0)
    {
        return E_INVALIDARG;
    }
    CHECK_POINTER(pvPropertyData);
    WriteBlock(pvPropertyData, KSPROPERTY_TARN_API_VERSION{TARN_API_VERSION_FIRST, TARN_API_VERSION_SECOND});
    return S_OK;
}

} // namespace mft_core
