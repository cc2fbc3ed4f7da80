// Differential fuzzing of the kernels, shared by the seeded driver and the coverage-guided one.
#pragma once

#include "tests/kernels/KernelCase.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace mft_kernels
{
// Any bytes make a valid call.
KernelCase DecodeKernelCase(const std::uint8_t *bytes, std::size_t count);

// Empty when all sets agree, else the set and what differs.
std::string FuzzKernels(const std::uint8_t *bytes, std::size_t count);
} // namespace mft_kernels
