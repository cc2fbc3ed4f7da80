#include "tools/diagnosis/LogLine.h"

#include <algorithm>
#include <array>

#include "tools/diagnosis/ClockText.h"
#include "tools/diagnosis/MessageText.h"

namespace tarn_host
{

namespace
{

bool EqualsWithoutCase(std::string_view a, std::string_view b) noexcept
{
    const auto lower = [](char letter) { return letter >= 'A' && letter <= 'Z' ? letter - 'A' + 'a' : int{letter}; };
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [&](char x, char y) { return lower(x) == lower(y); });
}

bool TakeLevel(TextScanner &scanner, std::uint32_t &level) noexcept
{
    const std::string_view word = scanner.TakeWord();
    level = word == "error"     ? LogRecord::kErrorLevel
            : word == "info"    ? LogRecord::kInfoLevel
            : word == "verbose" ? LogRecord::kVerboseLevel
                                : 0;
    return level != 0;
}

// Some converters put marks of the writing direction into the date.
std::string WithoutForeignBytes(std::string_view text)
{
    std::string kept;
    std::copy_if(text.begin(), text.end(), std::back_inserter(kept),
                 [](char byte) { return static_cast<unsigned char>(byte) < 0x80; });
    return kept;
}

} // namespace

bool IsOwnProvider(std::string_view nameOrId) noexcept
{
    static constexpr std::array<std::string_view, 6> kOwn{"TARN_DEVICE_MFT",
                                                          "TARN_DEVICE_MFT_WPP",
                                                          "tarn_dmft",
                                                          "{817C90F0-D169-5F8F-A653-7FA53090FFEA}",
                                                          "{C1F3D3B5-0C5B-4A0E-9B57-2E6D5C417AD2}",
                                                          "{5B1E8F6A-7D34-4F0C-A61B-93C80E52641F}"};
    return std::any_of(kOwn.begin(), kOwn.end(),
                       [&](std::string_view own) { return EqualsWithoutCase(own, nameOrId); });
}

bool ReadLogLine(std::string_view line, LogRecord &record)
{
    TextScanner scanner(line);
    unsigned lost = 0;
    if (scanner.Take("(") && scanner.TakeNumber(lost) && scanner.Take(" lines lost)"))
    {
        record = {};
        record.source = "trace";
        record.text = line;
        return true;
    }
    scanner = TextScanner(line);
    record = {};
    if (!TakeTimeOfDay(scanner, record.timeUs))
    {
        return false;
    }
    scanner.SkipBlanks();
    const bool hasProcess = scanner.TakeNumber(record.process);
    scanner.SkipBlanks();
    const bool hasThread = scanner.TakeNumber(record.thread);
    scanner.SkipBlanks();
    if (!hasProcess || !hasThread || !TakeLevel(scanner, record.level))
    {
        return false;
    }
    scanner.SkipBlanks();
    scanner.Take("event ") ? ReadEventText(scanner.Rest(), record) : ReadMessageText(scanner.Rest(), record);
    return true;
}

bool ReadConvertedLine(std::string_view line, LogRecord &record)
{
    record = {};
    std::string_view processor;
    std::string_view head;
    std::string_view provider;
    TextScanner scanner(line);
    if (!scanner.Take("[") || !scanner.TakeUntil("]", processor) || !scanner.TakeNumber(record.process, 16) ||
        !scanner.Take(".") || !scanner.TakeNumber(record.thread, 16) || !scanner.Take("::") ||
        !scanner.TakeUntil("[", head) || !scanner.TakeUntil("]", provider) || !IsOwnProvider(provider))
    {
        return false;
    }
    const std::string clock = WithoutForeignBytes(head);
    TextScanner time(clock);
    std::int64_t dayUs = 0;
    if (!TakeDate(time, dayUs) || !(time.Take("-") || time.Take(" ") || time.Take("T")) ||
        !TakeTimeOfDay(time, record.timeUs))
    {
        return false;
    }
    record.timeUs += dayUs;
    scanner.SkipBlanks();
    if (EqualsWithoutCase(provider, "TARN_DEVICE_MFT"))
    {
        ReadEventText(scanner.Rest(), record);
    }
    else
    {
        ReadClassicMessage(scanner.Rest(), record);
    }
    return true;
}

} // namespace tarn_host
