/* The public headers alone, as an application in plain C sees them. */
#include "tarn/tarn_dmft.h"
#include "tarn/tarn_formats.h"

static_assert(KSPROPERTY_XU_TARN_DEPTH_COMMAND == 7 && KSPROPERTY_XU_TARN_DEPTH_XU_ERROR == 4, "depth controls");
static_assert(KSPROPERTY_XU_TARN_COLOR_EXPOSURE_GRANULARITY == 4 && KSPROPERTY_XU_TARN_COLOR_XU_ERROR == 3,
              "color controls");
static_assert(HWmonitor_HDRConfigSet == 212 && KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND == 3, "commands");

const GUID *TarnSetAsSeenFromC(void);
const GUID *TarnSetAsSeenFromC(void)
{
    return &KSPROPERTYSETID_TARN_DMFT_CONTROL;
}
