/* The public headers alone, as an application in plain C sees them. */
#include "tarn/tarn_dmft.h"

#include "tarn/calibration_table.h"
#include "tarn/depth_presets.h"
#include "tarn/device_attributes.h"
#include "tarn/device_info.h"
#include "tarn/firmware_errors.h"
#include "tarn/sample_attributes.h"
#include "tarn/tarn_formats.h"

static_assert(KSPROPERTY_XU_TARN_DEPTH_COMMAND == 7 && KSPROPERTY_XU_TARN_DEPTH_XU_ERROR == 4, "depth controls");
static_assert(KSPROPERTY_XU_TARN_COLOR_EXPOSURE_GRANULARITY == 4 && KSPROPERTY_XU_TARN_COLOR_XU_ERROR == 3,
              "color controls");
static_assert(TARN_DEPTH_PRESET_FACE_LOGIN == 14 && TARN_FIRMWARE_ERROR_WATCHDOG == 8, "ids");
static_assert(sizeof(TARN_CALIBRATION_TABLE) == 104 && sizeof(TARN_DEVICE_INFO) == 174, "layouts");
static_assert(HWmonitor_HDRConfigSet == 212 && KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND == 3, "commands");

const GUID *TarnSetAsSeenFromC(void);
const GUID *TarnSetAsSeenFromC(void)
{
    return &KSPROPERTYSETID_TARN_DMFT_CONTROL;
}
