#include "device/properties/TarnConfidenceMapConfig.h"

#include <mutex>
#include <stdexcept>
#include <utility>

#include "device/properties/CheckLength.h"
#include "ks/KsRequest.h"
#include "tarn/tarn_dmft.h"
#include "trace/Guard.h"

namespace mft_core
{

namespace
{
const char *StateName(bool enabled) noexcept
{
    return enabled ? "Enabled" : "Disabled";
}
} // namespace

// The name is the presets property's; recordings are read by it.
TarnConfidenceMapConfig::TarnConfidenceMapConfig(SetCallback onSet, user_space_frameworks::CriticalSection *changeLock)
    : KsPropHandler(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP,
                    "Tarn Depth Presets"),
      setCallback(std::move(onSet)), lock(changeLock != nullptr ? *changeLock : ownLock)
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
    WriteBlock(pvPropertyData, KSPROPERTY_TARN_CONFIDENCE_MAP_CFG{IsEnabled() ? 1u : 0u});
    return S_OK;
}

HRESULT TarnConfidenceMapConfig::Set(bool requested)
{
    const std::scoped_lock guard(lock);
    const bool previous = IsEnabled();
    if (requested == previous)
    {
        TRACE_INFO("confidence map stays %s", StateName(previous));
        return S_OK;
    }
    TRACE_INFO("confidence map: %s -> %s", StateName(previous), StateName(requested));
    if (setCallback == nullptr)
    {
        throw std::runtime_error("no callback function or instance");
    }
    nextEnabled.store(requested, std::memory_order_relaxed);
    const HRESULT changed = mft_utils::Guarded([&] { return setCallback(requested); });
    if (FAILED(changed))
    {
        nextEnabled.store(previous, std::memory_order_relaxed);
    }
    CHECK_HR_AS("(*setCallback)(nextEnabled)", changed);
    enabled.store(requested, std::memory_order_relaxed);
    return S_OK;
}

} // namespace mft_core
