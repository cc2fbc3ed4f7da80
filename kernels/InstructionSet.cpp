#include "kernels/InstructionSet.h"

#include <array>
#include <atomic>
#include <cstdlib>

#include "kernels/KernelTable.h"

namespace mft_kernels
{
namespace
{
struct Candidate
{
    const KernelTable *table;
    bool supported;
};

// Slowest first.
std::array<Candidate, 4> Candidates()
{
    const CpuFeatures &cpu = ThisCpu();
    return {{{&kScalarKernels, true},
             {&kSse41Kernels, cpu.sse41},
             {&kAvx2Kernels, cpu.avx2},
             {&kAvx512Kernels, cpu.avx512}}};
}

const KernelTable *FindSupported(std::string_view name)
{
    for (const Candidate &candidate : Candidates())
    {
        if (candidate.supported && name == candidate.table->name)
        {
            return candidate.table;
        }
    }
    return nullptr;
}

const KernelTable *AutomaticChoice()
{
    // A name that does not fit this machine is passed over: support may set the variable on a whole fleet.
    const char *asked = std::getenv("TARN_KERNELS"); // NOLINT(concurrency-mt-unsafe): nothing here writes it
    if (const KernelTable *table = asked != nullptr ? FindSupported(asked) : nullptr)
    {
        return table;
    }
    const KernelTable *best = &kScalarKernels;
    for (const Candidate &candidate : Candidates())
    {
        best = candidate.supported ? candidate.table : best;
    }
    return best;
}

std::atomic<const KernelTable *> &ActiveSlot()
{
    static std::atomic<const KernelTable *> slot{AutomaticChoice()};
    return slot;
}
} // namespace

const KernelTable &ActiveKernels()
{
    return *ActiveSlot().load(std::memory_order_acquire);
}

SharpenFunction ChooseSharpenKernel(const CpuFeatures &cpu, const KernelTable &active)
{
    if (cpu.avx2 && cpu.fma && cpu.bmi1 && cpu.bmi2 && cpu.movbe)
    {
        return active.sharpen;
    }
    return cpu.sse41 && &active != &kScalarKernels ? kSse41Kernels.sharpen : kScalarKernels.sharpen;
}

SharpenFunction SelectSharpenKernel()
{
    return ChooseSharpenKernel(ThisCpu(), ActiveKernels());
}

std::vector<std::string_view> SupportedInstructionSets()
{
    std::vector<std::string_view> names;
    for (const Candidate &candidate : Candidates())
    {
        if (candidate.supported)
        {
            names.emplace_back(candidate.table->name);
        }
    }
    return names;
}

std::string_view ActiveInstructionSet()
{
    return ActiveKernels().name;
}

bool ForceInstructionSet(std::string_view name)
{
    const KernelTable *table = name.empty() ? AutomaticChoice() : FindSupported(name);
    if (table == nullptr)
    {
        return false;
    }
    ActiveSlot().store(table, std::memory_order_release);
    return true;
}

ScopedKernelTable::ScopedKernelTable(const KernelTable &table) : previous(ActiveSlot().exchange(&table)) {}

ScopedKernelTable::~ScopedKernelTable()
{
    ActiveSlot().store(previous);
}
} // namespace mft_kernels
