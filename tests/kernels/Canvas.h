// An image in guarded memory with a layout of the test's choice, filled with reproducible noise.
#pragma once

#include "tests/kernels/GuardedMemory.h"

#include <cstddef>
#include <cstdint>
#include <string>

namespace mft_kernels
{
struct Layout
{
    bool atEnd;               // last byte touches the page behind, else the first one touches the page in front
    std::size_t misalignment; // bytes away from that page
    std::size_t padding;      // bytes between rows
    bool upsideDown;          // row 0 is last in memory: the stride is negative
};

enum class Contents
{
    Noise,       // all bytes random
    SmallValues, // 16-bit values of 0 to 1023
    Extremes     // 16-bit values near 0, 32767, 32768 and 65535
};

// Reproducible numbers; the same on every platform.
class Random
{
  public:
    explicit Random(std::uint64_t seed);
    std::uint64_t Next();

  private:
    std::uint64_t state;
};

class Canvas
{
  public:
    Canvas(std::size_t rowSize, std::size_t height, const Layout &layout);

    // Fills all the image's memory, padding included.
    void Fill(Contents contents, std::uint64_t seed);

    std::uint8_t *Row(std::size_t y) const;
    std::uint16_t *Words() const; // row 0, for kernels that take 16-bit pixels
    std::ptrdiff_t Stride() const;
    // Empty when the other canvas of the same layout holds the same bytes, padding included; else the first difference.
    std::string DifferenceTo(const Canvas &expected) const;

  private:
    std::size_t rowSize, height, pitch, size;
    bool upsideDown;
    GuardedMemory memory;
    std::uint8_t *start;
};
} // namespace mft_kernels
