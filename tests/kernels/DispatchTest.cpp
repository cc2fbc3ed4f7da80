// Choosing, listing and forcing the instruction set.
#include "kernels/Confidence.h"
#include "kernels/Copy.h"
#include "kernels/InstructionSet.h"
#include "kernels/KernelTable.h"
#include "kernels/MedianCrop.h"
#include "kernels/Resize.h"
#include "kernels/TenToEight.h"
#include "kernels/Threshold.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

namespace mft_kernels
{
namespace
{
constexpr CpuRegisters kEverything = {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF};
constexpr std::uint64_t kNoAvxState = 0x03;
constexpr std::uint64_t kAvxStateOnly = 0x07;

TEST(CpuFeaturesTest, NeedsTheOperatingSystemToSaveTheRegisters)
{
    CpuRegisters registers = kEverything;
    EXPECT_TRUE(DecodeCpuFeatures(registers).avx512);

    registers.xcr0 = kAvxStateOnly;
    EXPECT_TRUE(DecodeCpuFeatures(registers).avx2);
    EXPECT_FALSE(DecodeCpuFeatures(registers).avx512);

    registers.xcr0 = kNoAvxState;
    EXPECT_FALSE(DecodeCpuFeatures(registers).avx2);
    EXPECT_FALSE(DecodeCpuFeatures(registers).fma);
    EXPECT_TRUE(DecodeCpuFeatures(registers).sse41);

    registers = kEverything;
    registers.leaf1Ecx &= ~(1U << 27U); // the system does not say what it saves
    EXPECT_FALSE(DecodeCpuFeatures(registers).avx2);
}

TEST(CpuFeaturesTest, ReadsEachFeatureFromItsOwnBit)
{
    const auto without = [](unsigned leaf1Bit, unsigned leaf7Bit) {
        CpuRegisters registers = kEverything;
        registers.leaf1Ecx &= ~(leaf1Bit < 32 ? 1U << leaf1Bit : 0U);
        registers.leaf7Ebx &= ~(leaf7Bit < 32 ? 1U << leaf7Bit : 0U);
        return DecodeCpuFeatures(registers);
    };
    constexpr unsigned kKeep = 32;
    EXPECT_FALSE(without(19, kKeep).sse41);
    EXPECT_FALSE(without(12, kKeep).fma);
    EXPECT_FALSE(without(22, kKeep).movbe);
    EXPECT_FALSE(without(28, kKeep).avx2);
    EXPECT_FALSE(without(kKeep, 3).bmi1);
    EXPECT_FALSE(without(kKeep, 5).avx2);
    EXPECT_FALSE(without(kKeep, 8).bmi2);
    for (const unsigned bit : {16U, 17U, 30U, 31U})
    {
        EXPECT_FALSE(without(kKeep, bit).avx512) << bit;
    }
}

TEST(SharpenChoiceTest, AnyMissingFeatureMeansTheVersionWithoutAvx)
{
    const CpuFeatures all = DecodeCpuFeatures(kEverything);
    EXPECT_EQ(ChooseSharpenKernel(all, kAvx2Kernels), kAvx2Kernels.sharpen);
    EXPECT_EQ(ChooseSharpenKernel(all, kAvx512Kernels), kAvx512Kernels.sharpen);
    EXPECT_EQ(ChooseSharpenKernel(all, kScalarKernels), kScalarKernels.sharpen);
    for (bool CpuFeatures::*feature :
         {&CpuFeatures::avx2, &CpuFeatures::fma, &CpuFeatures::bmi1, &CpuFeatures::bmi2, &CpuFeatures::movbe})
    {
        CpuFeatures cpu = all;
        cpu.*feature = false;
        EXPECT_EQ(ChooseSharpenKernel(cpu, kAvx2Kernels), kSse41Kernels.sharpen);
        cpu.sse41 = false;
        EXPECT_EQ(ChooseSharpenKernel(cpu, kAvx2Kernels), kScalarKernels.sharpen);
    }
}

TEST(InstructionSetTest, UnknownNamesChangeNothing)
{
    ASSERT_TRUE(ForceInstructionSet("scalar"));
    EXPECT_FALSE(ForceInstructionSet("mmx"));
    EXPECT_EQ(ActiveInstructionSet(), "scalar");
    EXPECT_TRUE(ForceInstructionSet(""));
    EXPECT_EQ(ActiveInstructionSet(),
              std::getenv("TARN_KERNELS") != nullptr ? std::getenv("TARN_KERNELS") : SupportedInstructionSets().back());
}

TEST(InstructionSetTest, EveryEntryOfASetIsItsOwn)
{
    const std::vector<const KernelTable *> tables = {&kScalarKernels, &kSse41Kernels, &kAvx2Kernels, &kAvx512Kernels};
    for (const KernelTable *a : tables)
    {
        for (const KernelTable *b : tables)
        {
            const bool same = a == b;
            EXPECT_EQ(a->tenToEight == b->tenToEight, same);
            EXPECT_EQ(a->confidence == b->confidence, same);
            EXPECT_EQ(a->clampAbove == b->clampAbove, same);
            EXPECT_EQ(a->copyRows == b->copyRows, same);
            EXPECT_EQ(a->moveBytes == b->moveBytes, same);
            EXPECT_EQ(a->medianCrop == b->medianCrop, same);
            EXPECT_EQ(a->resize == b->resize, same);
            EXPECT_EQ(a->sharpen == b->sharpen, same);
        }
    }
}

std::vector<std::string> calls;
KernelTable forwardedTo;

// A table whose entries note the set they were made from and then call it.
KernelTable CountingCopyOf(const KernelTable &table)
{
    forwardedTo = table;
    KernelTable counting = table;
    counting.tenToEight = [](auto... a) { calls.emplace_back(forwardedTo.name), forwardedTo.tenToEight(a...); };
    counting.confidence = [](auto... a) { calls.emplace_back(forwardedTo.name), forwardedTo.confidence(a...); };
    counting.clampAbove = [](auto... a) { calls.emplace_back(forwardedTo.name), forwardedTo.clampAbove(a...); };
    counting.copyRows = [](auto... a) { calls.emplace_back(forwardedTo.name), forwardedTo.copyRows(a...); };
    counting.moveBytes = [](auto... a) { calls.emplace_back(forwardedTo.name), forwardedTo.moveBytes(a...); };
    counting.medianCrop = [](const MedianCropInput &i, auto... a) {
        calls.emplace_back(forwardedTo.name), forwardedTo.medianCrop(i, a...);
    };
    counting.resize = [](const ResizeTables &t, auto... a) {
        calls.emplace_back(forwardedTo.name), forwardedTo.resize(t, a...);
    };
    counting.sharpen = [](auto... a) { calls.emplace_back(forwardedTo.name), forwardedTo.sharpen(a...); };
    return counting;
}

// The forced set is in force, and everything public runs through the table in force: so the forced set is what ran.
TEST(InstructionSetTest, TheForcedSetIsTheOneThatRuns)
{
    for (const std::string_view name : SupportedInstructionSets())
    {
        ASSERT_TRUE(ForceInstructionSet(name));
        std::cout << "active: " << ActiveInstructionSet() << "\n";
        EXPECT_EQ(ActiveInstructionSet(), name);
        EXPECT_EQ(ActiveKernels().name, name);

        calls.clear();
        const KernelTable counting = CountingCopyOf(ActiveKernels());
        const ScopedKernelTable scoped(counting);
        std::vector<std::uint16_t> frame(100 * 100, 7);
        std::vector<std::uint16_t> out(100 * 104);
        std::vector<std::uint8_t> bytes(100 * 100);
        std::vector<float> scratch(100 * 100);
        const ResizePlan plan(100, 100, 90, 90);
        ConvertTenToEight(frame.data(), 200, bytes.data(), 100, 100, 100);
        ExtractConfidence(bytes.data(), 100, 100, 100);
        ClampAbove(frame.data(), 200, 100, 100, 9);
        CopyRectangle(frame.data(), 200, out.data(), 200, 50, 50);
        CopyPlane(out.data(), frame.data(), 1000);
        MovePlane(out.data(), out.data() + 5, 1000);
        EXPECT_TRUE(MedianCrop3x3({frame.data(), 200, 100, 100, 10, 10}, out.data(), 160, 80, 80));
        Resize(plan, frame.data(), 200, out.data(), 180, scratch.data());
        Sharpen(frame.data(), 200, out.data(), 200, 100, 100, scratch.data());
        EXPECT_EQ(calls, std::vector<std::string>(9, std::string(name)));
    }
    ForceInstructionSet("");
}
} // namespace
} // namespace mft_kernels
