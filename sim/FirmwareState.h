// What the firmware of the simulated camera has been told so far.
#pragma once

#include <cstdint>
#include <vector>

namespace tarn_sim
{

struct FirmwareState
{
    std::uint64_t commands = 0; // blocks received
    std::uint64_t refused = 0;
    std::uint32_t lastOpcode = 0;
    std::vector<std::uint8_t> autoRange; // 12 bytes, or none
    std::uint32_t autoRangeParam1 = 0;
    std::uint32_t autoRangeParam2 = 0;
    bool hdrOn = false;
    std::vector<std::uint8_t> hdrConfiguration; // 8 bytes, or none
};

} // namespace tarn_sim
