// One run of a parameterised test for each instruction set of this machine.
#pragma once

#include "kernels/InstructionSet.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace mft_kernels
{
// The scalar reference comes first.
inline std::vector<std::string> AllSets()
{
    const auto names = SupportedInstructionSets();
    return {names.begin(), names.end()};
}

inline std::vector<std::string> VectorSets()
{
    std::vector<std::string> names = AllSets();
    std::erase(names, "scalar");
    return names;
}

inline std::string NameOfSet(const testing::TestParamInfo<std::string> &set)
{
    std::string name = set.param;
    std::erase(name, '.');
    return name;
}
} // namespace mft_kernels
