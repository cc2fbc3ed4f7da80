#include "tools/replay/ValueWriter.h"

#include <cstring>

namespace tarn_replay
{

void ValueWriter::Append(const void *from, std::size_t size)
{
    const auto *const first = static_cast<const std::uint8_t *>(from);
    bytes.insert(bytes.end(), first, first + size);
}

void ValueWriter::Pad()
{
    bytes.resize((bytes.size() + 7) / 8 * 8);
}

void ValueWriter::Put(std::uint16_t name, std::uint16_t kind, const void *payload, std::size_t size)
{
    const tarn_value_header head{name, kind, static_cast<std::uint32_t>(size)};
    Append(&head, sizeof head);
    Append(payload, size);
    Pad();
}

std::size_t ValueWriter::BeginList(std::uint16_t name)
{
    const std::size_t begun = bytes.size();
    Put(name, TARN_KIND_LIST, nullptr, 0);
    return begun;
}

std::size_t ValueWriter::BeginAttribute(const void *key, std::uint16_t kind)
{
    const std::size_t begun = bytes.size();
    Put(0, TARN_KIND_ATTRIBUTE, nullptr, 0);
    Append(key, 16);
    Append(&kind, sizeof kind);
    Pad();
    return begun;
}

void ValueWriter::End(std::size_t begun)
{
    const auto length = static_cast<std::uint32_t>(bytes.size() - begun - sizeof(tarn_value_header));
    std::memcpy(bytes.data() + begun + offsetof(tarn_value_header, length), &length, sizeof length);
    Pad();
}

void ValueWriter::Attribute(const void *key, std::uint16_t kind, const void *payload, std::size_t size)
{
    const std::size_t begun = BeginAttribute(key, kind);
    Append(payload, size);
    End(begun);
}

} // namespace tarn_replay
