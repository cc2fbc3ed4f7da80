#include "tools/events/RecordText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

#include "tools/names/Format.h"
#include "tools/names/PipelineNames.h"
#include "tools/names/ResultNames.h"

namespace tarn_host
{

namespace
{
using Json = nlohmann::ordered_json;

constexpr std::size_t kBytesShown = 32;
constexpr std::size_t kMembersShown = 500; // of a list; no recorder writes that many

// By TARN_VALUE_..., from 1.
constexpr auto kValueNames = std::to_array<const char *>(
    {"stream",     "index",     "type",        "attributes", "state",    "flags",   "message",    "parameter",
     "count",      "sample",    "number",      "time",       "duration", "length",  "buffer",     "status",
     "event",      "extended",  "eventStatus", "eventValue", "request",  "data",    "dataLength", "returned",
     "fullLength", "set",       "id",          "hash",       "pixels",   "class",   "name",       "module",
     "process",    "workQueue", "priority",    "taskClass",  "usage",    "records", "bytes",      "nodeType",
     "object",     "blanked",   "streams",     "noOut",      "address"});

std::string NameOf(std::uint16_t name)
{
    return name == 0 ? "item" : name <= kValueNames.size() ? kValueNames[name - 1U] : "value" + std::to_string(name);
}

std::string Hex(Bytes bytes)
{
    std::string text;
    for (const std::uint8_t byte : bytes.first(std::min(bytes.size(), kBytesShown)))
    {
        text += Format("%02X", byte);
    }
    return bytes.size() <= kBytesShown ? text : text + Format("... %zu bytes", bytes.size());
}

// A text from a file: nothing that moves the cursor or is no UTF-8 gets through.
std::string Printable(std::string_view from)
{
    std::string text(from.substr(0, 512));
    std::ranges::replace_if(
        text, [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 0x7F; }, '?');
    return Json(text).dump(-1, ' ', true, Json::error_handler_t::replace);
}

// What the number means, where its name tells.
std::string NumberText(std::uint16_t name, std::uint64_t number)
{
    const auto small = static_cast<std::uint32_t>(number);
    switch (name)
    {
    case TARN_VALUE_STATE:
        return StreamStateText(small);
    case TARN_VALUE_MESSAGE:
        return MessageText(small);
    case TARN_VALUE_EVENT_TYPE:
        return EventTypeText(small);
    case TARN_VALUE_EVENT_STATUS:
        return small == 0 ? "S_OK" : ResultText(small);
    case TARN_VALUE_FLAGS:
    case TARN_VALUE_STATUS:
    case TARN_VALUE_HASH:
    case TARN_VALUE_ADDRESS:
        return Format("0x%llX", static_cast<unsigned long long>(number));
    default:
        return std::to_string(number);
    }
}

std::string SampleText(const Value &value)
{
    if (value.IsNull())
    {
        return "none";
    }
    const SampleView sample = SampleView::Of(value.Items());
    std::string text = Format("#%llu", static_cast<unsigned long long>(sample.number));
    if (sample.time)
    {
        text += Format(" at %.4f ms", static_cast<double>(*sample.time) / 1e4);
    }
    text += Format(", %llu bytes", static_cast<unsigned long long>(sample.length));
    return sample.isBlanked ? text + ", blanked for privacy" : text;
}

std::string ValueText(const Value &value);

std::string AttributeText(const tarn_recording::Attribute &attribute)
{
    const std::string key = GuidText(attribute.key.bytes);
    if (const auto guid = attribute.value.AsGuid(); guid && key == "MF_MT_SUBTYPE")
    {
        return key + "=" + SubtypeText(guid->bytes);
    }
    const auto number = attribute.value.Unsigned();
    const bool isPair = attribute.value.Kind() == TARN_KIND_U64 &&
                        (key.starts_with("MF_MT_FRAME_") || key == "MF_MT_PIXEL_ASPECT_RATIO");
    if (number && isPair)
    {
        return key + Format(key == "MF_MT_FRAME_SIZE" ? "=%lux%lu" : "=%lu/%lu",
                            static_cast<unsigned long>(*number >> 32),
                            static_cast<unsigned long>(*number & 0xFFFFFFFF));
    }
    return key + "=" + ValueText(attribute.value);
}

std::string ValueText(const Value &value)
{
    if (value.Name() == TARN_VALUE_SAMPLE)
    {
        return SampleText(value);
    }
    if (value.Name() == TARN_VALUE_MEDIA_TYPE && value.Kind() == TARN_KIND_LIST)
    {
        return TypeView::Of(value.Items()).ToText();
    }
    if (const auto number = value.Unsigned())
    {
        return NumberText(value.Name(), *number);
    }
    if (const auto number = value.Signed())
    {
        const bool isTime = value.Name() == TARN_VALUE_TIME || value.Name() == TARN_VALUE_DURATION;
        return isTime ? Format("%.4f ms", static_cast<double>(*number) / 1e4) : std::to_string(*number);
    }
    if (const auto real = value.Real())
    {
        return Format("%g", *real);
    }
    if (const auto guid = value.AsGuid())
    {
        return GuidText(guid->bytes);
    }
    if (const auto text = value.Text())
    {
        return Printable(*text);
    }
    if (const auto attribute = value.AsAttribute())
    {
        return AttributeText(*attribute);
    }
    switch (value.Kind())
    {
    case TARN_KIND_NULL:
        return "null";
    case TARN_KIND_OBJECT:
        return "object";
    case TARN_KIND_LIST:
        return "{" + ValuesText(value.Items()) + "}";
    default:
        return Hex(value.Payload());
    }
}

Json ValueJson(const Value &value);

Json ListJson(const ValueList &list)
{
    Json json = Json::object();
    std::size_t left = kMembersShown;
    for (const Value &value : list)
    {
        if (left-- == 0)
        {
            break;
        }
        if (const auto attribute = value.AsAttribute())
        {
            json[GuidText(attribute->key.bytes)] = ValueJson(attribute->value);
            continue;
        }
        const std::string name = NameOf(value.Name());
        const auto before = json.find(name);
        if (before == json.end())
        {
            json[name] = ValueJson(value);
        }
        else
        {
            // A name that comes again makes an array of it.
            if (!before->is_array())
            {
                *before = Json::array({*before});
            }
            before->push_back(ValueJson(value));
        }
    }
    return json;
}

Json ValueJson(const Value &value)
{
    if (value.Kind() == TARN_KIND_LIST)
    {
        return ListJson(value.Items());
    }
    if (value.IsNull())
    {
        return nullptr;
    }
    // Numbers of 64 bits do not fit the doubles of every reader.
    if (const auto number = value.Unsigned(); number && ValueText(value) == std::to_string(*number))
    {
        return value.Kind() == TARN_KIND_U32 ? Json(*number) : Json(std::to_string(*number));
    }
    if (const auto number = value.Signed())
    {
        return std::to_string(*number);
    }
    if (const auto real = value.Real())
    {
        return *real;
    }
    if (const auto text = value.Text())
    {
        return std::string(*text);
    }
    return ValueText(value);
}

std::string WithoutRequest(const ValueList &values)
{
    std::string text;
    for (const Value &value : values)
    {
        if (value.Name() != TARN_VALUE_REQUEST)
        {
            text += (text.empty() ? "" : ", ") + NameOf(value.Name()) + " " + ValueText(value);
        }
    }
    return text;
}
} // namespace

std::string EndText(const Record &end)
{
    return end.header.result == 0 ? "S_OK" : ResultText(static_cast<std::uint32_t>(end.header.result));
}

std::string ValueNameText(const Value &value)
{
    const auto attribute = value.AsAttribute();
    return attribute ? GuidText(attribute->key.bytes) : NameOf(value.Name());
}

std::string KsText(const RecordedSession &session, const Record &record)
{
    constexpr std::array<const char *, 4> kinds{"KsEvent", "KsProperty", "KsMethod", "Ks"};
    const std::uint16_t kind = record.header.subject & TARN_KS_KIND;
    const std::string name = std::string(kinds[kind]) + " ";
    const Record *const call = record.header.type == TARN_RECORD_KS_CALL ? &record : session.Find(record.header.entry);
    if (call == nullptr)
    {
        return name + "of a call that was not recorded";
    }
    if (const auto request = KsRequestView::Of(*call))
    {
        return name + request->ToText();
    }
    // A subscription to an event ends with a call that has its data block only.
    return name + (kind == TARN_KS_EVENT ? "disable" : "with an identifier that is too short");
}

std::string ValuesText(const ValueList &values)
{
    std::string text;
    std::size_t left = kMembersShown;
    for (const Value &value : values)
    {
        if (left-- == 0)
        {
            return text + ", ...";
        }
        text += text.empty() ? "" : ", ";
        text += value.Kind() == TARN_KIND_ATTRIBUTE ? ValueText(value) : NameOf(value.Name()) + " " + ValueText(value);
    }
    return text;
}

std::string SubjectText(const RecordedSession &session, const Record &record)
{
    switch (record.header.type)
    {
    case TARN_RECORD_CALL:
    case TARN_RECORD_RETURN:
        return CallText(record.header.subject);
    case TARN_RECORD_KS_CALL:
    case TARN_RECORD_KS_RETURN:
        return ((record.header.subject & TARN_KS_TO_CAMERA) != 0 ? "camera: " : "") + KsText(session, record);
    case TARN_RECORD_EVENT: {
        const auto extended = record.Values().Find(TARN_VALUE_EXTENDED_TYPE);
        const auto guid = extended ? extended->AsGuid() : std::nullopt;
        return EventTypeText(static_cast<std::uint32_t>(record.Values().Unsigned(TARN_VALUE_EVENT_TYPE).value_or(0))) +
               (guid ? " " + GuidText(guid->bytes) : "");
    }
    case TARN_RECORD_DEVICE_EVENT: {
        const auto set = record.Values().Find(TARN_VALUE_SET);
        const Guid guid = set ? set->AsGuid().value_or(Guid{}) : Guid{};
        return GuidText(guid.bytes) + " " +
               KsIdText(TARN_KS_EVENT, guid.bytes,
                        static_cast<std::uint32_t>(record.Values().Unsigned(TARN_VALUE_ID).value_or(0)));
    }
    default:
        return "";
    }
}

std::string CallLine(const RecordedSession &session, const Record &call)
{
    const std::string values = WithoutRequest(call.Values());
    return SubjectText(session, call) + (values.empty() ? "" : "  " + values);
}

std::string RecordText(const RecordedSession &session, const Record &record)
{
    const std::string subject = SubjectText(session, record);
    const std::string values = WithoutRequest(record.Values());
    const std::string behind = values.empty() ? "" : "  " + values;
    switch (record.header.type)
    {
    case TARN_RECORD_CALL:
    case TARN_RECORD_KS_CALL:
        return CallLine(session, record) + (session.EndOf(record) == nullptr ? "  (never returned)" : "");
    case TARN_RECORD_RETURN:
    case TARN_RECORD_KS_RETURN: {
        const Record *const call = session.Find(record.header.entry);
        const std::string took =
            call != nullptr ? Format(" after %.3f ms", Milliseconds(Between(call->header.clock, record.header.clock)))
                            : "";
        return "  " + subject + " = " + EndText(record) + took + behind;
    }
    case TARN_RECORD_EVENT:
        return "event: " + behind.substr(std::min<std::size_t>(behind.size(), 2));
    case TARN_RECORD_DEVICE_EVENT:
        return "device event: " + subject;
    case TARN_RECORD_CHANGE:
        return "change: " + ChangeText(record.header.subject) + behind;
    case TARN_RECORD_TRANSFORM:
        return (record.header.subject != 0 ? "transform created" : "transform released") + behind;
    default:
        return RecordTypeText(record.header.type) + behind;
    }
}

Json RecordJson(const RecordedSession &session, const Record &record)
{
    const tarn_record_header &header = record.header;
    Json json{{"sequence", header.sequence},
              {"type", RecordTypeText(header.type)},
              {"timeMs", Milliseconds(Between(session.Files().front().header.startClock, header.clock))},
              {"thread", header.thread},
              {"transform", header.transform}};
    if (const std::string subject = SubjectText(session, record); !subject.empty())
    {
        json["subject"] = subject;
    }
    if (header.entry != 0)
    {
        json["entry"] = header.entry;
    }
    if (header.type == TARN_RECORD_RETURN || header.type == TARN_RECORD_KS_RETURN)
    {
        json["result"] = EndText(record);
    }
    json["values"] = ListJson(record.Values());
    return json;
}

} // namespace tarn_host
