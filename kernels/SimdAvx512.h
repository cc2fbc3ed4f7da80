// Vector operations of AVX-512 under the names that the vector kernels are written in.
// Anonymous: what is built from these stays inside the file that was compiled for the instruction set.
#pragma once

#include <immintrin.h>

#include "kernels/ResizeTables.h"
#include "kernels/Rows.h"
#include "kernels/Scalar.h"

namespace mft_kernels
{
namespace // NOLINT(google-build-namespaces): internal linkage in every including file is the point
{
struct Avx512
{
    using Reg = __m512i;
    using Float = __m512;
    static constexpr std::size_t kBytes = 64;
    static constexpr std::size_t kWords = 32;
    static constexpr std::size_t kFloats = 16;
    static constexpr std::size_t kResizeBlock = 16;

    static Reg Load(const void *p)
    {
        return _mm512_loadu_si512(p);
    }
    static Reg LoadOnce(const void *p)
    {
        return _mm512_maskz_loadu_epi16(kEveryLane, p);
    }
    static void Store(void *p, Reg v)
    {
        _mm512_storeu_si512(p, v);
    }
    static Reg Bytes(int v)
    {
        return _mm512_set1_epi8(static_cast<char>(v));
    }
    static Reg Words(int v)
    {
        return _mm512_set1_epi16(static_cast<short>(v));
    }
    static Reg Dwords(std::uint32_t v)
    {
        return _mm512_set1_epi32(static_cast<int>(v));
    }

    static Reg And(Reg a, Reg b)
    {
        return _mm512_and_si512(a, b);
    }
    static Reg SubtractSaturatedBytes(Reg a, Reg b)
    {
        return _mm512_subs_epu8(a, b);
    }
    static Reg MinBytes(Reg a, Reg b)
    {
        return _mm512_min_epu8(a, b);
    }
    static Reg MinWords(Reg a, Reg b)
    {
        return _mm512_min_epu16(a, b);
    }
    static Reg MinSigned(Reg a, Reg b)
    {
        return _mm512_min_epi16(a, b);
    }
    static Reg MaxSigned(Reg a, Reg b)
    {
        return _mm512_max_epi16(a, b);
    }
    static Reg MultiplyHigh(Reg a, Reg b)
    {
        return _mm512_mulhi_epu16(a, b);
    }
    static Reg MultiplyRounded(Reg a, Reg b)
    {
        return _mm512_mulhrs_epi16(a, b);
    }
    template <int bits>
    static Reg ShiftLeftWords(Reg a)
    {
        return _mm512_slli_epi16(a, bits);
    }
    template <int bits>
    static Reg ShiftRightWords(Reg a)
    {
        return _mm512_srli_epi16(a, bits);
    }
    static Reg PackBytes(Reg a, Reg b)
    {
        const Reg order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
        return _mm512_permutexvar_epi64(order, _mm512_packus_epi16(a, b));
    }

    static Float Broadcast(float v)
    {
        return _mm512_set1_ps(v);
    }
    static Float LoadFloats(const float *p)
    {
        return _mm512_loadu_ps(p);
    }
    static void StoreFloats(float *p, Float v)
    {
        _mm512_storeu_ps(p, v);
    }
    static Float Multiply(Float a, Float b)
    {
        return _mm512_mul_ps(a, b);
    }
    static Float Add(Float a, Float b)
    {
        return _mm512_add_ps(a, b);
    }
    static Float Subtract(Float a, Float b)
    {
        return _mm512_sub_ps(a, b);
    }
    static Float LoadSignedWords(const void *p)
    {
        return _mm512_cvtepi32_ps(_mm512_cvtepi16_epi32(_mm256_loadu_si256(static_cast<const __m256i *>(p))));
    }
    // Half of the taps from memory, where each crosses a cache line, half from registers.
    template <std::size_t k>
    static Float Tap(Float here, Float next, const float *p)
    {
        if constexpr (k % 4 == 0 || k % 4 == 3)
        {
            return k == 0 ? here : LoadFloats(p + k);
        }
        else
        {
            return _mm512_castsi512_ps(_mm512_alignr_epi32(_mm512_castps_si512(next), _mm512_castps_si512(here), k));
        }
    }
    static void StoreRounded(void *p, Float first, Float second)
    {
        const Reg words = _mm512_packs_epi32(_mm512_cvtps_epi32(first), _mm512_cvtps_epi32(second));
        const Reg order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
        Store(p, _mm512_permutexvar_epi64(order, _mm512_max_epi16(words, _mm512_setzero_si512())));
    }

    static Reg MultiplyDwords(Reg a, Reg b)
    {
        return _mm512_mullo_epi32(a, b);
    }
    static Reg AddDwords(Reg a, Reg b)
    {
        return _mm512_add_epi32(a, b);
    }
    static __m128i ShiftCount(std::uint32_t bits)
    {
        return _mm_cvtsi32_si128(static_cast<int>(bits));
    }
    static Reg ShiftRightDwords(Reg a, __m128i bits)
    {
        return _mm512_srl_epi32(a, bits);
    }
    static Reg WeighInDoubles(Reg a, Reg b, double x, double y, double offset, double factor)
    {
        const __m256i low = WeighEight(_mm512_castsi512_si256(a), _mm512_castsi512_si256(b), x, y, offset, factor);
        const __m256i high =
            WeighEight(_mm512_extracti64x4_epi64(a, 1), _mm512_extracti64x4_epi64(b, 1), x, y, offset, factor);
        return _mm512_inserti64x4(_mm512_castsi256_si512(low), high, 1);
    }
    template <typename MakeDwords>
    static void StoreWords(std::uint8_t *out, std::size_t x, const MakeDwords &makeDwords)
    {
        StoreHalf(out, _mm512_cvtepi32_epi16(makeDwords(x)));
    }
    template <typename Sum>
    static void StoreQuotients(std::uint8_t *out, std::size_t x, const Sum &sumAt, Reg reciprocal, __m128i shift,
                               __m128i /*wholeShift*/)
    {
        const Reg sum = sumAt(x);
        const Reg even = _mm512_srl_epi64(_mm512_mul_epu32(sum, reciprocal), shift);
        const Reg odd = _mm512_srl_epi64(_mm512_mul_epu32(_mm512_srli_epi64(sum, 32), reciprocal), shift);
        // The quotients are words 2, 6, 10 ... of both.
        const Reg order =
            _mm512_castsi256_si512(_mm256_setr_epi16(2, 34, 6, 38, 10, 42, 14, 46, 18, 50, 22, 54, 26, 58, 30, 62));
        StoreHalf(out, _mm512_castsi512_si256(_mm512_permutex2var_epi16(even, order, odd)));
    }

    static bool HasWindows(const ResizeTables &tables)
    {
        return tables.wideStarts != nullptr;
    }
    static void SumRows(const ResizeTables &tables, const std::uint8_t *upper, const std::uint8_t *lower,
                        std::int32_t *upperSums, std::int32_t *lowerSums)
    {
        const ResizeTables local = tables; // a store might change the table, for all the compiler knows
        const Reg bias = Words(-32768);
        const Reg offset = Dwords(local.columnDenominator * 32768 + local.columnDenominator / 2);
        for (std::size_t x = 0; x < local.scratchRow; x += 16)
        {
            const Reg permutation = Load(local.widePermutes + 2 * x);
            const Reg weights = Load(local.pairWeights + 2 * x);
            const std::size_t start = 2 * std::size_t{local.wideStarts[x / 16]};
            const auto sum = [=](const std::uint8_t *in) {
                const Reg pairs = _mm512_permutexvar_epi16(permutation, _mm512_xor_si512(Load(in + start), bias));
                return _mm512_add_epi32(_mm512_madd_epi16(pairs, weights), offset);
            };
            Store(upperSums + x, sum(upper));
            Store(lowerSums + x, sum(lower));
        }
    }

  private:
    static void StoreHalf(void *p, __m256i words)
    {
        _mm256_storeu_si256(static_cast<__m256i *>(p), words);
    }
    static __m256i WeighEight(__m256i a, __m256i b, double x, double y, double offset, double factor)
    {
        const __m512d sum = _mm512_add_pd(_mm512_mul_pd(_mm512_cvtepi32_pd(a), _mm512_set1_pd(x)),
                                          _mm512_mul_pd(_mm512_cvtepi32_pd(b), _mm512_set1_pd(y)));
        return _mm512_cvttpd_epi32(_mm512_mul_pd(_mm512_add_pd(sum, _mm512_set1_pd(offset)), _mm512_set1_pd(factor)));
    }
};
} // namespace
} // namespace mft_kernels
