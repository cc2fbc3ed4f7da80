// Entry point of the coverage-guided fuzzer.
#include "tests/fuzz/KernelFuzz.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    const std::string difference = mft_kernels::FuzzKernels(bytes, count);
    if (!difference.empty())
    {
        std::fprintf(stderr, "%s\n", difference.c_str());
        std::abort();
    }
    return 0;
}
