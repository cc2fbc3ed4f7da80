// Seeded fuzzing with a fixed budget: kernel_fuzz [cases] [seed].
#include <array>
#include <cstdlib>
#include <iostream>

#include "tests/kernels/KernelCase.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count);

int main(int argc, char **argv)
{
    const unsigned long cases = argc > 1 ? std::strtoul(argv[1], nullptr, 0) : 20000;
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 0) : 1;
    mft_kernels::Random random(seed);
    std::array<std::uint8_t, 64> bytes{};
    std::cout << "seed " << seed << std::endl; // flushed: a fault or a difference shall not take it along
    for (unsigned long i = 0; i < cases; ++i)
    {
        for (std::uint8_t &byte : bytes)
        {
            byte = static_cast<std::uint8_t>(random.Next());
        }
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    std::cout << cases << " cases, no difference\n";
    return 0;
}
