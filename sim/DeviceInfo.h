// The camera's answer to the device-information command; layout in docs/device-info.md.
#pragma once

#include <cstdint>
#include <vector>

namespace tarn_sim
{

#pragma pack(push, 1)
// Little-endian; texts are ASCII, padded with zeros and not terminated when they fill their field.
struct DeviceInfo
{
    std::uint16_t version;             //   0  1
    std::uint16_t size;                //   2  174
    char serialNumber[16];             //   4
    char productName[32];              //  20
    std::uint8_t firmwareVersion[4];   //  52  major, minor, patch, build
    std::uint8_t controllerVersion[4]; //  56  of the USB controller's firmware
    std::uint32_t hardwareRevision;    //  60
    char sensorSerial[16];             //  64
    char laserSerial[16];              //  80
    std::uint32_t moduleState;         //  96  0 = operational
    std::uint64_t calibrationTime;     // 100  seconds since 1970-01-01 UTC
    std::uint32_t calibrationVersion;  // 108
    std::int16_t temperatureDeciC;     // 112  tenths of a degree Celsius
    std::uint8_t reserved[56];         // 114  zero
    std::uint32_t checksum;            // 170  CRC-32 of all bytes before
};
#pragma pack(pop)
static_assert(sizeof(DeviceInfo) == 174);

DeviceInfo DefaultDeviceInfo() noexcept;

// The record's bytes with version, size and checksum made right.
std::vector<std::uint8_t> SealedBytes(DeviceInfo info);

} // namespace tarn_sim
