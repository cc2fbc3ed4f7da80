// What the camera keeps in its flash memory.
#pragma once

#include <cstdint>
#include <vector>

#include <tarn/calibration_table.h>
#include <tarn/device_info.h>

namespace tarn_sim
{

// A plausible camera: 640 x 480, 68 degrees wide, the color camera 25 mm to the side and turned by 1 degree about y.
TARN_CALIBRATION_TABLE DefaultCalibration() noexcept;

TARN_DEVICE_INFO DefaultDeviceInfo() noexcept;

// The record's bytes with version, size, checksum and, where it has one, magic made right.
std::vector<std::uint8_t> SealedBytes(TARN_CALIBRATION_TABLE table);
std::vector<std::uint8_t> SealedBytes(TARN_DEVICE_INFO info);

} // namespace tarn_sim
