// Vector operations of AVX2 under the names that the vector kernels are written in.
// Anonymous: what is built from these stays inside the file that was compiled for the instruction set.
#pragma once

#include <immintrin.h>

#include "kernels/ResizeTables.h"
#include "kernels/Rows.h"

namespace mft_kernels
{
namespace // NOLINT(google-build-namespaces): internal linkage in every including file is the point
{
struct Avx2
{
    using Reg = __m256i;
    using Float = __m256;
    static constexpr std::size_t kBytes = 32;
    static constexpr std::size_t kWords = 16;
    static constexpr std::size_t kFloats = 8;
    static constexpr std::size_t kResizeBlock = 16;

    static Reg Load(const void *p)
    {
        return _mm256_loadu_si256(static_cast<const Reg *>(p));
    }
    static Reg LoadOnce(const void *p)
    {
        return _mm256_lddqu_si256(static_cast<const Reg *>(p));
    }
    static void Store(void *p, Reg v)
    {
        _mm256_storeu_si256(static_cast<Reg *>(p), v);
    }
    static Reg Bytes(int v)
    {
        return _mm256_set1_epi8(static_cast<char>(v));
    }
    static Reg Words(int v)
    {
        return _mm256_set1_epi16(static_cast<short>(v));
    }
    static Reg Dwords(std::uint32_t v)
    {
        return _mm256_set1_epi32(static_cast<int>(v));
    }

    static Reg And(Reg a, Reg b)
    {
        return _mm256_and_si256(a, b);
    }
    static Reg SubtractSaturatedBytes(Reg a, Reg b)
    {
        return _mm256_subs_epu8(a, b);
    }
    static Reg MinBytes(Reg a, Reg b)
    {
        return _mm256_min_epu8(a, b);
    }
    static Reg MinWords(Reg a, Reg b)
    {
        return _mm256_min_epu16(a, b);
    }
    static Reg MinSigned(Reg a, Reg b)
    {
        return _mm256_min_epi16(a, b);
    }
    static Reg MaxSigned(Reg a, Reg b)
    {
        return _mm256_max_epi16(a, b);
    }
    static Reg MultiplyHigh(Reg a, Reg b)
    {
        return _mm256_mulhi_epu16(a, b);
    }
    static Reg MultiplyRounded(Reg a, Reg b)
    {
        return _mm256_mulhrs_epi16(a, b);
    }
    template <int bits>
    static Reg ShiftLeftWords(Reg a)
    {
        return _mm256_slli_epi16(a, bits);
    }
    template <int bits>
    static Reg ShiftRightWords(Reg a)
    {
        return _mm256_srli_epi16(a, bits);
    }
    static Reg PackBytes(Reg a, Reg b)
    {
        return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
    }

    static Float Broadcast(float v)
    {
        return _mm256_set1_ps(v);
    }
    static Float LoadFloats(const float *p)
    {
        return _mm256_loadu_ps(p);
    }
    static void StoreFloats(float *p, Float v)
    {
        _mm256_storeu_ps(p, v);
    }
    static Float Multiply(Float a, Float b)
    {
        return _mm256_mul_ps(a, b);
    }
    static Float Add(Float a, Float b)
    {
        return _mm256_add_ps(a, b);
    }
    static Float Subtract(Float a, Float b)
    {
        return _mm256_sub_ps(a, b);
    }
    static Float LoadSignedWords(const void *p)
    {
        return _mm256_cvtepi32_ps(_mm256_cvtepi16_epi32(_mm_loadu_si128(static_cast<const __m128i *>(p))));
    }
    // Two taps from registers: with all from memory the loads across cache lines decide.
    template <std::size_t k>
    static Float Tap(Float here, Float next, const float *p)
    {
        const Float middle = _mm256_permute2f128_ps(here, next, 0x21);
        if constexpr (k == 3)
        {
            const Reg tap = _mm256_alignr_epi8(_mm256_castps_si256(middle), _mm256_castps_si256(here), 4 * k);
            return _mm256_castsi256_ps(tap);
        }
        else if constexpr (k == 4)
        {
            return middle;
        }
        else
        {
            return k == 8 ? next : LoadFloats(p + k);
        }
    }
    static void StoreRounded(void *p, Float first, Float second)
    {
        const Reg words = _mm256_packs_epi32(_mm256_cvtps_epi32(first), _mm256_cvtps_epi32(second));
        Store(p, _mm256_permute4x64_epi64(_mm256_max_epi16(words, _mm256_setzero_si256()), 0xD8));
    }

    static Reg MultiplyDwords(Reg a, Reg b)
    {
        return _mm256_mullo_epi32(a, b);
    }
    static Reg AddDwords(Reg a, Reg b)
    {
        return _mm256_add_epi32(a, b);
    }
    static __m128i ShiftCount(std::uint32_t bits)
    {
        return _mm_cvtsi32_si128(static_cast<int>(bits));
    }
    static Reg ShiftRightDwords(Reg a, __m128i bits)
    {
        return _mm256_srl_epi32(a, bits);
    }
    static Reg WeighInDoubles(Reg a, Reg b, double x, double y, double offset, double factor)
    {
        const __m128i low = WeighFour(_mm256_castsi256_si128(a), _mm256_castsi256_si128(b), x, y, offset, factor);
        const __m128i high =
            WeighFour(_mm256_extracti128_si256(a, 1), _mm256_extracti128_si256(b, 1), x, y, offset, factor);
        return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
    }
    template <typename MakeDwords>
    static void StoreWords(std::uint8_t *out, std::size_t x, const MakeDwords &makeDwords)
    {
        const Reg words = _mm256_packus_epi32(makeDwords(x), makeDwords(x + 8));
        Store(out, _mm256_permute4x64_epi64(words, 0xD8));
    }
    template <typename Sum>
    static void StoreQuotients(std::uint8_t *out, std::size_t column, const Sum &sumAt, Reg reciprocal, __m128i shift,
                               __m128i wholeShift)
    {
        StoreWords(out, column, [&](std::size_t x) {
            const Reg sum = sumAt(x);
            const Reg even = _mm256_mul_epu32(sum, reciprocal);
            const Reg odd = _mm256_mul_epu32(_mm256_srli_epi64(sum, 32), reciprocal);
            return _mm256_blend_epi32(_mm256_srl_epi64(even, wholeShift), _mm256_srl_epi64(odd, shift), 0xAA);
        });
    }

    static bool HasWindows(const ResizeTables &tables)
    {
        return tables.windowStarts != nullptr;
    }
    static void SumRows(const ResizeTables &tables, const std::uint8_t *upper, const std::uint8_t *lower,
                        std::int32_t *upperSums, std::int32_t *lowerSums)
    {
        const ResizeTables local = tables; // a store might change the table, for all the compiler knows
        const Reg bias = Words(-32768);
        const Reg offset = Dwords(local.columnDenominator * 32768 + local.columnDenominator / 2);
        for (std::size_t x = 0; x < local.scratchRow; x += 8)
        {
            const Reg shuffle = Load(local.windowShuffles + 4 * x);
            const Reg weights = Load(local.pairWeights + 2 * x);
            const std::size_t start = local.windowStarts[x / 4];
            const std::size_t next = local.windowStarts[x / 4 + 1];
            const auto sum = [=](const std::uint8_t *in) {
                const Reg pixels = _mm256_loadu2_m128i(Window(in, next), Window(in, start));
                const Reg pairs = _mm256_shuffle_epi8(_mm256_xor_si256(pixels, bias), shuffle);
                return _mm256_add_epi32(_mm256_madd_epi16(pairs, weights), offset);
            };
            Store(upperSums + x, sum(upper));
            Store(lowerSums + x, sum(lower));
        }
    }

  private:
    static const __m128i *Window(const std::uint8_t *in, std::size_t start)
    {
        return static_cast<const __m128i *>(static_cast<const void *>(in + 2 * start));
    }
    static __m128i WeighFour(__m128i a, __m128i b, double x, double y, double offset, double factor)
    {
        const __m256d sum = _mm256_add_pd(_mm256_mul_pd(_mm256_cvtepi32_pd(a), _mm256_set1_pd(x)),
                                          _mm256_mul_pd(_mm256_cvtepi32_pd(b), _mm256_set1_pd(y)));
        return _mm256_cvttpd_epi32(_mm256_mul_pd(_mm256_add_pd(sum, _mm256_set1_pd(offset)), _mm256_set1_pd(factor)));
    }
};
} // namespace
} // namespace mft_kernels
