// Seeded differential fuzzing of the kernels: kernel_fuzz [cases] [seed]. Bytes become one call, which every
// instruction set must answer alike.
#include <array>
#include <cstdlib>
#include <cstring>
#include <iostream>

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

    Layout NextLayout() { return {Below(2) != 0, Below(9), Below(2) != 0 ? Below(80) : 0, Below(4) == 0}; }

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

int main(int argc, char **argv)
{
    using namespace mft_kernels;
    const unsigned long cases = argc > 1 ? std::strtoul(argv[1], nullptr, 0) : 20000;
    const unsigned long seed = argc > 2 ? std::strtoul(argv[2], nullptr, 0) : 1;
    Random random(seed);
    std::array<std::uint8_t, 64> bytes{};
    std::cout << "seed " << seed << std::endl; // flushed: a fault shall not take it along
    for (unsigned long i = 0; i < cases; ++i)
    {
        for (std::uint8_t &byte : bytes)
        {
            byte = static_cast<std::uint8_t>(random.Next());
        }
        const KernelCase c = DecodeKernelCase(bytes.data(), bytes.size());
        for (const std::string_view name : SupportedInstructionSets())
        {
            const std::string difference = name == "scalar" ? std::string() : CompareWithScalar(c, name);
            if (!difference.empty())
            {
                std::cout << "case " << i << ", " << name << ": " << difference << std::endl;
                return 1;
            }
        }
    }
    std::cout << cases << " cases, no difference\n";
    return 0;
}
