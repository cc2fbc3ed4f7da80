// Kernels that look at one pixel at a time, for any vector type: conversion, confidence, threshold.
// A row's last vector overlaps the one before it; in place it is loaded before the first store.
#pragma once

#include <immintrin.h>

#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
// A prefetch past the frame has no effect. Where rows follow each other in memory the processor does better by itself.
static inline void Prefetch(const std::uint8_t *address)
{
    _mm_prefetch(static_cast<const char *>(static_cast<const void *>(address)), _MM_HINT_T0);
}

// Into the second cache.
static inline void PrefetchFar(const std::uint8_t *address)
{
    _mm_prefetch(static_cast<const char *>(static_cast<const void *>(address)), _MM_HINT_T1);
}

template <typename V, typename Operation>
static inline void ApplyToRow(std::uint8_t *row, std::size_t size, const Operation &operation)
{
    constexpr std::size_t kStep = 4 * V::kBytes;
    std::uint8_t *last = row + size - V::kBytes;
    const auto lastResult = operation(V::Load(last));
    std::size_t i = 0;
    for (; i + kStep <= size; i += kStep)
    {
        const auto a = operation(V::Load(row + i));
        const auto b = operation(V::Load(row + i + V::kBytes));
        const auto c = operation(V::Load(row + i + 2 * V::kBytes));
        const auto d = operation(V::Load(row + i + 3 * V::kBytes));
        V::Store(row + i, a);
        V::Store(row + i + V::kBytes, b);
        V::Store(row + i + 2 * V::kBytes, c);
        V::Store(row + i + 3 * V::kBytes, d);
    }
    for (; i + V::kBytes <= size; i += V::kBytes)
    {
        V::Store(row + i, operation(V::Load(row + i)));
    }
    V::Store(last, lastResult);
}

template <typename V>
static void ClampAboveVector(std::uint16_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height,
                             std::uint16_t threshold)
{
    if (width < V::kWords)
    {
        ClampAboveScalar(pixels, stride, width, height, threshold);
        return;
    }
    const auto limit = V::Words(threshold);
    for (std::size_t y = 0; y < height; ++y)
    {
        ApplyToRow<V>(RowAt(pixels, stride, y), 2 * width, [limit](auto v) { return V::MinWords(v, limit); });
    }
}

template <typename V>
static void ConfidenceVector(std::uint8_t *pixels, std::ptrdiff_t stride, std::size_t width, std::size_t height)
{
    if (width < V::kBytes)
    {
        ConfidenceScalar(pixels, stride, width, height);
        return;
    }
    const auto offset = V::Bytes(15);
    const auto limit = V::Bytes(127);
    const auto mask = V::Bytes(15);
    for (std::size_t y = 0; y < height; ++y)
    {
        ApplyToRow<V>(RowAt(pixels, stride, y), width, [offset, limit, mask](auto v) {
            const auto clamped = V::MinBytes(V::SubtractSaturatedBytes(v, offset), limit);
            return V::And(V::template ShiftRightWords<3>(clamped), mask);
        });
    }
}

// (v * 64 + 128) / 257 of the low ten bits v: the shift drops the other bits, and 2045 * 4088 is 2^31 / 257 closely
// enough that neither the first product's truncation nor the second's rounding reaches a wrong byte. A test goes
// through all inputs.
template <typename V>
static inline typename V::Reg ScaleTenBits(typename V::Reg v)
{
    const auto part = V::MultiplyHigh(V::template ShiftLeftWords<6>(v), V::Words(2045));
    return V::MultiplyRounded(part, V::Words(4088));
}

template <typename V>
static void TenToEightVector(const std::uint16_t *input, std::ptrdiff_t inputStride, std::uint8_t *output,
                             std::ptrdiff_t outputStride, std::size_t width, std::size_t height)
{
    if (width < V::kBytes)
    {
        TenToEightScalar(input, inputStride, output, outputStride, width, height);
        return;
    }
    for (std::size_t y = 0; y < height; ++y)
    {
        const std::uint8_t *in = RowAt(input, inputStride, y);
        std::uint8_t *out = RowAt(output, outputStride, y);
        const auto convert = [in, out](std::size_t x) {
            const auto first = ScaleTenBits<V>(V::Load(in + 2 * x));
            const auto second = ScaleTenBits<V>(V::Load(in + 2 * x + V::kBytes));
            V::Store(out + x, V::PackBytes(first, second));
        };
        std::size_t x = 0;
        for (; x + 2 * V::kBytes <= width; x += 2 * V::kBytes)
        {
            convert(x);
            convert(x + V::kBytes);
        }
        for (; x + V::kBytes <= width; x += V::kBytes)
        {
            convert(x);
        }
        convert(width - V::kBytes);
    }
}
} // namespace mft_kernels
