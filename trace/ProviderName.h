// GUID of a trace provider from its name, computed by the compiler.
#pragma once

#include <windows.h>

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mft_utils
{

namespace provider_name_detail
{

constexpr std::uint32_t BigEndianWord(const std::uint8_t *bytes) noexcept
{
    return (std::uint32_t{bytes[0]} << 24) | (std::uint32_t{bytes[1]} << 16) | (std::uint32_t{bytes[2]} << 8) |
           bytes[3];
}

// SHA-1 ("Secure Hash Standard", FIPS 180-4) fed byte by byte; a name hash, not a protection.
class Sha1
{
  public:
    constexpr void Add(std::uint8_t byte) noexcept
    {
        block[used++] = byte;
        ++total;
        if (used == block.size())
        {
            Transform();
            used = 0;
        }
    }

    constexpr std::array<std::uint8_t, 20> Finish() noexcept
    {
        const std::uint64_t bits = total * 8;
        Add(0x80);
        while (used != block.size() - 8)
        {
            Add(0);
        }
        for (int shift = 56; shift >= 0; shift -= 8)
        {
            Add(static_cast<std::uint8_t>(bits >> shift));
        }
        std::array<std::uint8_t, 20> digest{};
        for (std::size_t i = 0; i < digest.size(); ++i)
        {
            digest[i] = static_cast<std::uint8_t>(state[i / 4] >> (24 - 8 * (i % 4)));
        }
        return digest;
    }

  private:
    constexpr void Transform() noexcept
    {
        std::array<std::uint32_t, 80> w{};
        for (std::size_t i = 0; i < 16; ++i)
        {
            w[i] = BigEndianWord(&block[4 * i]);
        }
        for (std::size_t i = 16; i < w.size(); ++i)
        {
            w[i] = std::rotl(w[i - 3] ^ w[i - 8] ^ w[i - 14] ^ w[i - 16], 1);
        }
        auto [a, b, c, d, e] = state;
        for (std::size_t i = 0; i < w.size(); ++i)
        {
            std::uint32_t f = b ^ c ^ d;
            std::uint32_t k = i < 40 ? 0x6ED9EBA1 : 0xCA62C1D6;
            if (i < 20)
            {
                f = (b & c) | (~b & d);
                k = 0x5A827999;
            }
            else if (i >= 40 && i < 60)
            {
                f = (b & c) | (b & d) | (c & d);
                k = 0x8F1BBCDC;
            }
            const std::uint32_t next = std::rotl(a, 5) + f + e + k + w[i];
            e = d;
            d = c;
            c = std::rotl(b, 30);
            b = a;
            a = next;
        }
        state[0] += a;
        state[1] += b;
        state[2] += c;
        state[3] += d;
        state[4] += e;
    }

    std::array<std::uint32_t, 5> state{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0};
    std::array<std::uint8_t, 64> block{};
    std::size_t used = 0;
    std::uint64_t total = 0;
};

} // namespace provider_name_detail

// Hash of a namespace and the upper-cased name in big-endian UTF-16, as trace tools compute it; ASCII names only.
constexpr GUID GuidFromProviderName(std::string_view name) noexcept
{
    constexpr std::array<std::uint8_t, 16> kNamespace{0x48, 0x2C, 0x2D, 0xB2, 0xC3, 0x90, 0x47, 0xC8,
                                                      0x87, 0xF8, 0x1A, 0x15, 0xBF, 0xC1, 0x30, 0xFB};
    provider_name_detail::Sha1 hash;
    for (const std::uint8_t byte : kNamespace)
    {
        hash.Add(byte);
    }
    for (const char character : name)
    {
        const bool isLower = character >= 'a' && character <= 'z';
        hash.Add(0);
        hash.Add(static_cast<std::uint8_t>(isLower ? character - 'a' + 'A' : character));
    }
    auto digest = hash.Finish();
    digest[7] = static_cast<std::uint8_t>((digest[7] & 0x0F) | 0x50);

    // The bytes are a GUID as it lies in memory: its first three fields are little-endian.
    GUID guid{};
    guid.Data1 = digest[0] | (std::uint32_t{digest[1]} << 8) | (std::uint32_t{digest[2]} << 16) |
                 (std::uint32_t{digest[3]} << 24);
    guid.Data2 = static_cast<unsigned short>(digest[4] | (digest[5] << 8));
    guid.Data3 = static_cast<unsigned short>(digest[6] | (digest[7] << 8));
    for (std::size_t i = 0; i < 8; ++i)
    {
        guid.Data4[i] = digest[8 + i];
    }
    return guid;
}

} // namespace mft_utils
