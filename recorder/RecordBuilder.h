// Puts the values of one record together. The layout is that of tarn/event_recording.h.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>
#include <span>
#include <string_view>

#include "tarn/event_recording.h"

namespace mft_der
{

using Bytes = std::span<const std::uint8_t>;
using GuidBytes = std::span<const std::uint8_t, 16>;

// Lives on the stack of a recorded call and takes memory only for a record that is longer than its own block.
// Everything that adds may throw std::bad_alloc. Confined.
class RecordBuilder
{
  public:
    static constexpr std::size_t kUncut = SIZE_MAX;

    RecordBuilder() noexcept {} // the block stays as it is
    RecordBuilder(const RecordBuilder &) = delete;
    RecordBuilder &operator=(const RecordBuilder &) = delete;

    RecordBuilder &U32(std::uint16_t name, std::uint32_t value);
    RecordBuilder &U64(std::uint16_t name, std::uint64_t value);
    RecordBuilder &I64(std::uint16_t name, std::int64_t value);
    RecordBuilder &F64(std::uint16_t name, double value);
    RecordBuilder &Guid(std::uint16_t name, GuidBytes guid);
    RecordBuilder &Text(std::uint16_t name, std::string_view utf8);
    // More than `longest` bytes are cut, and their full length is told.
    RecordBuilder &Block(std::uint16_t name, Bytes bytes, std::size_t longest = kUncut);
    RecordBuilder &Null(std::uint16_t name);
    RecordBuilder &Object(std::uint16_t name);

    // `fill` adds the list's values.
    template <class Fill>
    RecordBuilder &List(std::uint16_t name, Fill &&fill)
    {
        const std::size_t list = Open(name, TARN_KIND_LIST);
        fill();
        Close(list);
        return *this;
    }

    // An attribute: key and the bytes of a value of that kind. `fill` adds them, with Append.
    template <class Fill>
    void Attribute(GuidBytes key, std::uint16_t kind, Fill &&fill)
    {
        const std::size_t attribute = OpenAttribute(key, kind);
        fill();
        Close(attribute);
    }

    // Bytes of the value that is being added, to be filled in. Good until the next call.
    std::span<std::uint8_t> Space(std::size_t count)
    {
        if (count > capacity - size)
        {
            MakeRoom(count);
        }
        std::uint8_t *const begin = block + size;
        size += count;
        return {begin, count};
    }
    void Append(Bytes bytes);
    // The bytes of a number or structure.
    template <class T>
    void AppendValue(const T &value)
    {
        std::memcpy(Space(sizeof(value)).data(), &value, sizeof(value));
    }

    // A value whose `bytes` bytes are written behind the record, from somewhere else.
    void HeadOf(std::uint16_t name, std::uint16_t kind, std::uint32_t bytes);

    // Room for the record's header, then the values. Good until the next call.
    std::span<std::uint8_t> Record() noexcept
    {
        return {block, size};
    }

  private:
    static constexpr std::size_t kOwnBytes = 4096;

    std::size_t Open(std::uint16_t name, std::uint16_t kind);
    std::size_t OpenAttribute(GuidBytes key, std::uint16_t kind);
    void Close(std::size_t value);
    template <class Number>
    RecordBuilder &Add(std::uint16_t name, std::uint16_t kind, Number number);
    void MakeRoom(std::size_t count);

    alignas(8) std::array<std::uint8_t, kOwnBytes> own; // values are written before they are read
    std::unique_ptr<std::uint8_t[]> more;
    std::uint8_t *block = own.data();
    std::size_t capacity = kOwnBytes;
    std::size_t size = sizeof(tarn_record_header);
};

} // namespace mft_der
