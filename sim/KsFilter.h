// The KS side of the simulated filter: extension-unit controls, privacy, events.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "sim/CameraConfiguration.h"
#include "sim/CameraControls.h"
#include "sim/FaultInjector.h"
#include "sim/Firmware.h"
#include "sim/KsCall.h"
#include "sim/KsEventTable.h"

namespace tarn_sim
{

// Answers like a driver: lengths are checked before anything is touched, a refused request changes nothing, and what
// the camera does not know is ERROR_SET_NOT_FOUND or ERROR_NOT_FOUND. Owned by the camera. Thread-safe.
class KsFilter
{
  public:
    KsFilter(const CameraConfiguration &configuration, std::shared_ptr<CameraControls> cameraControls,
             std::shared_ptr<FaultInjector> faultInjector);

    HRESULT Property(const KSPROPERTY *property, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned);
    HRESULT Method(const KSMETHOD *method, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned);
    HRESULT Event(const KSEVENT *event, ULONG length, void *data, ULONG dataLength, ULONG *bytesReturned);

    // Signals the auto-update event to every listener; returns their number.
    std::uint32_t SignalAutoUpdate();
    std::uint32_t EventListenerCount() const;
    FirmwareState FirmwareNow() const;
    std::vector<KsCall> Traffic() const; // the last 1024 calls, oldest first
    void ClearTraffic();

  private:
    // A request whose identifier has been checked and copied.
    struct Request
    {
        KSIDENTIFIER identifier{};
        std::optional<ULONG> node; // for a topology request
        void *data = nullptr;
        ULONG dataLength = 0;
    };

    HRESULT RunProperty(const KSPROPERTY *property, ULONG length, Request &request, ULONG &returned);
    HRESULT ExtensionUnitProperty(const Request &request, ULONG &returned);
    HRESULT ByteProperty(const Request &request, const ByteControl &control, ULONG &returned);
    HRESULT CommandProperty(const Request &request, ULONG &returned);
    HRESULT CalibrationProperty(const Request &request, ULONG &returned) const;
    HRESULT PrivacyProperty(const Request &request, ULONG &returned);
    HRESULT RunEvent(const KSEVENT *event, ULONG length, const Request &request);
    void Record(KsCall::Kind kind, const Request &request, ULONG length, HRESULT result);

    const std::vector<GUID> nodes;
    const std::optional<DWORD> extensionUnitNode;
    const GUID extensionUnitSet;
    const std::vector<std::uint8_t> calibrationTable;
    const bool privacyControl;
    const std::shared_ptr<CameraControls> controls;
    const std::shared_ptr<FaultInjector> faults;
    Firmware firmware;
    KsEventTable events;

    mutable std::mutex trafficLock;
    std::deque<KsCall> traffic; // guarded by trafficLock
};

} // namespace tarn_sim
