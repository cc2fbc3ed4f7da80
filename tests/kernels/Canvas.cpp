#include "tests/kernels/Canvas.h"

#include <cstring>
#include <sstream>

namespace mft_kernels
{
Random::Random(std::uint64_t seed) : state(seed) {}

std::uint64_t Random::Next()
{
    // SplitMix64, public domain (Steele, Lea, Flood 2014).
    state += 0x9E3779B97F4A7C15U;
    std::uint64_t z = state;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return z ^ (z >> 31U);
}

Canvas::Canvas(std::size_t rowBytes, std::size_t rowCount, const Layout &layout)
    : rowSize(rowBytes), height(rowCount), pitch(rowBytes + layout.padding),
      size(rowCount == 0 ? 0 : (rowCount - 1) * pitch + rowBytes), upsideDown(layout.upsideDown),
      memory(size + layout.misalignment),
      start(layout.atEnd ? memory.End() - layout.misalignment - size : memory.Begin() + layout.misalignment)
{
}

void Canvas::Fill(Contents contents, std::uint64_t seed)
{
    Random random(seed);
    std::size_t i = 0;
    for (; i + 1 < size; i += 2)
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
        std::memcpy(start + i, &word, sizeof(word));
    }
    if (i < size)
    {
        start[i] = static_cast<std::uint8_t>(random.Next());
    }
}

std::uint8_t *Canvas::Row(std::size_t y) const
{
    return start + pitch * (upsideDown ? height - 1 - y : y);
}

std::uint16_t *Canvas::Words() const
{
    return reinterpret_cast<std::uint16_t *>(height == 0 ? start : Row(0));
}

std::ptrdiff_t Canvas::Stride() const
{
    return upsideDown ? -static_cast<std::ptrdiff_t>(pitch) : static_cast<std::ptrdiff_t>(pitch);
}

std::string Canvas::DifferenceTo(const Canvas &expected) const
{
    if (size == 0 || std::memcmp(start, expected.start, size) == 0)
    {
        return {};
    }
    std::size_t i = 0;
    while (start[i] == expected.start[i])
    {
        ++i;
    }
    const std::size_t row = i / pitch;
    std::ostringstream text;
    text << "byte " << i % pitch << " of " << rowSize << " in row " << (upsideDown ? height - 1 - row : row) << " of "
         << height << ": " << int{start[i]} << " instead of " << int{expected.start[i]};
    return text.str();
}
} // namespace mft_kernels
