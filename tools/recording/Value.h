// Values of a record: views into the recording's bytes, which must outlive them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string_view>

#include "tools/names/Guid.h"
#include "tarn/event_recording.h"

namespace tarn_recording
{

using tarn_host::Guid;
using Bytes = std::span<const std::uint8_t>;

struct Attribute;
class ValueList;

// One value. What is asked for as another kind than it is, or is too short for its kind, is nothing. Immutable.
class Value
{
  public:
    Value() = default;
    Value(std::uint16_t valueName, std::uint16_t valueKind, Bytes valuePayload, unsigned valueDepth) noexcept
        : name(valueName), kind(valueKind), depth(valueDepth), payload(valuePayload)
    {
    }

    std::uint16_t Name() const noexcept // TARN_VALUE_...
    {
        return name;
    }
    std::uint16_t Kind() const noexcept // TARN_KIND_...
    {
        return kind;
    }
    Bytes Payload() const noexcept // behind the head, whatever the kind
    {
        return payload;
    }
    bool IsNull() const noexcept
    {
        return kind == TARN_KIND_NULL;
    }

    // Of 32 or 64 bits.
    std::optional<std::uint64_t> Unsigned() const noexcept;
    std::optional<std::int64_t> Signed() const noexcept;
    std::optional<double> Real() const noexcept;
    std::optional<Guid> AsGuid() const noexcept;
    std::optional<std::string_view> Text() const noexcept;
    std::optional<Attribute> AsAttribute() const noexcept;
    // Of a list; empty for another kind and for one nested deeper than any recorder writes.
    ValueList Items() const noexcept;
    // Whether this value and all inside it fit their lengths and kinds; unknown kinds do.
    bool IsWhole() const noexcept;

  private:
    std::uint16_t name = 0;
    std::uint16_t kind = TARN_KIND_NULL;
    unsigned depth = 0;
    Bytes payload;
};

struct Attribute
{
    Guid key;
    Value value; // without a name
};

// Values one behind the other; ends before the first that does not fit. Immutable.
class ValueList
{
  public:
    class Iterator
    {
      public:
        using difference_type = std::ptrdiff_t;
        using value_type = Value;

        Iterator() = default;
        Iterator(Bytes listBytes, unsigned listDepth) noexcept : rest(listBytes), depth(listDepth)
        {
            Read();
        }
        const Value &operator*() const noexcept
        {
            return current;
        }
        const Value *operator->() const noexcept
        {
            return &current;
        }
        Iterator &operator++() noexcept
        {
            Read();
            return *this;
        }
        void operator++(int) noexcept
        {
            Read();
        }
        friend bool operator==(const Iterator &at, std::default_sentinel_t) noexcept
        {
            return !at.holds;
        }

      private:
        friend class ValueList;
        void Read() noexcept;

        Bytes rest;
        unsigned depth = 0;
        bool holds = false;
        bool broken = false;
        Value current;
    };

    ValueList() = default;
    explicit ValueList(Bytes listBytes, unsigned listDepth = 0) noexcept : bytes(listBytes), depth(listDepth) {}

    Iterator begin() const noexcept
    {
        return {bytes, depth};
    }
    std::default_sentinel_t end() const noexcept
    {
        return {};
    }

    // The nth value of that name, or nothing.
    std::optional<Value> Find(std::uint16_t name, std::size_t nth = 0) const noexcept;
    // Shorthands for the first of that name.
    std::optional<std::uint64_t> Unsigned(std::uint16_t name) const noexcept;
    std::optional<std::int64_t> Signed(std::uint16_t name) const noexcept;
    ValueList Items(std::uint16_t name) const noexcept;
    // The value of the attribute with this key, or nothing.
    std::optional<Value> Attribute(const Guid &key) const noexcept;
    bool IsWhole() const noexcept;

  private:
    Bytes bytes;
    unsigned depth = 0;
};

} // namespace tarn_recording
