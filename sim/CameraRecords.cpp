#include "sim/CalibrationTable.h"

#include <cstddef>
#include <cstring>

#include "base/Crc32.h"

namespace tarn_sim
{

CalibrationTable DefaultCalibration() noexcept
{
    CalibrationTable table{};
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
    std::memcpy(table.rotation, rotation, sizeof(rotation));
    table.translationMm[0] = 25.0F;
    table.translationMm[1] = 0.25F;
    table.translationMm[2] = -1.5F;
    return table;
}

std::vector<std::uint8_t> SealedBytes(CalibrationTable table)
{
    std::memcpy(table.magic, "TCAL", sizeof(table.magic));
    table.version = 1;
    table.size = sizeof(table);
    std::vector<std::uint8_t> bytes(sizeof(table));
    std::memcpy(bytes.data(), &table, sizeof(table));
    const std::uint32_t checksum = user_space_frameworks::Crc32({bytes.data(), offsetof(CalibrationTable, checksum)});
    std::memcpy(bytes.data() + offsetof(CalibrationTable, checksum), &checksum, sizeof(checksum));
    return bytes;
}

} // namespace tarn_sim
