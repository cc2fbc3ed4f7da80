// An image in guarded memory with a layout of the test's choice, filled with reproducible noise.
#pragma once

#include "tests/kernels/GuardedMemory.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <sstream>
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
    explicit Random(std::uint64_t seed) : state(seed) {}

    std::uint64_t Next()
    {
        // SplitMix64, public domain (Steele, Lea, Flood 2014).
        state += 0x9E3779B97F4A7C15U;
        std::uint64_t z = state;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

  private:
    std::uint64_t state;
};

class Canvas
{
  public:
    Canvas(std::size_t rowBytes, std::size_t rowCount, const Layout &layout)
        : rowSize(rowBytes), height(rowCount), pitch(rowBytes + layout.padding),
          size(rowCount == 0 ? 0 : (rowCount - 1) * pitch + rowBytes), upsideDown(layout.upsideDown),
          memory(size + layout.misalignment),
          start(layout.atEnd ? memory.End() - layout.misalignment - size : memory.Begin() + layout.misalignment)
    {
    }

    // Fills all the image's memory, padding included.
    void Fill(Contents contents, std::uint64_t seed)
    {
        Random random(seed);
        for (std::size_t i = 0; i < size; i += 2)
        {
            const std::uint64_t number = random.Next();
            auto word = static_cast<std::uint16_t>(number);
            if (contents == Contents::SmallValues)
            {
                word &= 1023U;
            }
            else if (contents == Contents::Extremes)
            {
                word = static_cast<std::uint16_t>((number >> 32U) % 3 + 0x7FFFU * (number % 4) - 1U);
            }
            std::memcpy(start + i, &word, i + 1 < size ? 2 : 1);
        }
    }

    std::uint8_t *Row(std::size_t y) const { return start + pitch * (upsideDown ? height - 1 - y : y); }
    // Row 0, for kernels that take 16-bit pixels.
    std::uint16_t *Words() const { return reinterpret_cast<std::uint16_t *>(height == 0 ? start : Row(0)); }
    std::ptrdiff_t Stride() const
    {
        return upsideDown ? -static_cast<std::ptrdiff_t>(pitch) : static_cast<std::ptrdiff_t>(pitch);
    }

    // Empty when the other canvas of the same layout holds the same bytes, padding included; else the first difference.
    std::string DifferenceTo(const Canvas &expected) const
    {
        const bool isSame = size == 0 || std::memcmp(start, expected.start, size) == 0; // nearly always
        for (std::size_t i = 0; !isSame && i < size; ++i)
        {
            if (start[i] != expected.start[i])
            {
                const std::size_t row = i / pitch;
                std::ostringstream text;
                text << "byte " << i % pitch << " of " << rowSize << " in row " << (upsideDown ? height - 1 - row : row)
                     << " of " << height << ": " << int{start[i]} << " instead of " << int{expected.start[i]};
                return text.str();
            }
        }
        return {};
    }

  private:
    std::size_t rowSize, height, pitch, size;
    bool upsideDown;
    GuardedMemory memory;
    std::uint8_t *start;
};

} // namespace mft_kernels
