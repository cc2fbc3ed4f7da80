// Seeded fuzzing with a fixed budget: kernel_fuzz [cases] [seed].
#include "tests/fuzz/KernelFuzz.h"

#include <array>
#include <cstdlib>
#include <iostream>

int main(int argc, char **argv)
{
    const unsigned long cases = argc > 1 ? std::strtoul(argv[1], nullptr, 0) : 20000;
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 0) : 1;
    mft_kernels::Random random(seed);
    std::array<std::uint8_t, 64> bytes{};
    std::cout << "seed " << seed << std::endl; // flushed: a fault shall not take it along
    for (unsigned long i = 0; i < cases; ++i)
    {
        for (std::uint8_t &byte : bytes)
        {
            byte = static_cast<std::uint8_t>(random.Next());
        }
        const std::string difference = mft_kernels::FuzzKernels(bytes.data(), bytes.size());
        if (!difference.empty())
        {
            std::cout << "case " << i << ": " << difference << "\n";
            return 1;
        }
    }
    std::cout << cases << " cases, no difference\n";
    return 0;
}
