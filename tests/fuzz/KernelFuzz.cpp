// Differential fuzzing of the kernels: bytes become one call, which every instruction set must answer alike.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "kernels/InstructionSet.h"
#include "tests/kernels/KernelCase.h"

namespace mft_kernels
{
namespace
{
// Takes numbers off the front of the input; zeros when it is used up.
class Reader
{
  public:
    Reader(const std::uint8_t *bytes, std::size_t count) : next(bytes), left(count) {}

    std::size_t Below(std::size_t limit)
    {
        std::uint8_t value[2] = {};
        const std::size_t count = left < sizeof(value) ? left : sizeof(value);
        if (count != 0)
        {
            std::memcpy(value, next, count);
        }
        next += count;
        left -= count;
        return (value[0] + 256U * value[1]) % limit;
    }

    Layout NextLayout()
    {
        return {Below(2) != 0, Below(9), Below(2) != 0 ? Below(80) : 0, Below(4) == 0};
    }

  private:
    const std::uint8_t *next;
    std::size_t left;
};

// Any bytes make a valid call.
KernelCase DecodeKernelCase(const std::uint8_t *bytes, std::size_t count)
{
    Reader reader(bytes, count);
    KernelCase c;
    c.kernel = static_cast<Kernel>(reader.Below(kKernelCount));
    c.width = 1 + reader.Below(reader.Below(4) == 0 ? 700 : 150);
    c.height = 1 + reader.Below(64);
    c.input = reader.NextLayout();
    c.output = reader.NextLayout();
    c.contents = static_cast<Contents>(reader.Below(3));
    c.seed = reader.Below(65536);
    c.inputWidth = 1 + reader.Below(reader.Below(4) == 0 ? 700 : 150);
    c.inputHeight = 1 + reader.Below(40);
    c.marginLeft = 1 + reader.Below(20);
    c.marginTop = 1 + reader.Below(3);
    c.marginRight = 1 + reader.Below(20);
    c.marginBottom = 1 + reader.Below(3);
    c.outputPitch = reader.Below(3) == 0 ? 1 + reader.Below(2 * c.width) : 0;
    c.threshold = static_cast<std::uint16_t>(reader.Below(65536));
    c.moveDistance = static_cast<std::ptrdiff_t>(reader.Below(2000)) - 1000;
    return c;
}

} // namespace
} // namespace mft_kernels

// Entry point of the seeded driver and of the coverage-guided fuzzer.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *bytes, std::size_t count)
{
    using namespace mft_kernels;
    const KernelCase c = DecodeKernelCase(bytes, count);
    for (const std::string_view name : SupportedInstructionSets())
    {
        const std::string difference = name == "scalar" ? std::string() : CompareWithScalar(c, name);
        if (!difference.empty())
        {
            std::fprintf(stderr, "%s: %s\n", std::string(name).c_str(), difference.c_str());
            std::abort();
        }
    }
    return 0;
}
