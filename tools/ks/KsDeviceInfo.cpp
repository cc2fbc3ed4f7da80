#include "tools/ks/KsDeviceInfo.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "base/Crc32.h"
#include "tarn/device_info.h"

namespace tarn_host
{

namespace
{

template <std::size_t Size>
std::string Printable(const char (&text)[Size])
{
    std::string printable(std::begin(text), std::find(std::begin(text), std::end(text), '\0'));
    std::replace_if(
        printable.begin(), printable.end(), [](char c) { return c < ' ' || c > '~'; }, '?');
    return printable;
}

std::string VersionText(const std::uint8_t (&version)[4])
{
    return std::to_string(version[0]) + '.' + std::to_string(version[1]) + '.' + std::to_string(version[2]) + '.' +
           std::to_string(version[3]);
}

} // namespace

nlohmann::ordered_json DecodeDeviceInfo(std::span<const std::uint8_t> answer)
{
    TARN_DEVICE_INFO info{};
    if (answer.size() < sizeof(info))
    {
        return {};
    }
    std::memcpy(&info, answer.data(), sizeof(info));
    const bool checks = info.version == TARN_DEVICE_INFO_VERSION && info.size == sizeof(info) &&
                        info.checksum == user_space_frameworks::Crc32(answer.first(offsetof(TARN_DEVICE_INFO, checksum)));
    return {{"product", Printable(info.productName)},
            {"serialNumber", Printable(info.serialNumber)},
            {"firmware", VersionText(info.firmwareVersion)},
            {"usbController", VersionText(info.controllerVersion)},
            {"hardwareRevision", std::uint32_t{info.hardwareRevision}},
            {"sensorSerial", Printable(info.sensorSerial)},
            {"laserSerial", Printable(info.laserSerial)},
            {"moduleState", std::uint32_t{info.moduleState}},
            {"calibrationTime", std::uint64_t{info.calibrationTime}},
            {"calibrationVersion", std::uint32_t{info.calibrationVersion}},
            {"temperatureC", info.temperatureDeciC / 10.0},
            {"record", checks}};
}

} // namespace tarn_host
