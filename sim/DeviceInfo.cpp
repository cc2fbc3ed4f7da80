#include "sim/DeviceInfo.h"

#include <cstddef>
#include <cstring>

#include "base/Crc32.h"

namespace tarn_sim
{

DeviceInfo DefaultDeviceInfo() noexcept
{
    DeviceInfo info{};
    std::memcpy(info.serialNumber, "TRN0000000000042", sizeof(info.serialNumber));
    std::memcpy(info.productName, "Tarn simulated", 14);
    std::memcpy(info.firmwareVersion, "\x03\x0A\x02\x11", sizeof(info.firmwareVersion));
    std::memcpy(info.controllerVersion, "\x01\x04\x00\x07", sizeof(info.controllerVersion));
    info.hardwareRevision = 5;
    std::memcpy(info.sensorSerial, "SNS-0017", 8);
    std::memcpy(info.laserSerial, "LSR-0023", 8);
    info.calibrationTime = 1700000000;
    info.calibrationVersion = 3;
    info.temperatureDeciC = 412;
    return info;
}

std::vector<std::uint8_t> SealedBytes(DeviceInfo info)
{
    info.version = 1;
    info.size = sizeof(info);
    std::vector<std::uint8_t> bytes(sizeof(info));
    std::memcpy(bytes.data(), &info, sizeof(info));
    const std::uint32_t checksum = user_space_frameworks::Crc32({bytes.data(), offsetof(DeviceInfo, checksum)});
    std::memcpy(bytes.data() + offsetof(DeviceInfo, checksum), &checksum, sizeof(checksum));
    return bytes;
}

} // namespace tarn_sim
