#include "tools/replay/ValueDifference.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <map>

#include "tools/names/PipelineNames.h"

namespace tarn_replay
{

using tarn_recording::Bytes;
using tarn_recording::Value;
using tarn_recording::ValueList;

namespace
{
constexpr std::size_t kBytesShown = 16;

const char *NameOf(std::uint16_t name)
{
    static const std::map<std::uint16_t, const char *> names{
        {TARN_VALUE_STREAM, "stream"},
        {TARN_VALUE_INDEX, "index"},
        {TARN_VALUE_MEDIA_TYPE, "media type"},
        {TARN_VALUE_ATTRIBUTES, "attributes"},
        {TARN_VALUE_STATE, "state"},
        {TARN_VALUE_COUNT, "count"},
        {TARN_VALUE_SAMPLE, "sample"},
        {TARN_VALUE_NUMBER, "number"},
        {TARN_VALUE_TIME, "time"},
        {TARN_VALUE_DURATION, "duration"},
        {TARN_VALUE_LENGTH, "length"},
        {TARN_VALUE_BUFFER, "output buffer"},
        {TARN_VALUE_STATUS, "status"},
        {TARN_VALUE_EVENT_TYPE, "event"},
        {TARN_VALUE_EXTENDED_TYPE, "extended type"},
        {TARN_VALUE_EVENT_STATUS, "event's status"},
        {TARN_VALUE_EVENT_VALUE, "event's value"},
        {TARN_VALUE_DATA, "data"},
        {TARN_VALUE_BYTES_RETURNED, "bytes returned"},
        {TARN_VALUE_HASH, "hash of the picture"},
        {TARN_VALUE_USAGE, "usage"},
        {TARN_VALUE_STREAMS, "streams"},
    };
    const auto found = names.find(name);
    return found == names.end() ? "value" : found->second;
}

bool IsCompared(std::uint16_t name, std::uint16_t kind)
{
    return kind != TARN_KIND_OBJECT && name != TARN_VALUE_WORK_QUEUE && name != TARN_VALUE_ADDRESS &&
           name != TARN_VALUE_FULL_LENGTH && name != TARN_VALUE_NUMBER;
}

std::optional<ValueDifference> Compare(const Value &recorded, const Value &got, bool isCut)
{
    if (recorded.Kind() == TARN_KIND_LIST && got.Kind() == TARN_KIND_LIST)
    {
        return FindDifference(recorded.Items(), got.Items());
    }
    const Bytes expected = recorded.Payload();
    const bool isWhole = expected.size() == got.Payload().size();
    if (recorded.Kind() == got.Kind() && (isWhole || (isCut && expected.size() < got.Payload().size())) &&
        std::ranges::equal(expected, got.Payload().first(expected.size())))
    {
        return std::nullopt;
    }
    return ValueDifference{"", ToText(recorded), ToText(got)};
}

// Two attributes of which the second may be missing.
std::optional<ValueDifference> CompareAttribute(const Value &recorded, const ValueList &got, bool isCut)
{
    const auto expected = recorded.AsAttribute();
    // Objects that are not told further are null here.
    if (!expected || expected->value.Kind() == TARN_KIND_NULL || expected->value.Kind() == TARN_KIND_OBJECT)
    {
        return std::nullopt;
    }
    const std::string name = "attribute " + tarn_host::GuidText(expected->key.bytes);
    const auto found = got.Attribute(expected->key);
    if (!found)
    {
        return ValueDifference{name, ToText(expected->value), "none"};
    }
    auto difference = Compare(expected->value, *found, isCut);
    if (difference)
    {
        difference->what = difference->what.empty() ? name : name + ", " + difference->what;
    }
    return difference;
}

std::size_t CountAttributes(const ValueList &list)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(list, [](const Value &value) { return value.Kind() == TARN_KIND_ATTRIBUTE; }));
}
} // namespace

std::optional<ValueDifference> FindDifference(ValueList recorded, ValueList got)
{
    std::map<std::uint16_t, std::size_t> seen; // how often each name came before
    for (auto at = recorded.begin(); at != recorded.end();)
    {
        const Value value = *at;
        ++at;
        const bool isCut = at != recorded.end() && at->Name() == TARN_VALUE_FULL_LENGTH;
        if (value.Kind() == TARN_KIND_ATTRIBUTE)
        {
            if (auto difference = CompareAttribute(value, got, isCut))
            {
                return difference;
            }
            continue;
        }
        const std::size_t place = seen[value.Name()]++;
        if (!IsCompared(value.Name(), value.Kind()))
        {
            continue;
        }
        const auto found = got.Find(value.Name(), place);
        auto difference = found ? Compare(value, *found, isCut) : ValueDifference{"", ToText(value), "none"};
        if (difference)
        {
            const std::string name = NameOf(value.Name()) + (place == 0 ? "" : " " + std::to_string(place + 1));
            difference->what = difference->what.empty() ? name : name + ", " + difference->what;
            return difference;
        }
    }
    if (CountAttributes(recorded) < CountAttributes(got))
    {
        const auto further = std::ranges::find_if(got, [&](const Value &value) {
            const auto attribute = value.AsAttribute();
            return attribute && !recorded.Attribute(attribute->key);
        });
        if (further != got.end())
        {
            const auto attribute = further->AsAttribute();
            return ValueDifference{"attribute " + tarn_host::GuidText(attribute->key.bytes), "none",
                                   ToText(attribute->value)};
        }
    }
    return std::nullopt;
}

std::string ToText(const Value &value)
{
    if (const auto number = value.Unsigned())
    {
        return std::to_string(*number);
    }
    if (const auto number = value.Signed())
    {
        return std::to_string(*number);
    }
    if (const auto number = value.Real())
    {
        return std::to_string(*number);
    }
    if (const auto guid = value.AsGuid())
    {
        return tarn_host::GuidText(guid->bytes);
    }
    if (const auto text = value.Text())
    {
        return '"' + std::string(*text) + '"';
    }
    if (value.IsNull() || value.Kind() == TARN_KIND_LIST)
    {
        return value.IsNull() ? "none" : "a list";
    }
    std::string text = std::to_string(value.Payload().size()) + " bytes:";
    for (const std::uint8_t byte : value.Payload().first(std::min(value.Payload().size(), kBytesShown)))
    {
        std::array<char, 4> hex{};
        std::snprintf(hex.data(), hex.size(), " %02X", byte);
        text += hex.data();
    }
    return text + (value.Payload().size() > kBytesShown ? " ..." : "");
}

} // namespace tarn_replay
