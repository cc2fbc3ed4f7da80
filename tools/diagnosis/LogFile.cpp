#include "tools/diagnosis/LogFile.h"

#include <istream>

#include "tools/diagnosis/ClockText.h"
#include "tools/diagnosis/EventXml.h"
#include "tools/diagnosis/LogLine.h"

namespace tarn_host
{

LogFile::LogFile(std::istream &stream, std::int64_t formerUs)
    : input(stream), dayUs(formerUs - formerUs % kUsPerDay), lastTimeOfDayUs(formerUs % kUsPerDay)
{
    if (input.peek() == 0xFF)
    {
        isUtf16 = true;
        input.ignore(2);
    }
    else if (input.peek() == 0xEF)
    {
        input.ignore(3);
    }
    char first = '\n';
    while (first == ' ' || first == '\r' || first == '\n')
    {
        if (!TakeCharacter(first))
        {
            return;
        }
    }
    form = first == '<' ? Form::Xml : Form::Lines;
    waiting.insert(waiting.begin(), first);
}

bool LogFile::Next(LogRecord &record)
{
    return form == Form::Xml ? NextEvent(record) : NextLine(record);
}

bool LogFile::TakeCharacter(char &character)
{
    if (waiting.empty())
    {
        const int low = input.get();
        if (low == std::istream::traits_type::eof())
        {
            return false;
        }
        if (!isUtf16)
        {
            character = static_cast<char>(low);
            return true;
        }
        const int high = input.get();
        if (high == std::istream::traits_type::eof())
        {
            return false;
        }
        AppendUtf8(static_cast<unsigned>(high << 8 | low));
    }
    character = waiting.front();
    waiting.erase(waiting.begin());
    return true;
}

// Halves of a pair are taken as they come: no such character counts here.
void LogFile::AppendUtf8(unsigned unit)
{
    if (unit < 0x80)
    {
        waiting += static_cast<char>(unit);
        return;
    }
    if (unit >= 0x800)
    {
        waiting += static_cast<char>(0xE0 | unit >> 12);
        waiting += static_cast<char>(0x80 | (unit >> 6 & 0x3F));
    }
    else
    {
        waiting += static_cast<char>(0xC0 | unit >> 6);
    }
    waiting += static_cast<char>(0x80 | (unit & 0x3F));
}

// What is too long is cut. False when nothing is left.
bool LogFile::TakePiece(char delimiter)
{
    piece.clear();
    bool any = false;
    for (char character = 0; TakeCharacter(character);)
    {
        any = true;
        if (piece.size() < kLongestPiece)
        {
            piece += character;
        }
        if (character == delimiter)
        {
            break;
        }
    }
    return any;
}

bool LogFile::NextLine(LogRecord &record)
{
    while (TakePiece('\n'))
    {
        const std::string_view line = std::string_view(piece).substr(0, piece.find_last_not_of("\r\n") + 1);
        if (line.empty())
        {
            continue;
        }
        if (ReadConvertedLine(line, record))
        {
            return true;
        }
        if (ReadLogLine(line, record))
        {
            CompleteTime(record);
            return true;
        }
        ++skipped;
    }
    return false;
}

bool LogFile::NextEvent(LogRecord &record)
{
    std::string event;
    while (TakePiece('>'))
    {
        const std::size_t open = piece.rfind('<');
        const std::string_view tag =
            open == std::string::npos ? std::string_view() : std::string_view(piece).substr(open);
        if (tag == "<Event>" || tag.starts_with("<Event ") || tag.starts_with("<Event\n"))
        {
            skipped += event.empty() ? 0 : 1; // one that has no end
            event = tag;
        }
        else if (!event.empty() && event.size() < kLongestPiece)
        {
            event += piece;
        }
        if (tag == "</Event>" && !event.empty())
        {
            if (ReadXmlEvent(event, record))
            {
                return true;
            }
            ++skipped;
            event.clear();
        }
    }
    skipped += event.empty() ? 0 : 1;
    return false;
}

// The module's lines tell the time of day, and each of its own records the day.
void LogFile::CompleteTime(LogRecord &record)
{
    if (record.source == "trace")
    {
        record.timeUs = dayUs + lastTimeOfDayUs;
        return;
    }
    std::int64_t toldUs = 0;
    TextScanner date(record.source == "Module" ? record.Field("Date") : std::string_view());
    if (TakeDate(date, toldUs))
    {
        dayUs = toldUs;
    }
    else if (record.timeUs + kUsPerDay / 2 < lastTimeOfDayUs) // midnight; small steps back are two threads
    {
        dayUs += kUsPerDay;
    }
    lastTimeOfDayUs = record.timeUs;
    record.timeUs += dayUs;
}

} // namespace tarn_host
