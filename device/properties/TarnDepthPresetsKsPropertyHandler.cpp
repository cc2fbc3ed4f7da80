#include "device/properties/TarnDepthPresetsKsPropertyHandler.h"

#include <utility>

#include "device/properties/CheckLength.h"
#include "ks/KsRequest.h"
#include "tarn/depth_presets.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"

namespace mft_core
{

TarnDepthPresetsKsPropertyHandler::TarnDepthPresetsKsPropertyHandler(std::shared_ptr<TarnDepthPresets> controller)
    : KsPropHandler(KSPROPERTYSETID_TARN_DMFT_CONTROL, KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS,
                    "Tarn Depth Presets"),
      depthPresetsController(std::move(controller))
{
}

HRESULT TarnDepthPresetsKsPropertyHandler::Run(PKSPROPERTY pProperty, ULONG, LPVOID pvPropertyData, ULONG ulDataLength,
                                               ULONG *pBytesReturned)
{
    SetReturnedSize(pBytesReturned, sizeof(KSPROPERTY_TARN_DEPTH_PRESET));
    CHECK_HR_AS("CheckLength(ulDataLength, sizeof(KSPROPERTY_TARN_DEPTH_PRESET), *pBytesReturned)",
                CheckLength(ulDataLength, sizeof(KSPROPERTY_TARN_DEPTH_PRESET)));
    CHECK_POINTER_AS("depthPreset", pvPropertyData, E_POINTER);
    CHECK_POINTER(pProperty);
    CHECK_POINTER(depthPresetsController);
    const ULONG flags = FlagsOf(pProperty);
    if ((flags & KSPROPERTY_TYPE_SET) != 0)
    {
        const auto depthPreset = ReadBlock<KSPROPERTY_TARN_DEPTH_PRESET>(pvPropertyData);
        CHECK_HR_AS("depthPresetsController->ApplyPreset(depthPreset.preset)",
                    depthPresetsController->ApplyPreset(TarnDepthPresets::PresetTypes{depthPreset.preset}));
        return S_OK;
    }
    if ((flags & KSPROPERTY_TYPE_GET) == 0)
    {
        return E_INVALIDARG;
    }
    WriteBlock(pvPropertyData,
               KSPROPERTY_TARN_DEPTH_PRESET{static_cast<std::uint32_t>(depthPresetsController->GetWantedPreset())});
    return S_OK;
}

} // namespace mft_core
