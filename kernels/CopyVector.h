// Copies for any vector type.
#pragma once

#include "kernels/PointwiseVector.h"

namespace mft_kernels
{
template <typename V>
static inline void CopyFour(std::uint8_t *output, const std::uint8_t *input)
{
    const auto a = V::Load(input);
    const auto b = V::Load(input + V::kBytes);
    const auto c = V::Load(input + 2 * V::kBytes);
    const auto d = V::Load(input + 3 * V::kBytes);
    V::Store(output, a);
    V::Store(output + V::kBytes, b);
    V::Store(output + 2 * V::kBytes, c);
    V::Store(output + 3 * V::kBytes, d);
}

// Sizes from which the processor's own string move is used where it is fast: it writes whole lines without reading
// them.
constexpr std::size_t kStringMoveSize = 4096;

// Sizes from which the C library's choice for the processor is taken where AVX-512 is missing: on such processors it
// was faster than the string move for frames that fill the caches, and nowhere else.
constexpr std::size_t kLibraryMoveSize = std::size_t{2} << 20U;

// From the front, for outputs that do not overlap the input or lie below it: what a step stores was loaded before.
template <typename V>
static inline void CopyForward(std::uint8_t *output, const std::uint8_t *input, std::size_t size)
{
    constexpr std::size_t kStep = 4 * V::kBytes;
    if (size >= kLibraryMoveSize && !ThisCpu().avx512)
    {
        std::memmove(output, input, size);
        return;
    }
    if (size >= kStringMoveSize && ThisCpu().fastStringMove)
    {
        StringMove(output, input, size);
        return;
    }
    const auto last = V::Load(input + size - V::kBytes);
    std::size_t i = 0;
    for (; i + kStep <= size; i += kStep)
    {
        CopyFour<V>(output + i, input + i);
    }
    for (; i + V::kBytes <= size; i += V::kBytes)
    {
        V::Store(output + i, V::Load(input + i));
    }
    V::Store(output + size - V::kBytes, last);
}

template <typename V>
static inline void CopyBackward(std::uint8_t *output, const std::uint8_t *input, std::size_t size)
{
    constexpr std::size_t kStep = 4 * V::kBytes;
    const auto first = V::Load(input);
    std::size_t left = size;
    for (; left >= kStep; left -= kStep)
    {
        CopyFour<V>(output + left - kStep, input + left - kStep);
    }
    for (; left >= V::kBytes; left -= V::kBytes)
    {
        V::Store(output + left - V::kBytes, V::Load(input + left - V::kBytes));
    }
    V::Store(output, first);
}

template <typename V>
static void CopyRowsVector(const std::uint8_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                           std::ptrdiff_t outputStride, std::size_t rowSize, std::size_t height)
{
    if (rowSize < V::kBytes)
    {
        CopyRowsScalar(input, inputStride, output, outputStride, rowSize, height);
        return;
    }
    for (std::size_t y = 0; y < height; ++y)
    {
        CopyForward<V>(RowAt(output, outputStride, y), RowAt(input, inputStride, y), rowSize);
    }
}

template <typename V>
static void MoveBytesVector(std::uint8_t *output, const std::uint8_t *input, std::size_t size)
{
    if (size < V::kBytes)
    {
        MoveBytesScalar(output, input, size);
    }
    // Addresses of one buffer or of two: the integers compare in every case.
    else if (reinterpret_cast<std::uintptr_t>(output) - reinterpret_cast<std::uintptr_t>(input) >= size)
    {
        CopyForward<V>(output, input, size);
    }
    else
    {
        CopyBackward<V>(output, input, size);
    }
}
} // namespace mft_kernels
