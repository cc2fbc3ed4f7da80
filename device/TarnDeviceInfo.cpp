#include "device/TarnDeviceInfo.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>

#include "tarn/device_attributes.h"
#include "tarn/tarn_dmft.h"
#include "trace/Check.h"
#include "base/Crc32.h"
#include "base/WideString.h"
#include "base/RecordText.h"

namespace mft_core
{

TarnDeviceInfo::TarnDeviceInfo(std::shared_ptr<IFirmwareCommandPipe> pipe, std::string label)
    : Object(std::move(label)), firmwareCommandPipe(std::move(pipe))
{
}

HRESULT TarnDeviceInfo::Init()
{
    CHECK_POINTER(firmwareCommandPipe);
    std::array<std::uint8_t, sizeof(TARN_DEVICE_INFO)> answer{};
    CHECK_HR_AS("firmwareCommandPipe->Get(&deviceInfo, HWmonitor_GetDeviceInfo, sizeof(deviceInfo))",
                firmwareCommandPipe->Get(answer.data(), HWmonitor_GetDeviceInfo, sizeof(TARN_DEVICE_INFO)));
    TARN_DEVICE_INFO read{};
    std::memcpy(&read, answer.data(), sizeof(read));
    if (read.version != TARN_DEVICE_INFO_VERSION || read.size != sizeof(read) ||
        read.checksum != user_space_frameworks::Crc32(std::span(answer).first(offsetof(TARN_DEVICE_INFO, checksum))))
    {
        TRACE_ERROR("%s: record does not check, version %u, size %u", GetName(), read.version, read.size);
        return S_OK;
    }
    record = read;
    TraceRecord();
    return S_OK;
}

HRESULT TarnDeviceInfo::AddTo(IMFAttributes *store) const
{
    CHECK_POINTER(store);
    if (!record)
    {
        return S_OK;
    }
    CHECK_HR(store->SetBlob(TARN_DEVICE_INFO_RECORD, reinterpret_cast<const UINT8 *>(&*record), sizeof(*record)));
    CHECK_HR(store->SetString(TARN_DEVICE_PRODUCT_NAME,
                              mft_utils::Widen(mft_utils::PrintableText(record->productName)).c_str()));
    CHECK_HR(store->SetString(TARN_DEVICE_SERIAL_NUMBER,
                              mft_utils::Widen(mft_utils::PrintableText(record->serialNumber)).c_str()));
    CHECK_HR(store->SetString(TARN_DEVICE_FIRMWARE_VERSION,
                              mft_utils::Widen(mft_utils::VersionText(record->firmwareVersion)).c_str()));
    return S_OK;
}

void TarnDeviceInfo::TraceRecord() const
{
    if (!mft_utils::TraceEnabled(mft_utils::TraceLevel::Information))
    {
        return;
    }
    TRACE_INFO(
        "%s: %s, serial number %s, firmware %s, controller %s, hardware revision %u", GetName(),
        mft_utils::PrintableText(record->productName).c_str(), mft_utils::PrintableText(record->serialNumber).c_str(),
        mft_utils::VersionText(record->firmwareVersion).c_str(),
        mft_utils::VersionText(record->controllerVersion).c_str(), static_cast<unsigned>(record->hardwareRevision));
    TRACE_INFO("%s: sensor %s, laser %s, module state %u, calibrated at %llu (version %u), %.1f degrees Celsius",
               GetName(), mft_utils::PrintableText(record->sensorSerial).c_str(),
               mft_utils::PrintableText(record->laserSerial).c_str(), static_cast<unsigned>(record->moduleState),
               static_cast<unsigned long long>(record->calibrationTime),
               static_cast<unsigned>(record->calibrationVersion), record->temperatureDeciC / 10.0);
}

} // namespace mft_core
