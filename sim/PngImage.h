// Reading of single-channel pictures.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace tarn_sim
{

// Values as stored in the file; rows without padding.
struct GreyImage
{
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    std::uint32_t bits = 0; // 8 or 16
    std::vector<std::uint16_t> pixels;
};

// Throws std::runtime_error with a one-line text that names the file: not readable, no picture, not single-channel.
GreyImage ReadGreyPng(const std::filesystem::path &file);

} // namespace tarn_sim
