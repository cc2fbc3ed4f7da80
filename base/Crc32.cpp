#include "base/Crc32.h"

#include <array>
#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace user_space_frameworks
{

namespace
{
constexpr std::size_t kSlices = 8;
using Tables = std::array<std::array<std::uint32_t, 256>, kSlices>;

// Table n: the checksum of a byte with n zero bytes behind it.
constexpr Tables MakeTables()
{
    constexpr std::uint32_t kReflectedPolynomial = 0xEDB88320;
    Tables tables{};
    for (std::uint32_t i = 0; i < 256; ++i)
    {
        std::uint32_t crc = i;
        for (int bit = 0; bit < 8; ++bit)
        {
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? kReflectedPolynomial : 0U);
        }
        tables[0][i] = crc;
    }
    for (std::size_t slice = 1; slice < kSlices; ++slice)
    {
        for (std::size_t i = 0; i < 256; ++i)
        {
            const std::uint32_t shorter = tables[slice - 1][i];
            tables[slice][i] = tables[0][shorter & 0xFFU] ^ (shorter >> 8);
        }
    }
    return tables;
}

#if defined(__x86_64__)
constexpr std::size_t kFoldedBytes = 64; // at a time

// The state after whole blocks of 16 bytes, of which there are four at least: carry-less multiplications fold the bytes
// onto 16 and those onto the remainder ("Fast CRC Computation for Generic Polynomials Using PCLMULQDQ Instruction",
// Gopal and others, 2009; constants for the reflected polynomial).
[[gnu::target("pclmul,sse4.1")]] __m128i Fold(__m128i value, __m128i onto, __m128i constants) noexcept
{
    const __m128i low = _mm_clmulepi64_si128(value, constants, 0x00);
    const __m128i high = _mm_clmulepi64_si128(value, constants, 0x11);
    return _mm_xor_si128(_mm_xor_si128(low, high), onto);
}

[[gnu::target("pclmul,sse4.1")]] std::uint32_t FoldBlocks(std::span<const std::uint8_t> bytes,
                                                          std::uint32_t crc) noexcept
{
    const auto load = [&](std::size_t offset) __attribute__((target("pclmul,sse4.1")))
    {
        return _mm_loadu_si128(reinterpret_cast<const __m128i *>(bytes.data() + offset));
    };
    const __m128i byFour = _mm_set_epi64x(0x01C6E41596, 0x0154442BD4);
    const __m128i byOne = _mm_set_epi64x(0x00CCAA009E, 0x01751997D0);
    __m128i folded[4] = {load(0), load(16), load(32), load(48)};
    folded[0] = _mm_xor_si128(folded[0], _mm_cvtsi32_si128(static_cast<int>(crc)));
    std::size_t done = kFoldedBytes;
    for (; done + kFoldedBytes <= bytes.size(); done += kFoldedBytes)
    {
        for (std::size_t i = 0; i < std::size(folded); ++i)
        {
            folded[i] = Fold(folded[i], load(done + 16 * i), byFour);
        }
    }
    __m128i value = folded[0];
    for (std::size_t i = 1; i < std::size(folded); ++i)
    {
        value = Fold(value, folded[i], byOne);
    }
    for (; done < bytes.size(); done += 16)
    {
        value = Fold(value, load(done), byOne);
    }
    // 128 bits onto 64, those onto 32 with the polynomial's reciprocal.
    const __m128i evenWords = _mm_setr_epi32(-1, 0, -1, 0);
    value = _mm_xor_si128(_mm_srli_si128(value, 8), _mm_clmulepi64_si128(value, byOne, 0x10));
    const __m128i onto32 = _mm_set_epi64x(0, 0x0163CD6124);
    value =
        _mm_xor_si128(_mm_srli_si128(value, 4), _mm_clmulepi64_si128(_mm_and_si128(value, evenWords), onto32, 0x00));
    const __m128i reduction = _mm_set_epi64x(0x01F7011641, 0x01DB710641);
    __m128i quotient = _mm_clmulepi64_si128(_mm_and_si128(value, evenWords), reduction, 0x10);
    quotient = _mm_clmulepi64_si128(_mm_and_si128(quotient, evenWords), reduction, 0x00);
    return static_cast<std::uint32_t>(_mm_extract_epi32(_mm_xor_si128(value, quotient), 1));
}

bool CanFold() noexcept
{
    __builtin_cpu_init();
    return __builtin_cpu_supports("pclmul") != 0 && __builtin_cpu_supports("sse4.1") != 0;
}
#endif
} // namespace

std::uint32_t Crc32(std::span<const std::uint8_t> bytes, std::uint32_t before) noexcept
{
    static constexpr Tables tables = MakeTables();
    std::uint32_t crc = ~before;
#if defined(__x86_64__)
    static const bool canFold = CanFold();
    if (canFold && bytes.size() >= kFoldedBytes)
    {
        const std::size_t whole = bytes.size() / 16 * 16;
        crc = FoldBlocks(bytes.first(whole), crc);
        bytes = bytes.subspan(whole);
    }
#endif
    for (; bytes.size() >= kSlices; bytes = bytes.subspan(kSlices))
    {
        std::array<std::uint32_t, 2> words{}; // little-endian, as every machine that this is built for
        std::memcpy(words.data(), bytes.data(), kSlices);
        words[0] ^= crc;
        crc = 0;
        for (std::size_t i = 0; i < kSlices; ++i)
        {
            crc ^= tables[kSlices - 1 - i][words[i / 4] >> (i % 4 * 8) & 0xFFU];
        }
    }
    for (const std::uint8_t byte : bytes)
    {
        crc = tables[0][(crc ^ byte) & 0xFFU] ^ (crc >> 8);
    }
    return ~crc;
}

} // namespace user_space_frameworks
