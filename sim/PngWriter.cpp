// Portable Network Graphics, second edition: signature, then chunks of length, type, data and CRC. The picture data are
// a zlib stream (RFC 1950) of stored blocks (RFC 1951, 3.2.4).
#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "base/Crc32.h"
#include "sim/PngImage.h"

namespace tarn_sim
{

namespace
{
using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kLargestBlock = 0xFFFF;

std::uint32_t Adler32(std::span<const std::uint8_t> bytes)
{
    constexpr std::uint32_t prime = 65521;
    constexpr std::size_t withoutOverflow = 5552; // so many bytes may be added up before the division
    std::uint32_t low = 1;
    std::uint32_t high = 0;
    for (std::size_t at = 0; at < bytes.size(); at += withoutOverflow)
    {
        for (const std::uint8_t byte : bytes.subspan(at, std::min(withoutOverflow, bytes.size() - at)))
        {
            low += byte;
            high += low;
        }
        low %= prime;
        high %= prime;
    }
    return high << 16 | low;
}

void Put32(Bytes &bytes, std::uint32_t value)
{
    for (const int shift : {24, 16, 8, 0})
    {
        bytes.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void PutChunk(Bytes &file, std::string_view type, const Bytes &data)
{
    Put32(file, static_cast<std::uint32_t>(data.size()));
    const std::size_t begin = file.size();
    file.insert(file.end(), type.begin(), type.end());
    file.insert(file.end(), data.begin(), data.end());
    Put32(file, user_space_frameworks::Crc32(std::span(file).subspan(begin)));
}

Bytes Stored(const Bytes &data)
{
    Bytes stream{0x78, 0x01};
    stream.reserve(data.size() + data.size() / kLargestBlock * 5 + 16);
    for (std::size_t at = 0; at < data.size(); at += kLargestBlock)
    {
        const std::size_t length = std::min(kLargestBlock, data.size() - at);
        const auto low = static_cast<std::uint8_t>(length & 0xFF);
        const auto high = static_cast<std::uint8_t>(length >> 8);
        const bool isLast = at + length == data.size();
        for (const int byte : {isLast ? 1 : 0, +low, +high, ~low & 0xFF, ~high & 0xFF})
        {
            stream.push_back(static_cast<std::uint8_t>(byte));
        }
        const auto from = data.begin() + static_cast<std::ptrdiff_t>(at);
        stream.insert(stream.end(), from, from + static_cast<std::ptrdiff_t>(length));
    }
    Put32(stream, Adler32(data));
    return stream;
}

// Each row behind a zero for "not filtered"; 16 bits have their high byte first.
Bytes Rows(std::uint32_t width, std::uint32_t height, std::uint32_t bits, std::span<const std::byte> pixels)
{
    const std::size_t rowBytes = std::size_t{width} * bits / 8;
    Bytes rows;
    rows.reserve((rowBytes + 1) * height);
    for (std::size_t y = 0; y < height; ++y)
    {
        rows.push_back(0);
        const auto row = pixels.subspan(y * rowBytes, rowBytes);
        const auto *const bytes = reinterpret_cast<const std::uint8_t *>(row.data());
        const std::size_t begin = rows.size();
        rows.insert(rows.end(), bytes, bytes + rowBytes);
        for (std::size_t at = begin; bits == 16 && at < rows.size(); at += 2)
        {
            std::swap(rows[at], rows[at + 1]);
        }
    }
    return rows;
}
} // namespace

void WriteGreyPng(const std::filesystem::path &file, std::uint32_t width, std::uint32_t height, std::uint32_t bits,
                  std::span<const std::byte> pixels)
{
    if (width == 0 || height == 0 || (bits != 8 && bits != 16) ||
        pixels.size() < std::size_t{width} * height * bits / 8)
    {
        throw std::runtime_error("cannot write picture " + file.string() + ": its size does not fit its pixels");
    }
    Bytes header;
    Put32(header, width);
    Put32(header, height);
    for (const std::uint32_t value : {bits, 0U, 0U, 0U, 0U}) // grey, deflate, adaptive filters, not interlaced
    {
        header.push_back(static_cast<std::uint8_t>(value));
    }
    Bytes bytes{0x89, 'P', 'N', 'G', '\r', '\n', 0x1A, '\n'};
    PutChunk(bytes, "IHDR", header);
    PutChunk(bytes, "IDAT", Stored(Rows(width, height, bits, pixels)));
    PutChunk(bytes, "IEND", {});

    std::ofstream stream(file, std::ios::binary);
    stream.write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (!stream.flush())
    {
        throw std::runtime_error("cannot write picture " + file.string());
    }
}

} // namespace tarn_sim
