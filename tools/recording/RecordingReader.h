// Reads one file of a recorded session, however damaged it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/recording/Damage.h"
#include "tools/recording/Record.h"

namespace tarn_recording
{

// Finds every whole record in the file and names what is none. Takes time and memory in proportion to the file's size,
// whatever is in it. Immutable.
class RecordingReader
{
  public:
    // `fileBytes` outlive the reader and its records.
    explicit RecordingReader(Bytes fileBytes);

    // False when there is neither a file header nor a record.
    bool IsRecording() const noexcept
    {
        return isRecording;
    }
    // As it stands in the file, with zeros where the file ends early.
    const tarn_recording_header &Header() const noexcept
    {
        return header;
    }
    // In the order of the file.
    const std::vector<Record> &Records() const noexcept
    {
        return records;
    }
    const std::vector<Damage> &Damages() const noexcept
    {
        return damages;
    }

  private:
    std::size_t ReadHeader();
    void ReadRecords(std::size_t at);
    std::optional<Record> WholeRecordAt(std::size_t at) const noexcept;
    std::size_t SkipZeros(std::size_t at) const noexcept;
    std::size_t FindWholeRecord(std::size_t at);
    void NameBytesBetween(std::size_t at, std::size_t next);
    std::size_t LengthAt(std::size_t at) const noexcept;
    std::optional<std::vector<std::size_t>> TornRecords(std::size_t begin, std::size_t next) const;
    void Name(DamageKind kind, std::size_t offset, std::size_t count);

    const Bytes bytes;
    tarn_recording_header header{};
    bool isRecording = false;
    std::size_t searchBudget; // bytes of which checksums may still be made while searching
    std::vector<Record> records;
    std::vector<Damage> damages;
};

// Of a zero-terminated field; what cannot be printed as '?'.
std::string FieldText(std::span<const char> field);

} // namespace tarn_recording
