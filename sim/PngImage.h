// Reading and writing of single-channel pictures.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
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

// Writes width x height values of 8 or 16 bits, rows without padding, 16 bits in this machine's order. The file is not
// compressed: saving keeps up with a camera. Throws std::runtime_error with a one-line text.
void WriteGreyPng(const std::filesystem::path &file, std::uint32_t width, std::uint32_t height, std::uint32_t bits,
                  std::span<const std::byte> pixels);

} // namespace tarn_sim
