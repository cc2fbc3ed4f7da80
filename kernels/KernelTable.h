// One entry per kernel; each instruction set fills one table. For the dispatch and its tests, not for nodes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/CpuFeatures.h"
#include "kernels/MedianCrop.h"
#include "kernels/ResizeTables.h"
#include "kernels/Sharpen.h"

namespace mft_kernels
{
struct KernelTable
{
    const char *name;
    void (*tenToEight)(const std::uint16_t *, std::ptrdiff_t, std::uint8_t *, std::ptrdiff_t, std::size_t, std::size_t);
    void (*confidence)(std::uint8_t *, std::ptrdiff_t, std::size_t, std::size_t);
    void (*clampAbove)(std::uint16_t *, std::ptrdiff_t, std::size_t, std::size_t, std::uint16_t);
    void (*copyRows)(const std::uint8_t *, std::ptrdiff_t, std::uint8_t *, std::ptrdiff_t, std::size_t, std::size_t);
    void (*moveBytes)(std::uint8_t *, const std::uint8_t *, std::size_t);
    void (*medianCrop)(const MedianCropInput &, std::uint16_t *, std::ptrdiff_t, std::size_t, std::size_t);
    void (*resize)(const ResizeTables &, const std::uint16_t *, std::ptrdiff_t, std::uint16_t *, std::ptrdiff_t,
                   void *);
    SharpenFunction sharpen;
};

extern const KernelTable kScalarKernels;
extern const KernelTable kSse41Kernels;
extern const KernelTable kAvx2Kernels;
extern const KernelTable kAvx512Kernels;

// The table in use. Thread-safe, cannot fail.
const KernelTable &ActiveKernels();

// The sharpening entry for a processor when `active` is in use.
SharpenFunction ChooseSharpenKernel(const CpuFeatures &cpu, const KernelTable &active);

// Puts a table in the place of the active one until destroyed; for tests that count calls. Confined.
class ScopedKernelTable
{
  public:
    explicit ScopedKernelTable(const KernelTable &table);
    ~ScopedKernelTable();
    ScopedKernelTable(const ScopedKernelTable &) = delete;
    ScopedKernelTable &operator=(const ScopedKernelTable &) = delete;

  private:
    const KernelTable *previous;
};
} // namespace mft_kernels
