// A recorded session: the records of all its files in one order, each call joined with its end.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tools/recording/Damage.h"
#include "tools/recording/Record.h"

namespace tarn_recording
{

// Records and values are views into it. Immutable; any thread.
class RecordedSession
{
  public:
    struct File
    {
        std::filesystem::path path; // empty where it came from memory
        tarn_recording_header header{};
        std::size_t size = 0;
    };

    // The files' sessions in the order of their start, each with the parts that stand beside the named files. Throws
    // std::runtime_error with a one-line text for a file that cannot be read. A file that is no recording becomes a
    // session without records, whose damage says so.
    static std::vector<RecordedSession> Open(const std::vector<std::filesystem::path> &files);
    // Of one session, from memory.
    static RecordedSession FromBytes(std::vector<std::vector<std::uint8_t>> parts);

    std::uint64_t Id() const noexcept;
    // By part. Never empty.
    const std::vector<File> &Files() const noexcept
    {
        return files;
    }
    // By sequence number.
    const std::vector<Record> &Records() const noexcept
    {
        return records;
    }
    const std::vector<Damage> &Damages() const noexcept
    {
        return damages;
    }
    bool HoldsPictures() const noexcept;
    // Not recorded for want of room or memory.
    std::uint64_t DroppedRecords() const noexcept;
    // Null when there is no record of that number.
    const Record *Find(std::uint64_t sequence) const noexcept;
    // The return of a call, application's or KS; null when it never came. `call` is one of Records().
    const Record *EndOf(const Record &call) const noexcept;

  private:
    struct Part
    {
        File file;
        std::shared_ptr<const std::vector<std::uint8_t>> bytes;
        std::vector<Record> records;
        std::vector<Damage> damages;
    };

    RecordedSession() = default;
    static Part ReadPart(std::filesystem::path path, std::vector<std::uint8_t> bytes);
    static RecordedSession Of(std::vector<Part> parts);
    void Join();
    void NameMissingParts();
    void NameMissingRecords();

    std::vector<File> files;
    std::vector<std::shared_ptr<const std::vector<std::uint8_t>>> contents;
    std::vector<Record> records;
    std::vector<std::uint32_t> ends; // per record the index of its end, or kNoEnd
    std::vector<Damage> damages;
};

// UTF-8 on every platform.
std::string PathText(const std::filesystem::path &path);
std::filesystem::path PathOf(const std::string &utf8);

} // namespace tarn_recording
