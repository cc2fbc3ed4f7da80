#include "kernels/CpuFeatures.h"

#if defined(_MSC_VER)
#include <intrin.h>
#else
#include <cpuid.h>
#endif

namespace mft_kernels
{
namespace
{
constexpr std::uint32_t kOsSavesExtendedState = 1U << 27U; // leaf 1 ecx

#if defined(_MSC_VER)
CpuRegisters ReadRegisters()
{
    CpuRegisters registers{};
    int leaf[4];
    __cpuid(leaf, 0);
    const int highest = leaf[0];
    __cpuid(leaf, 1);
    registers.leaf1Ecx = static_cast<std::uint32_t>(leaf[2]);
    if (highest >= 7)
    {
        __cpuidex(leaf, 7, 0);
        registers.leaf7Ebx = static_cast<std::uint32_t>(leaf[1]);
    }
    if ((registers.leaf1Ecx & kOsSavesExtendedState) != 0)
    {
        registers.xcr0 = _xgetbv(0);
    }
    return registers;
}

void RepeatMove(unsigned char *output, const unsigned char *input, std::size_t size)
{
    __movsb(output, input, size);
}
#else
CpuRegisters ReadRegisters()
{
    CpuRegisters registers{};
    unsigned eax = 0;
    unsigned ebx = 0;
    unsigned ecx = 0;
    unsigned edx = 0;
    if (__get_cpuid(1, &eax, &ebx, &ecx, &edx) != 0)
    {
        registers.leaf1Ecx = ecx;
    }
    if (__get_cpuid_count(7, 0, &eax, &ebx, &ecx, &edx) != 0)
    {
        registers.leaf7Ebx = ebx;
    }
    if ((registers.leaf1Ecx & kOsSavesExtendedState) != 0)
    {
        unsigned low = 0;
        unsigned high = 0;
        // The intrinsic would need this whole file built with -mxsave.
        __asm__ volatile("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
        registers.xcr0 = (static_cast<std::uint64_t>(high) << 32U) | low;
    }
    return registers;
}

void RepeatMove(unsigned char *output, const unsigned char *input, std::size_t size)
{
    __asm__ volatile("rep movsb" : "+D"(output), "+S"(input), "+c"(size) : : "memory");
}
#endif

bool Bit(std::uint32_t value, unsigned index)
{
    return ((value >> index) & 1U) != 0;
}
} // namespace

CpuFeatures DecodeCpuFeatures(const CpuRegisters &registers)
{
    constexpr std::uint64_t kAvxState = 0x06;    // SSE and AVX registers
    constexpr std::uint64_t kAvx512State = 0xE6; // and mask registers, upper halves, upper sixteen
    const bool osAsked = (registers.leaf1Ecx & kOsSavesExtendedState) != 0;
    const bool avx = osAsked && (registers.xcr0 & kAvxState) == kAvxState && Bit(registers.leaf1Ecx, 28);

    CpuFeatures features{};
    features.sse41 = Bit(registers.leaf1Ecx, 19);
    features.avx2 = avx && Bit(registers.leaf7Ebx, 5);
    features.fma = avx && Bit(registers.leaf1Ecx, 12);
    features.bmi1 = Bit(registers.leaf7Ebx, 3);
    features.bmi2 = Bit(registers.leaf7Ebx, 8);
    features.movbe = Bit(registers.leaf1Ecx, 22);
    features.fastStringMove = Bit(registers.leaf7Ebx, 9);
    features.avx512 = features.avx2 && (registers.xcr0 & kAvx512State) == kAvx512State && Bit(registers.leaf7Ebx, 16) &&
                      Bit(registers.leaf7Ebx, 17) && Bit(registers.leaf7Ebx, 30) && Bit(registers.leaf7Ebx, 31);
    return features;
}

const CpuFeatures &ThisCpu()
{
    static const CpuFeatures features = DecodeCpuFeatures(ReadRegisters());
    return features;
}

void StringMove(void *output, const void *input, std::size_t size)
{
    RepeatMove(static_cast<unsigned char *>(output), static_cast<const unsigned char *>(input), size);
}
} // namespace mft_kernels
