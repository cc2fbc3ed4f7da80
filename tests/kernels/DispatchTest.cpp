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
#include <set>
#include <string>
#include <vector>

using namespace mft_kernels;

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
    const struct
    {
        std::uint32_t CpuRegisters::*leaf;
        unsigned bit;
        bool CpuFeatures::*feature;
    } rows[] = {
        {&CpuRegisters::leaf1Ecx, 19, &CpuFeatures::sse41},  {&CpuRegisters::leaf1Ecx, 12, &CpuFeatures::fma},
        {&CpuRegisters::leaf1Ecx, 22, &CpuFeatures::movbe},  {&CpuRegisters::leaf1Ecx, 28, &CpuFeatures::avx2},
        {&CpuRegisters::leaf7Ebx, 3, &CpuFeatures::bmi1},    {&CpuRegisters::leaf7Ebx, 5, &CpuFeatures::avx2},
        {&CpuRegisters::leaf7Ebx, 8, &CpuFeatures::bmi2},    {&CpuRegisters::leaf7Ebx, 16, &CpuFeatures::avx512},
        {&CpuRegisters::leaf7Ebx, 17, &CpuFeatures::avx512}, {&CpuRegisters::leaf7Ebx, 30, &CpuFeatures::avx512},
        {&CpuRegisters::leaf7Ebx, 31, &CpuFeatures::avx512},
    };
    for (const auto &[leaf, bit, feature] : rows)
    {
        CpuRegisters registers = kEverything;
        registers.*leaf &= ~(1U << bit);
        EXPECT_FALSE(DecodeCpuFeatures(registers).*feature) << bit;
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

std::vector<std::string> calls;
KernelTable forwardedTo;

template <auto Entry>
struct Noting;

// Notes the set of the entry, then calls it.
template <class... Arguments, void (*KernelTable::*Entry)(Arguments...)>
struct Noting<Entry>
{
    static void Call(Arguments... arguments)
    {
        calls.emplace_back(forwardedTo.name);
        (forwardedTo.*Entry)(arguments...);
    }
};

KernelTable NotingCopyOf(const KernelTable &table)
{
    forwardedTo = table;
    return {table.name,
            Noting<&KernelTable::tenToEight>::Call,
            Noting<&KernelTable::confidence>::Call,
            Noting<&KernelTable::clampAbove>::Call,
            Noting<&KernelTable::copyRows>::Call,
            Noting<&KernelTable::moveBytes>::Call,
            Noting<&KernelTable::medianCrop>::Call,
            Noting<&KernelTable::resize>::Call,
            Noting<&KernelTable::sharpen>::Call};
}

TEST(InstructionSetTest, EveryEntryOfASetIsItsOwn)
{
    std::set<const void *> entries;
    for (const KernelTable *t : {&kScalarKernels, &kSse41Kernels, &kAvx2Kernels, &kAvx512Kernels})
    {
        const auto add = [&](auto... functions) { (entries.insert(reinterpret_cast<const void *>(functions)), ...); };
        add(t->tenToEight, t->confidence, t->clampAbove, t->copyRows, t->moveBytes, t->medianCrop, t->resize,
            t->sharpen);
    }
    EXPECT_EQ(entries.size(), 4U * 8U);
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
        const KernelTable noting = NotingCopyOf(ActiveKernels());
        const ScopedKernelTable scoped(noting);
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
