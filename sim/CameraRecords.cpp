#include "sim/CameraRecords.h"

#include <cstddef>
#include <cstring>
#include <span>

#include "base/Crc32.h"

namespace tarn_sim
{

namespace
{
template <class Record>
std::vector<std::uint8_t> Seal(Record &record, std::uint16_t version)
{
    record.version = version;
    record.size = sizeof(record);
    std::vector<std::uint8_t> bytes(sizeof(record));
    std::memcpy(bytes.data(), &record, sizeof(record));
    const std::uint32_t checksum = user_space_frameworks::Crc32(std::span(bytes).first(offsetof(Record, checksum)));
    std::memcpy(bytes.data() + offsetof(Record, checksum), &checksum, sizeof(checksum));
    return bytes;
}
} // namespace

TARN_CALIBRATION_TABLE DefaultCalibration() noexcept
{
    TARN_CALIBRATION_TABLE table{};
    table.referenceWidth = 640;
    table.referenceHeight = 480;
    table.focalLengthX = 474.5F;
    table.focalLengthY = 475.25F;
    table.principalPointX = 321.75F;
    table.principalPointY = 238.5F;
    table.radialK1 = -0.125F;
    table.radialK2 = 0.0625F;
    table.radialK3 = -0.01F;
    table.tangentialP1 = 0.0005F;
    table.tangentialP2 = -0.00025F;
    constexpr float cosine = 0.99984770F; // of 1 degree
    constexpr float sine = 0.01745241F;
    const float rotation[9] = {cosine, 0.0F, sine, 0.0F, 1.0F, 0.0F, -sine, 0.0F, cosine};
    std::memcpy(&table.rotation, rotation, sizeof(rotation));
    table.translationMm[0] = 25.0F;
    table.translationMm[1] = 0.25F;
    table.translationMm[2] = -1.5F;
    return table;
}

TARN_DEVICE_INFO DefaultDeviceInfo() noexcept
{
    TARN_DEVICE_INFO info{};
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

std::vector<std::uint8_t> SealedBytes(TARN_CALIBRATION_TABLE table)
{
    table.magic = TARN_CALIBRATION_MAGIC;
    return Seal(table, TARN_CALIBRATION_VERSION);
}

std::vector<std::uint8_t> SealedBytes(TARN_DEVICE_INFO info)
{
    return Seal(info, TARN_DEVICE_INFO_VERSION);
}

} // namespace tarn_sim
