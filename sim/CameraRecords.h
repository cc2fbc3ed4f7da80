// The calibration table that the camera keeps in its flash memory; layout in docs/calibration.md.
#pragma once

#include <cstdint>
#include <vector>

namespace tarn_sim
{

// Little-endian, no padding. Lengths in pixels of the reference size unless stated.
struct CalibrationTable
{
    char magic[4];                // "TCAL"
    std::uint16_t version;        // 1
    std::uint16_t size;           // of the table in bytes, checksum included
    std::uint32_t referenceWidth; // 4:3
    std::uint32_t referenceHeight;
    float focalLengthX;
    float focalLengthY;
    float principalPointX; // from the centre of the top left pixel
    float principalPointY;
    float radialK1;
    float radialK2;
    float radialK3;
    float tangentialP1;
    float tangentialP2;
    float rotation[9];      // depth to color camera, row by row
    float translationMm[3]; // depth camera's origin in the color camera's axes
    std::uint32_t checksum; // CRC-32 of all bytes before
};
static_assert(sizeof(CalibrationTable) == 104);

// A plausible camera: 640 x 480, 68 degrees wide, the color camera 25 mm to the side and turned by 1 degree about y.
CalibrationTable DefaultCalibration() noexcept;

// The table's bytes with magic, version, size and checksum made right.
std::vector<std::uint8_t> SealedBytes(CalibrationTable table);

} // namespace tarn_sim
