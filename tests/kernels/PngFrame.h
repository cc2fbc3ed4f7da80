// Reads recorded frames.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace mft_kernels
{
struct PngFrame
{
    std::size_t width = 0;
    std::size_t height = 0;
    std::vector<std::uint16_t> pixels;
};

// Reads a 16-bit greyscale picture. Returns false and leaves `frame` alone when it cannot.
bool ReadPng(const std::string &path, PngFrame &frame);
} // namespace mft_kernels
