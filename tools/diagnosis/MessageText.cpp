#include "tools/diagnosis/MessageText.h"

#include <algorithm>
#include <array>

#include <nlohmann/json.hpp>

#include "tools/diagnosis/ResultsInText.h"
#include "tools/diagnosis/TextScanner.h"

namespace tarn_host
{

namespace
{

bool IsWordCharacter(char letter) noexcept
{
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') || (letter >= '0' && letter <= '9') ||
           letter == '_';
}

// Where the first " Field=" begins: in front of its blank.
std::size_t FirstField(std::string_view text) noexcept
{
    for (std::size_t equals = text.find('='); equals != std::string_view::npos; equals = text.find('=', equals + 1))
    {
        std::size_t begin = equals;
        while (begin > 0 && IsWordCharacter(text[begin - 1]))
        {
            --begin;
        }
        if (begin > 0 && begin < equals && text[begin - 1] == ' ')
        {
            return begin - 1;
        }
    }
    return text.size();
}

// A quoted text ends with the quote that a field or the end follows: it may hold quotes itself.
std::string_view TakeQuoted(TextScanner &scanner)
{
    const std::string_view rest = scanner.Rest();
    for (std::size_t quote = rest.find('"'); quote != std::string_view::npos; quote = rest.find('"', quote + 1))
    {
        if (quote + 1 == rest.size() || FirstField(rest.substr(quote + 1)) == 0)
        {
            scanner.Take(rest.substr(0, quote + 1));
            return rest.substr(0, quote);
        }
    }
    scanner.Take(rest); // the line was cut
    return rest;
}

void ReadFields(TextScanner &scanner, LogRecord &record)
{
    std::string_view name;
    for (scanner.SkipBlanks(); scanner.TakeUntil("=", name); scanner.SkipBlanks())
    {
        const std::string_view value = scanner.Take("\"") ? TakeQuoted(scanner) : scanner.TakeWord();
        record.fields.emplace_back(name, value);
    }
}

bool EndsWithWord(std::string_view &text, std::string_view word) noexcept
{
    const bool ends = text.ends_with(word);
    text.remove_suffix(ends ? word.size() : 0);
    return ends;
}

// Takes " #12" off the end.
void DropActivity(std::string_view &name) noexcept
{
    const std::size_t mark = name.rfind(" #");
    if (mark != std::string_view::npos && name.find_first_not_of("0123456789", mark + 2) == std::string_view::npos)
    {
        name = name.substr(0, mark);
    }
}

// {"SampleTime":1,"meta":{"event":"name"}}. False when it is none.
bool ReadJsonEvent(std::string_view text, LogRecord &record)
{
    const auto event = nlohmann::json::parse(text, nullptr, false);
    const auto meta = event.is_object() ? event.find("meta") : event.end();
    if (!event.is_object() || meta == event.end() || !meta->is_object())
    {
        return false;
    }
    const auto number = [&](const char *name) {
        const auto found = meta->find(name);
        return found != meta->end() && found->is_number_unsigned() ? found->get<std::uint32_t>() : 0;
    };
    const auto name = meta->find("event");
    record.source = name != meta->end() && name->is_string() ? name->get<std::string>() : std::string();
    record.level = number("level") == 0 ? LogRecord::kInfoLevel : number("level");
    record.kind = number("opcode") == 1   ? LogRecord::Kind::Start
                  : number("opcode") == 2 ? LogRecord::Kind::Stop
                                          : LogRecord::Kind::Event;
    for (const auto &[key, value] : event.items())
    {
        if (key != "meta")
        {
            record.fields.emplace_back(key, value.is_string()
                                                ? value.get<std::string>()
                                                : value.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace));
        }
    }
    return true;
}

} // namespace

void ReadMessageText(std::string_view text, LogRecord &record)
{
    record.kind = LogRecord::Kind::Message;
    TextScanner scanner(text);
    if (scanner.Take("==> ") || scanner.Take("<== "))
    {
        record.level = LogRecord::kVerboseLevel;
        record.source = scanner.TakeWord();
        record.text = text;
        return;
    }
    std::string_view function;
    if (!scanner.TakeUntil(": ", function) || function.find(' ') < function.find(" ["))
    {
        record.text = text;
        return;
    }
    const std::size_t bracket = function.rfind(" [");
    if (bracket == std::string_view::npos)
    {
        record.source = function;
    }
    else
    {
        record.source = function.substr(0, bracket);
        TextScanner(function.substr(bracket + 2)).TakeNumber(record.level);
    }
    if (record.source == "mft_utils::ModuleRecord") // an event that this channel can tell as a text only
    {
        ReadEventText(scanner.Rest(), record);
        return;
    }
    record.text = scanner.Rest();
}

void ReadClassicMessage(std::string_view text, LogRecord &record)
{
    ReadMessageText(text, record);
    const std::size_t hr = record.text.rfind(", hr ");
    if (record.kind != LogRecord::Kind::Message || hr == std::string::npos ||
        (record.text.find(" failed, hr ") == std::string::npos && record.text.find(", expected ") == std::string::npos))
    {
        return;
    }
    // Answers of a caller's question for more, which the module takes for information.
    static constexpr std::array<std::uint32_t, 3> kEndOfSupply{0xC00D3E80, 0xC00D6D72, 0xC00D36B9};
    const std::uint32_t result = ResultOf(std::string_view(record.text).substr(hr + 5)).value_or(0);
    const bool isEnd = std::find(kEndOfSupply.begin(), kEndOfSupply.end(), result) != kEndOfSupply.end();
    record.level = isEnd ? LogRecord::kInfoLevel : LogRecord::kErrorLevel;
}

void ReadEventText(std::string_view text, LogRecord &record)
{
    if (text.starts_with('{') && ReadJsonEvent(text, record))
    {
        return;
    }
    std::string_view name = text.substr(0, FirstField(text));
    TextScanner scanner(text.substr(name.size()));
    DropActivity(name);
    record.kind = EndsWithWord(name, " start")  ? LogRecord::Kind::Start
                  : EndsWithWord(name, " stop") ? LogRecord::Kind::Stop
                                                : LogRecord::Kind::Event;
    record.source = name;
    ReadFields(scanner, record);
}

} // namespace tarn_host
