#include "tools/ks/KsDeviceInfo.h"

#include <cstring>
#include <string>

#include "base/Crc32.h"
#include "tarn/device_info.h"
#include "base/RecordText.h"

namespace tarn_host
{

nlohmann::ordered_json DecodeDeviceInfo(std::span<const std::uint8_t> answer)
{
    TARN_DEVICE_INFO info{};
    if (answer.size() < sizeof(info))
    {
        return {};
    }
    std::memcpy(&info, answer.data(), sizeof(info));
    const bool checks =
        info.version == TARN_DEVICE_INFO_VERSION && info.size == sizeof(info) &&
        info.checksum == user_space_frameworks::Crc32(answer.first(offsetof(TARN_DEVICE_INFO, checksum)));
    return {{"product", mft_utils::PrintableText(info.productName)},
            {"serialNumber", mft_utils::PrintableText(info.serialNumber)},
            {"firmware", mft_utils::VersionText(info.firmwareVersion)},
            {"usbController", mft_utils::VersionText(info.controllerVersion)},
            {"hardwareRevision", std::uint32_t{info.hardwareRevision}},
            {"sensorSerial", mft_utils::PrintableText(info.sensorSerial)},
            {"laserSerial", mft_utils::PrintableText(info.laserSerial)},
            {"moduleState", std::uint32_t{info.moduleState}},
            {"calibrationTime", std::uint64_t{info.calibrationTime}},
            {"calibrationVersion", std::uint32_t{info.calibrationVersion}},
            {"temperatureC", info.temperatureDeciC / 10.0},
            {"record", checks}};
}

} // namespace tarn_host
