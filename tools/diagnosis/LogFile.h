// A trace or log, read record by record.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>

#include "tools/diagnosis/LogRecord.h"

namespace tarn_host
{

// Tells the form by what it finds: the module's text log, or a recorded trace that was turned into text or XML, in
// UTF-8 or UTF-16. Damaged and foreign records are skipped and counted. Borrows the stream. Confined.
class LogFile
{
  public:
    // `formerUs` is the time of the last record of the file that was read before, which belongs to the same log.
    explicit LogFile(std::istream &stream, std::int64_t formerUs = 0);

    // False at the end.
    bool Next(LogRecord &record);
    std::uint64_t Skipped() const noexcept
    {
        return skipped;
    }

  private:
    enum class Form : std::uint8_t
    {
        Lines,
        Xml
    };

    bool TakeCharacter(char &character);
    void AppendUtf8(unsigned unit);
    bool TakePiece(char delimiter);
    bool NextLine(LogRecord &record);
    bool NextEvent(LogRecord &record);
    void CompleteTime(LogRecord &record);

    static constexpr std::size_t kLongestPiece = std::size_t{256} * 1024;

    std::istream &input;
    bool isUtf16 = false;
    Form form = Form::Lines;
    std::string piece;
    std::string waiting; // bytes of a character that came from UTF-16
    std::uint64_t skipped = 0;
    std::int64_t dayUs;
    std::int64_t lastTimeOfDayUs;
};

} // namespace tarn_host
