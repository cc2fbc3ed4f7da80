/* The device's public headers alone, as an application in plain C sees them. */
#include "tarn/calibration_table.h"
#include "tarn/depth_presets.h"
#include "tarn/device_attributes.h"
#include "tarn/device_info.h"
#include "tarn/firmware_errors.h"
#include "tarn/sample_attributes.h"

static_assert(TARN_DEPTH_PRESET_FACE_LOGIN == 14 && TARN_FIRMWARE_ERROR_WATCHDOG == 8, "ids");
static_assert(sizeof(TARN_CALIBRATION_TABLE) == 104 && sizeof(TARN_DEVICE_INFO) == 174, "layouts");

const GUID *TarnFrameMetadataAsSeenFromC(void);
const GUID *TarnFrameMetadataAsSeenFromC(void)
{
    return &TARN_SAMPLE_FRAME_METADATA;
}
