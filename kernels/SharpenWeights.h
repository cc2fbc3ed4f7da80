// The sharpening filter's numbers.
#pragma once

#include <cstddef>

namespace mft_kernels
{
constexpr std::size_t kSharpenTaps = 9;

// A normalised Gaussian, from k = -4 to 4. Sums run in this order.
constexpr float kSharpenWeights[kSharpenTaps] = {0.02763055F, 0.06628224F, 0.12383154F, 0.18017383F, 0.20416369F,
                                                 0.18017383F, 0.12383154F, 0.06628224F, 0.02763055F};
constexpr float kSharpenAmount = 0.85F;
} // namespace mft_kernels
