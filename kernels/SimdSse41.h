// Vector operations of SSE4.1 under the names that the vector kernels are written in.
// Anonymous: what is built from these stays inside the file that was compiled for the instruction set.
#pragma once

#include <immintrin.h>

#include "kernels/ResizeTables.h"
#include "kernels/Rows.h"

namespace mft_kernels
{
namespace // NOLINT(google-build-namespaces): internal linkage in every including file is the point
{
struct Sse41
{
    using Reg = __m128i;
    using Float = __m128;
    static constexpr std::size_t kBytes = 16;
    static constexpr std::size_t kWords = 8;
    static constexpr std::size_t kFloats = 4;
    static constexpr std::size_t kResizeBlock = 8; // output pixels per step, one or two registers of sums

    static Reg Load(const void *p)
    {
        return _mm_loadu_si128(static_cast<const Reg *>(p));
    }
    // For values used more than once: compilers repeat a plain load in every instruction that could take it from
    // memory.
    static Reg LoadOnce(const void *p)
    {
        return _mm_lddqu_si128(static_cast<const Reg *>(p));
    }
    static void Store(void *p, Reg v)
    {
        _mm_storeu_si128(static_cast<Reg *>(p), v);
    }
    static Reg Bytes(int v)
    {
        return _mm_set1_epi8(static_cast<char>(v));
    }
    static Reg Words(int v)
    {
        return _mm_set1_epi16(static_cast<short>(v));
    }
    static Reg Dwords(std::uint32_t v)
    {
        return _mm_set1_epi32(static_cast<int>(v));
    }

    static Reg And(Reg a, Reg b)
    {
        return _mm_and_si128(a, b);
    }
    static Reg SubtractSaturatedBytes(Reg a, Reg b)
    {
        return _mm_subs_epu8(a, b);
    }
    static Reg MinBytes(Reg a, Reg b)
    {
        return _mm_min_epu8(a, b);
    }
    static Reg MinWords(Reg a, Reg b)
    {
        return _mm_min_epu16(a, b);
    }
    static Reg MinSigned(Reg a, Reg b)
    {
        return _mm_min_epi16(a, b);
    }
    static Reg MaxSigned(Reg a, Reg b)
    {
        return _mm_max_epi16(a, b);
    }
    static Reg MultiplyHigh(Reg a, Reg b)
    {
        return _mm_mulhi_epu16(a, b);
    }
    static Reg MultiplyRounded(Reg a, Reg b)
    {
        return _mm_mulhrs_epi16(a, b);
    }
    template <int bits>
    static Reg ShiftLeftWords(Reg a)
    {
        return _mm_slli_epi16(a, bits);
    }
    template <int bits>
    static Reg ShiftRightWords(Reg a)
    {
        return _mm_srli_epi16(a, bits);
    }
    // Words to bytes, in order.
    static Reg PackBytes(Reg a, Reg b)
    {
        return _mm_packus_epi16(a, b);
    }

    static Float Broadcast(float v)
    {
        return _mm_set1_ps(v);
    }
    static Float LoadFloats(const float *p)
    {
        return _mm_loadu_ps(p);
    }
    static void StoreFloats(float *p, Float v)
    {
        _mm_storeu_ps(p, v);
    }
    static Float Multiply(Float a, Float b)
    {
        return _mm_mul_ps(a, b);
    }
    static Float Add(Float a, Float b)
    {
        return _mm_add_ps(a, b);
    }
    static Float Subtract(Float a, Float b)
    {
        return _mm_sub_ps(a, b);
    }
    static Float LoadSignedWords(const void *p)
    {
        return _mm_cvtepi32_ps(_mm_cvtepi16_epi32(_mm_loadl_epi64(static_cast<const Reg *>(p))));
    }
    // The register that starts at element k of two that follow each other, also to be found at p + k.
    template <std::size_t k>
    static Float Tap(Float here, Float next, const float *p)
    {
        return k == 0 ? here : k == 4 ? next : LoadFloats(p + k);
    }
    // Rounds, saturates to 0..32767 and stores one word per element.
    static void StoreRounded(void *p, Float first, Float second)
    {
        const Reg words = _mm_packs_epi32(_mm_cvtps_epi32(first), _mm_cvtps_epi32(second));
        Store(p, _mm_max_epi16(words, _mm_setzero_si128()));
    }

    static Reg MultiplyDwords(Reg a, Reg b)
    {
        return _mm_mullo_epi32(a, b);
    }
    static Reg AddDwords(Reg a, Reg b)
    {
        return _mm_add_epi32(a, b);
    }
    static __m128i ShiftCount(std::uint32_t bits)
    {
        return _mm_cvtsi32_si128(static_cast<int>(bits));
    }
    static Reg ShiftRightDwords(Reg a, __m128i bits)
    {
        return _mm_srl_epi32(a, bits);
    }
    // floor((a * x + b * y + offset) * factor) per element of signed a, b; results fit 16 bits.
    static Reg WeighInDoubles(Reg a, Reg b, double x, double y, double offset, double factor)
    {
        const __m128i low = WeighPair(a, b, x, y, offset, factor);
        const __m128i high = WeighPair(_mm_srli_si128(a, 8), _mm_srli_si128(b, 8), x, y, offset, factor);
        return _mm_unpacklo_epi64(low, high);
    }
    // Stores kResizeBlock words from dwords; makeDwords(x) gives the register for column x.
    template <typename MakeDwords>
    static void StoreWords(std::uint8_t *out, std::size_t x, const MakeDwords &makeDwords)
    {
        Store(out, _mm_packus_epi32(makeDwords(x), makeDwords(x + 4)));
    }
    // The same for sum * reciprocal >> wholeShift, where shift is 32 less.
    template <typename Sum>
    static void StoreQuotients(std::uint8_t *out, std::size_t column, const Sum &sumAt, Reg reciprocal, __m128i shift,
                               __m128i wholeShift)
    {
        StoreWords(out, column, [&](std::size_t x) {
            const Reg sum = sumAt(x);
            const Reg even = _mm_mul_epu32(sum, reciprocal);
            const Reg odd = _mm_mul_epu32(_mm_srli_epi64(sum, 32), reciprocal);
            return _mm_blend_epi16(_mm_srl_epi64(even, wholeShift), _mm_srl_epi64(odd, shift), 0xCC);
        });
    }

    static bool HasWindows(const ResizeTables &tables)
    {
        return tables.windowStarts != nullptr;
    }
    // Sums of pairs of neighbours times pairs of weights. The product takes signed words: pixels less 32768.
    // For two rows: sums of pairs of neighbours times pairs of weights. The product takes signed words: pixels less
    // 32768.
    static void SumRows(const ResizeTables &tables, const std::uint8_t *upper, const std::uint8_t *lower,
                        std::int32_t *upperSums, std::int32_t *lowerSums)
    {
        const ResizeTables local = tables; // a store might change the table, for all the compiler knows
        const Reg bias = Words(-32768);
        const Reg offset = Dwords(local.columnDenominator * 32768 + local.columnDenominator / 2);
        for (std::size_t x = 0; x < local.scratchRow; x += 4)
        {
            const Reg shuffle = Load(local.windowShuffles + 4 * x);
            const Reg weights = Load(local.pairWeights + 2 * x);
            const std::size_t start = 2 * std::size_t{local.windowStarts[x / 4]};
            const auto sum = [=](const std::uint8_t *in) {
                const Reg pairs = _mm_shuffle_epi8(_mm_xor_si128(Load(in + start), bias), shuffle);
                return _mm_add_epi32(_mm_madd_epi16(pairs, weights), offset);
            };
            Store(upperSums + x, sum(upper));
            Store(lowerSums + x, sum(lower));
        }
    }

  private:
    static __m128i WeighPair(Reg a, Reg b, double x, double y, double offset, double factor)
    {
        const __m128d sum =
            _mm_add_pd(_mm_mul_pd(_mm_cvtepi32_pd(a), _mm_set1_pd(x)), _mm_mul_pd(_mm_cvtepi32_pd(b), _mm_set1_pd(y)));
        return _mm_cvttpd_epi32(_mm_mul_pd(_mm_add_pd(sum, _mm_set1_pd(offset)), _mm_set1_pd(factor)));
    }
};
} // namespace
} // namespace mft_kernels
