// Which instruction set the kernels use: chosen once at run time, can be listed, printed and forced.
#pragma once

#include <string_view>
#include <vector>

namespace mft_kernels
{
// Names of the sets this processor and operating system support, slowest first: "scalar", "sse4.1", "avx2", "avx512".
// Throws std::bad_alloc.
std::vector<std::string_view> SupportedInstructionSets();

// Name of the set in use. Without a forced one it is the best supported, or the one that the environment variable
// TARN_KERNELS named when the first kernel ran. Thread-safe, cannot fail.
std::string_view ActiveInstructionSet();

// Uses the named set from now on; an empty name goes back to the automatic choice. Returns false and changes nothing
// when the name is unknown or this machine does not support it. Thread-safe; calls in progress finish with the old set.
bool ForceInstructionSet(std::string_view name);
} // namespace mft_kernels
