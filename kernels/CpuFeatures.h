// Processor and operating-system features that the kernels depend on.
#pragma once

#include <cstddef>
#include <cstdint>

namespace mft_kernels
{
// The registers that features are decoded from; zero where the processor does not have the leaf.
struct CpuRegisters
{
    std::uint32_t leaf1Ecx;
    std::uint32_t leaf7Ebx;
    std::uint64_t xcr0; // what the operating system saves; 0 where it cannot be asked
};

struct CpuFeatures
{
    bool sse41;
    bool avx2;
    bool fma;
    bool bmi1;
    bool bmi2;
    bool movbe;
    bool fastStringMove;
    bool avx512; // foundation, byte and word, double and quad, vector length
};

// AVX features count only where the operating system saves their registers. Cannot fail.
CpuFeatures DecodeCpuFeatures(const CpuRegisters &registers);

// Of this processor, read once. Thread-safe, cannot fail.
const CpuFeatures &ThisCpu();

// Copies bytes from the front with the processor's string instruction. Cannot fail.
void StringMove(void *output, const void *input, std::size_t size);
} // namespace mft_kernels
