#include "tools/ks/KsExtensionControls.h"

#include "tarn/tarn_dmft.h"

namespace tarn_host
{

std::vector<ExtensionControl> ExtensionControlsOf(TransformKind transform)
{
#define TARN_EXTENSION_CONTROL(ids, control, number) {#control, set, static_cast<ULONG>(ids::control)},
    if (transform == TransformKind::Depth)
    {
        const GUID set = KSPROPERTYSETID_TARN_DEPTH_CONTROL;
        return {TARN_DEPTH_CONTROLS(TARN_EXTENSION_CONTROL)};
    }
    const GUID set = KSPROPERTYSETID_TARN_COLOR_CONTROL;
    return {TARN_COLOR_CONTROLS(TARN_EXTENSION_CONTROL)};
#undef TARN_EXTENSION_CONTROL
}

} // namespace tarn_host
