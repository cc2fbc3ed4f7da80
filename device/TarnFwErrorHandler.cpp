#include "device/TarnFwErrorHandler.h"

#include <cstdint>
#include <utility>

#include "tarn/firmware_errors.h"
#include "trace/Check.h"

namespace mft_core
{

namespace
{
const char *ErrorName(std::uint8_t code)
{
    switch (code)
    {
    case TARN_FIRMWARE_ERROR_NONE:
        return "none";
    case TARN_FIRMWARE_ERROR_LASER_TEMPERATURE:
        return "laser temperature";
    case TARN_FIRMWARE_ERROR_LASER_CURRENT:
        return "laser current";
    case TARN_FIRMWARE_ERROR_PROJECTOR:
        return "projector";
    case TARN_FIRMWARE_ERROR_SENSOR:
        return "sensor";
    case TARN_FIRMWARE_ERROR_CALIBRATION:
        return "calibration";
    case TARN_FIRMWARE_ERROR_FLASH:
        return "flash memory";
    case TARN_FIRMWARE_ERROR_USB_BANDWIDTH:
        return "USB bandwidth";
    case TARN_FIRMWARE_ERROR_WATCHDOG:
        return "watchdog restart";
    default:
        return "unknown";
    }
}
} // namespace

TarnFwErrorHandler::TarnFwErrorHandler(ComPtr<IKsControl> extensionUnit, const GUID &set, ULONG errorControlId,
                                       const std::string &ownerName)
    : KsEventsObserver(ownerName + " firmware error handler"),
      errorControl(std::move(extensionUnit), set, errorControlId, ownerName + " firmware error control")
{
}

void TarnFwErrorHandler::OnEvent()
{
    if (FAILED(TraceError()))
    {
        TRACE_ERROR("%s: the camera signalled, but its error control cannot be read", GetName());
    }
}

HRESULT TarnFwErrorHandler::TraceError()
{
    std::uint8_t code = 0;
    ULONG bytesReturned = 0;
    CHECK_HR(errorControl.Get(&code, sizeof(code), bytesReturned));
    if (bytesReturned < sizeof(code))
    {
        TRACE_ERROR("%s: empty answer", GetName());
        return E_FAIL;
    }
    if (code == TARN_FIRMWARE_ERROR_NONE)
    {
        TRACE_INFO("%s: no firmware error", GetName()); // the event announces other changes too
        return S_OK;
    }
    TRACE_ERROR("%s: firmware error: %s (%u)", GetName(), ErrorName(code), code);
    return S_OK;
}

} // namespace mft_core
