#include "recorder/RecordBuilder.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace mft_der
{

namespace
{
constexpr std::size_t kAlignment = 8;
} // namespace

RecordBuilder &RecordBuilder::U32(std::uint16_t name, std::uint32_t value)
{
    return Add(name, TARN_KIND_U32, value);
}

RecordBuilder &RecordBuilder::U64(std::uint16_t name, std::uint64_t value)
{
    return Add(name, TARN_KIND_U64, value);
}

RecordBuilder &RecordBuilder::I64(std::uint16_t name, std::int64_t value)
{
    return Add(name, TARN_KIND_I64, value);
}

RecordBuilder &RecordBuilder::F64(std::uint16_t name, double value)
{
    return Add(name, TARN_KIND_F64, value);
}

RecordBuilder &RecordBuilder::Guid(std::uint16_t name, GuidBytes guid)
{
    const std::size_t value = Open(name, TARN_KIND_GUID);
    std::memcpy(Space(guid.size()).data(), guid.data(), guid.size());
    Close(value);
    return *this;
}

RecordBuilder &RecordBuilder::Text(std::uint16_t name, std::string_view utf8)
{
    const std::size_t value = Open(name, TARN_KIND_TEXT);
    Append({reinterpret_cast<const std::uint8_t *>(utf8.data()), utf8.size()});
    Close(value);
    return *this;
}

RecordBuilder &RecordBuilder::Block(std::uint16_t name, Bytes bytes, std::size_t longest)
{
    const std::size_t value = Open(name, TARN_KIND_BYTES);
    Append(bytes.first(std::min(bytes.size(), longest)));
    Close(value);
    if (bytes.size() > longest)
    {
        U64(TARN_VALUE_FULL_LENGTH, bytes.size());
    }
    return *this;
}

RecordBuilder &RecordBuilder::Null(std::uint16_t name)
{
    Open(name, TARN_KIND_NULL);
    return *this;
}

RecordBuilder &RecordBuilder::Object(std::uint16_t name)
{
    Open(name, TARN_KIND_OBJECT);
    return *this;
}

void RecordBuilder::HeadOf(std::uint16_t name, std::uint16_t kind, std::uint32_t bytes)
{
    AppendValue(tarn_value_header{name, kind, bytes});
}

void RecordBuilder::Append(Bytes bytes)
{
    if (!bytes.empty())
    {
        std::memcpy(Space(bytes.size()).data(), bytes.data(), bytes.size());
    }
}

std::size_t RecordBuilder::Open(std::uint16_t name, std::uint16_t kind)
{
    const std::size_t value = size;
    HeadOf(name, kind, 0);
    return value;
}

std::size_t RecordBuilder::OpenAttribute(GuidBytes key, std::uint16_t kind)
{
    const std::size_t value = Open(0, TARN_KIND_ATTRIBUTE);
    std::memcpy(Space(key.size()).data(), key.data(), key.size());
    AppendValue(std::array<std::uint16_t, 4>{kind, 0, 0, 0});
    return value;
}

void RecordBuilder::Close(std::size_t value)
{
    const auto length = static_cast<std::uint32_t>(size - value - sizeof(tarn_value_header));
    std::memcpy(block + value + offsetof(tarn_value_header, length), &length, sizeof(length));
    const std::size_t padding = (kAlignment - size % kAlignment) % kAlignment;
    AppendValue(std::uint64_t{0});
    size -= kAlignment - padding;
}

template <class Number>
RecordBuilder &RecordBuilder::Add(std::uint16_t name, std::uint16_t kind, Number number)
{
    const std::size_t value = Open(name, kind);
    AppendValue(number);
    Close(value);
    return *this;
}

void RecordBuilder::MakeRoom(std::size_t count)
{
    if (count > UINT32_MAX / 2 - size) // lengths have 32 bits
    {
        throw std::bad_alloc();
    }
    const std::size_t grown = std::max(2 * capacity, size + count);
    std::unique_ptr<std::uint8_t[]> larger(new std::uint8_t[grown]);
    std::memcpy(larger.get(), block, size);
    more.swap(larger);
    block = more.get();
    capacity = grown;
}

} // namespace mft_der
