// Values in the layout of a recording, made in memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "tools/recording/Value.h"

namespace tarn_replay
{

// Confined.
class ValueWriter
{
  public:
    void U32(std::uint16_t name, std::uint32_t value)
    {
        Put(name, TARN_KIND_U32, &value, sizeof value);
    }
    void U64(std::uint16_t name, std::uint64_t value)
    {
        Put(name, TARN_KIND_U64, &value, sizeof value);
    }
    void I64(std::uint16_t name, std::int64_t value)
    {
        Put(name, TARN_KIND_I64, &value, sizeof value);
    }
    void Guid(std::uint16_t name, const void *guid)
    {
        Put(name, TARN_KIND_GUID, guid, 16);
    }
    void Null(std::uint16_t name)
    {
        Put(name, TARN_KIND_NULL, nullptr, 0);
    }
    void Put(std::uint16_t name, std::uint16_t kind, const void *payload, std::size_t size);

    // What is put between the two becomes a list; they nest.
    std::size_t BeginList(std::uint16_t name);
    // The same for the value of one attribute.
    std::size_t BeginAttribute(const void *key, std::uint16_t kind);
    void End(std::size_t begun);
    void Attribute(const void *key, std::uint16_t kind, const void *payload, std::size_t size);

    // A view; further values end it.
    tarn_recording::ValueList Values() const noexcept
    {
        return tarn_recording::ValueList(bytes);
    }

  private:
    void Append(const void *from, std::size_t size);
    void Pad();

    std::vector<std::uint8_t> bytes;
};

} // namespace tarn_replay
