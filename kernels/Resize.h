// Bilinear resize of 16-bit frames between two fixed sizes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <vector>

#include "kernels/ResizeTables.h"

namespace mft_kernels
{
template <typename Element>
struct CacheLineAllocator
{
    using value_type = Element;
    static constexpr std::align_val_t kLine{64};

    CacheLineAllocator() = default;
    template <typename Other>
    explicit CacheLineAllocator(const CacheLineAllocator<Other> & /*other*/)
    {
    }
    Element *allocate(std::size_t count)
    {
        return static_cast<Element *>(::operator new(count * sizeof(Element), kLine));
    }
    void deallocate(Element *elements, std::size_t /*count*/)
    {
        ::operator delete(elements, kLine);
    }
    bool operator==(const CacheLineAllocator & /*other*/) const
    {
        return true;
    }
};

// Weights of one pair of sizes, made once and shared by all frames. Immutable after construction.
class ResizePlan
{
  public:
    // Throws std::invalid_argument when a size is 0 or above 65535, std::bad_alloc when memory is short.
    ResizePlan(std::size_t inputWidth, std::size_t inputHeight, std::size_t outputWidth, std::size_t outputHeight);
    ResizePlan(const ResizePlan &) = delete;
    ResizePlan &operator=(const ResizePlan &) = delete;

    // Bytes of scratch memory that one call at a time needs, at any address.
    std::size_t ScratchSize() const;
    const ResizeTables &Tables() const;

  private:
    void MakePairWeights();
    void MakeWindows();
    void MakeWideWindows();

    ResizeTables tables{};
    std::vector<ResizeTap> columns;
    std::vector<ResizeTap> rows;
    // What vectors load starts a cache line.
    std::vector<std::int16_t, CacheLineAllocator<std::int16_t>> pairWeights;
    std::vector<std::uint32_t> windowStarts;
    std::vector<std::uint8_t, CacheLineAllocator<std::uint8_t>> windowShuffles;
    std::vector<std::uint32_t> wideStarts;
    std::vector<std::uint16_t, CacheLineAllocator<std::uint16_t>> widePermutes;
};

// Pixel centres, replicated border: output (x, y) samples the input at ((x + 0.5) * inputWidth / outputWidth - 0.5,
// ...). The result is the exact rational value rounded to nearest, halves upward. Strides are in bytes and may be
// negative; any byte address will do. `scratch` holds plan.ScratchSize() bytes and serves one call at a time. Input and
// output must not overlap. Cannot fail.
void Resize(const ResizePlan &plan, const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint16_t *output,
            std::ptrdiff_t outputStride, void *scratch);
} // namespace mft_kernels
