// One call of one kernel, with everything that could matter, run with two instruction sets and compared.
#pragma once

#include "tests/kernels/Canvas.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace mft_kernels
{
enum class Kernel
{
    TenToEight,
    Confidence,
    ClampAbove,
    CopyRectangle,
    CopyPlane,
    MovePlane,
    MedianCrop,
    Resize,
    Sharpen
};
constexpr unsigned kKernelCount = 9;

struct KernelCase
{
    Kernel kernel = Kernel::CopyPlane;
    std::size_t width = 0; // of the output
    std::size_t height = 0;
    Layout input{};
    Layout output{};
    Contents contents = Contents::Noise;
    std::uint64_t seed = 0;
    std::size_t inputWidth = 0; // resize
    std::size_t inputHeight = 0;
    std::size_t marginLeft = 1; // median: frame around the rectangle
    std::size_t marginTop = 1;
    std::size_t marginRight = 1;
    std::size_t marginBottom = 1;
    std::size_t outputPitch = 0;     // median: pixels; 0 means whole runs and the output layout's padding
    std::uint16_t threshold = 0;     // clamp
    std::ptrdiff_t moveDistance = 0; // move: bytes from input to output in one buffer
};

// Runs the case with the named set and with the scalar reference; empty when every byte of the output's memory is the
// same and the input is untouched, else what differs. Leaves the automatic choice in force.
std::string CompareWithScalar(const KernelCase &testCase, std::string_view instructionSet);
} // namespace mft_kernels
