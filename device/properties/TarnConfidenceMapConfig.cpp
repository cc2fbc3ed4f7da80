#include "device/properties/TarnConfidenceMapConfig.h"

#include <stdexcept>
#include <utility>

#include "device/properties/CheckLength.h"
#include "ks/KsRequest.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

namespace mft_core
{

// The name is the presets property's; recordings are read by it.
TarnConfidenceMapConfig::TarnConfidenceMapConfig(SetCallback onSet, std::shared_ptr<const ConfidenceMapState> mapState)
    : KsPropHandler(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP,
                    "Tarn Depth Presets"),
      setCallback(std::move(onSet)), enabled(std::move(mapState))
{
}

HRESULT TarnConfidenceMapConfig::Run(PKSPROPERTY pProperty, ULONG, LPVOID pvPropertyData, ULONG ulDataLength,
                                     ULONG *pBytesReturned)
{
    SetReturnedSize(pBytesReturned, sizeof(KSPROPERTY_TARN_CONFIDENCE_MAP_CFG));
    CHECK_HR_AS("CheckLength(ulDataLength, sizeof(KSPROPERTY_TARN_CONFIDENCE_MAP_CFG), *pBytesReturned)",
                CheckLength(ulDataLength, sizeof(KSPROPERTY_TARN_CONFIDENCE_MAP_CFG)));
    CHECK_POINTER_AS("confidenceMapCfg", pvPropertyData, E_POINTER);
    CHECK_POINTER(pProperty);
    const ULONG flags = FlagsOf(pProperty);
    if ((flags & KSPROPERTY_TYPE_SET) != 0)
    {
        return Set(ReadBlock<KSPROPERTY_TARN_CONFIDENCE_MAP_CFG>(pvPropertyData).confidenceMapCfg != 0);
    }
    if ((flags & KSPROPERTY_TYPE_GET) == 0)
    {
        return E_INVALIDARG;
    }
    WriteBlock(pvPropertyData, KSPROPERTY_TARN_CONFIDENCE_MAP_CFG{enabled->IsEnabled() ? 1u : 0u});
    return S_OK;
}

HRESULT TarnConfidenceMapConfig::Set(bool nextEnabled) const
{
    if (nextEnabled == enabled->IsEnabled())
    {
        TRACE_INFO("%s stays %s", GetName(), nextEnabled ? "Enabled" : "Disabled");
        return S_OK;
    }
    if (setCallback == nullptr)
    {
        throw std::runtime_error("no callback function or instance");
    }
    CHECK_HR_AS("(*setCallback)(nextEnabled)", setCallback(nextEnabled));
    return S_OK;
}

} // namespace mft_core
