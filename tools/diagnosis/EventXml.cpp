#include "tools/diagnosis/EventXml.h"

#include <array>
#include <optional>

#include "tools/diagnosis/ClockText.h"
#include "tools/diagnosis/LogLine.h"
#include "tools/diagnosis/MessageText.h"

namespace tarn_host
{

namespace
{

// Borrows the document.
struct Element
{
    std::string_view attributes;
    std::string_view content; // raw; empty for one that is closed at once
};

// The first element of that name; takes it and what stands before it off the text.
std::optional<Element> TakeElement(std::string_view &xml, std::string_view name)
{
    for (std::size_t open = xml.find('<'); open != std::string_view::npos; open = xml.find('<', open + 1))
    {
        const std::string_view tag = xml.substr(open + 1);
        const std::size_t end = tag.find('>');
        if (end == std::string_view::npos)
        {
            return std::nullopt;
        }
        if (!tag.starts_with(name) || std::string_view(" \t\r\n/>").find(tag[name.size()]) == std::string_view::npos)
        {
            continue;
        }
        Element element{tag.substr(name.size(), end - name.size()), {}};
        xml = tag.substr(end + 1);
        if (!element.attributes.ends_with('/'))
        {
            const std::string closing = "</" + std::string(name) + ">";
            const std::size_t close = xml.find(closing);
            element.content = xml.substr(0, close);
            xml = close == std::string_view::npos ? std::string_view() : xml.substr(close + closing.size());
        }
        return element;
    }
    return std::nullopt;
}

std::optional<Element> Find(std::string_view xml, std::string_view name)
{
    return TakeElement(xml, name);
}

// Empty when it is not there.
std::string_view Attribute(std::string_view attributes, std::string_view name)
{
    for (const char quote : {'"', '\''})
    {
        const std::string start = std::string(name) + "=" + quote;
        const std::size_t begin = attributes.find(start);
        if (begin != std::string_view::npos)
        {
            const std::string_view value = attributes.substr(begin + start.size());
            return value.substr(0, value.find(quote));
        }
    }
    return {};
}

// Blanks at both ends go: converters add them.
std::string Plain(std::string_view raw)
{
    static constexpr std::array<std::pair<std::string_view, char>, 5> kEntities{
        {{"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}, {"&amp;", '&'}}};
    std::string text;
    for (TextScanner scanner(raw); !scanner.AtEnd();)
    {
        bool found = false;
        for (const auto &[entity, letter] : kEntities)
        {
            if (!found && scanner.Take(entity))
            {
                text += letter;
                found = true;
            }
        }
        if (!found)
        {
            text += scanner.Rest().front();
            scanner.Take(scanner.Rest().substr(0, 1));
        }
    }
    const std::size_t begin = text.find_first_not_of(" \t\r\n");
    return begin == std::string::npos ? std::string()
                                      : text.substr(begin, text.find_last_not_of(" \t\r\n") + 1 - begin);
}

std::string ContentOf(std::string_view xml, std::string_view name)
{
    const auto element = Find(xml, name);
    return element ? Plain(element->content) : std::string();
}

std::uint32_t NumberOf(std::string_view text)
{
    std::uint32_t number = 0;
    TextScanner(text).TakeNumber(number);
    return number;
}

bool ReadSystem(std::string_view system, LogRecord &record)
{
    const auto provider = Find(system, "Provider");
    const auto created = Find(system, "TimeCreated");
    if (!provider || !created ||
        !(IsOwnProvider(Attribute(provider->attributes, "Name")) ||
          IsOwnProvider(Attribute(provider->attributes, "Guid"))))
    {
        return false;
    }
    TextScanner clock(Attribute(created->attributes, "SystemTime"));
    std::int64_t dayUs = 0;
    if (!TakeDate(clock, dayUs) || !clock.Take("T") || !TakeTimeOfDay(clock, record.timeUs))
    {
        return false;
    }
    record.timeUs += dayUs;
    if (const auto execution = Find(system, "Execution"))
    {
        record.process = NumberOf(Attribute(execution->attributes, "ProcessID"));
        record.thread = NumberOf(Attribute(execution->attributes, "ThreadID"));
    }
    const std::uint32_t level = NumberOf(ContentOf(system, "Level"));
    record.level = level == 0 ? LogRecord::kInfoLevel : level;
    const std::uint32_t opcode = NumberOf(ContentOf(system, "Opcode"));
    record.kind = opcode == 1 ? LogRecord::Kind::Start : opcode == 2 ? LogRecord::Kind::Stop : LogRecord::Kind::Event;
    return true;
}

} // namespace

bool ReadXmlEvent(std::string_view xml, LogRecord &record)
{
    record = {};
    const auto system = Find(xml, "System");
    if (!system || !ReadSystem(system->content, record))
    {
        return false;
    }
    if (const auto debug = Find(xml, "DebugData")) // a classic message, whose text was made with the format file
    {
        ReadClassicMessage(ContentOf(debug->content, "Message"), record);
        return true;
    }
    if (const auto rendering = Find(xml, "RenderingInfo"))
    {
        record.source = ContentOf(rendering->content, "EventName");
        record.source = record.source.empty() ? ContentOf(rendering->content, "Task") : record.source;
    }
    std::string_view data = xml;
    while (const auto field = TakeElement(data, "Data"))
    {
        record.fields.emplace_back(Plain(Attribute(field->attributes, "Name")), Plain(field->content));
    }
    return true;
}

} // namespace tarn_host
