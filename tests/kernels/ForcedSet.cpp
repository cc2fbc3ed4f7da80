// Ends the program as skipped where TARN_KERNELS names a set that this machine lacks: the module would pass it over,
// and the tests would pass with another.
#include "kernels/InstructionSet.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace
{
class ForcedSet : public testing::Environment
{
  private:
    void SetUp() override
    {
        constexpr int kSkipped = 77;
        const char *asked = std::getenv("TARN_KERNELS");
        if (asked != nullptr && mft_kernels::ActiveInstructionSet() != asked)
        {
            std::cout << "skipped: this machine has no " << asked << std::endl;
            std::exit(kSkipped);
        }
    }
};

[[maybe_unused]] const testing::Environment *const forcedSet = testing::AddGlobalTestEnvironment(new ForcedSet);
} // namespace
