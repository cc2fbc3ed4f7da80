#include "tools/recording/Value.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace tarn_recording
{

namespace
{
static_assert(std::endian::native == std::endian::little, "recordings are read as they stand in memory");

constexpr unsigned kDeepest = 16;
constexpr std::size_t kAttributeHead = 24; // key, kind, zeros

template <class Number>
Number ReadNumber(Bytes bytes) noexcept
{
    Number number;
    std::memcpy(&number, bytes.data(), sizeof number);
    return number;
}

// Bytes that a value of this kind has, or nothing when that depends.
std::optional<std::size_t> FixedSize(std::uint16_t kind) noexcept
{
    switch (kind)
    {
    case TARN_KIND_U32:
        return 4;
    case TARN_KIND_U64:
    case TARN_KIND_I64:
    case TARN_KIND_F64:
        return 8;
    case TARN_KIND_GUID:
        return 16;
    case TARN_KIND_NULL:
    case TARN_KIND_OBJECT:
        return 0;
    default:
        return std::nullopt;
    }
}
} // namespace

std::optional<std::uint64_t> Value::Unsigned() const noexcept
{
    if (kind == TARN_KIND_U32 && payload.size() == 4)
    {
        return ReadNumber<std::uint32_t>(payload);
    }
    return kind == TARN_KIND_U64 && payload.size() == 8 ? std::optional(ReadNumber<std::uint64_t>(payload))
                                                        : std::nullopt;
}

std::optional<std::int64_t> Value::Signed() const noexcept
{
    return kind == TARN_KIND_I64 && payload.size() == 8 ? std::optional(ReadNumber<std::int64_t>(payload))
                                                        : std::nullopt;
}

std::optional<double> Value::Real() const noexcept
{
    return kind == TARN_KIND_F64 && payload.size() == 8 ? std::optional(ReadNumber<double>(payload)) : std::nullopt;
}

std::optional<Guid> Value::AsGuid() const noexcept
{
    return kind == TARN_KIND_GUID && payload.size() == 16 ? std::optional(Guid::Of(payload)) : std::nullopt;
}

std::optional<std::string_view> Value::Text() const noexcept
{
    return kind == TARN_KIND_TEXT
               ? std::optional(std::string_view(reinterpret_cast<const char *>(payload.data()), payload.size()))
               : std::nullopt;
}

std::optional<Attribute> Value::AsAttribute() const noexcept
{
    if (kind != TARN_KIND_ATTRIBUTE || payload.size() < kAttributeHead || depth >= kDeepest)
    {
        return std::nullopt;
    }
    const auto valueKind = ReadNumber<std::uint16_t>(payload.subspan(16));
    Bytes bytes = payload.subspan(kAttributeHead);
    if (const auto size = FixedSize(valueKind); size && bytes.size() > *size)
    {
        bytes = bytes.first(*size); // zeros up to the next multiple of 8
    }
    return Attribute{Guid::Of(payload), Value(0, valueKind, bytes, depth + 1)};
}

ValueList Value::Items() const noexcept
{
    return kind == TARN_KIND_LIST && depth < kDeepest ? ValueList(payload, depth + 1) : ValueList();
}

bool Value::IsWhole() const noexcept
{
    if (depth >= kDeepest)
    {
        return false;
    }
    if (kind == TARN_KIND_LIST)
    {
        return ValueList(payload, depth + 1).IsWhole();
    }
    if (kind == TARN_KIND_ATTRIBUTE)
    {
        const auto attribute = AsAttribute();
        return attribute && attribute->value.IsWhole();
    }
    const auto size = FixedSize(kind);
    return !size || payload.size() == *size;
}

void ValueList::Iterator::Read() noexcept
{
    constexpr std::size_t head = sizeof(tarn_value_header);
    holds = false;
    if (rest.empty())
    {
        return;
    }
    broken = true;
    if (rest.size() < head)
    {
        return;
    }
    const auto header = ReadNumber<tarn_value_header>(rest);
    if (header.length > rest.size() - head)
    {
        return;
    }
    broken = false;
    holds = true;
    current = Value(header.name, header.kind, rest.subspan(head, header.length), depth);
    // The last value's padding may be left out.
    const std::size_t padded = head + (std::size_t{header.length} + 7) / 8 * 8;
    rest = rest.subspan(std::min(padded, rest.size()));
}

std::optional<Value> ValueList::Find(std::uint16_t name, std::size_t nth) const noexcept
{
    for (const Value &value : *this)
    {
        if (value.Name() == name && nth-- == 0)
        {
            return value;
        }
    }
    return std::nullopt;
}

std::optional<std::uint64_t> ValueList::Unsigned(std::uint16_t name) const noexcept
{
    const auto value = Find(name);
    return value ? value->Unsigned() : std::nullopt;
}

std::optional<std::int64_t> ValueList::Signed(std::uint16_t name) const noexcept
{
    const auto value = Find(name);
    return value ? value->Signed() : std::nullopt;
}

ValueList ValueList::Items(std::uint16_t name) const noexcept
{
    const auto value = Find(name);
    return value ? value->Items() : ValueList();
}

std::optional<Value> ValueList::Attribute(const Guid &key) const noexcept
{
    for (const Value &value : *this)
    {
        const auto attribute = value.AsAttribute();
        if (attribute && attribute->key == key)
        {
            return attribute->value;
        }
    }
    return std::nullopt;
}

bool ValueList::IsWhole() const noexcept
{
    Iterator at = begin();
    for (; at != end(); ++at)
    {
        if (!at->IsWhole())
        {
            return false;
        }
    }
    return !at.broken;
}

} // namespace tarn_recording
