#include "tools/recording/RecordingReader.h"

#include <algorithm>
#include <cstring>

#include "base/Crc32.h"

namespace tarn_recording
{

namespace
{
constexpr std::size_t kHead = sizeof(tarn_record_header);
constexpr std::size_t kBehindChecksum = 8;
constexpr std::uint16_t kLikelyTypes = 0xFF; // types that a search believes in
constexpr std::size_t kMostDamages = 1000;

std::size_t Padded(std::size_t length) noexcept
{
    return (length + 7) / 8 * 8;
}
} // namespace

RecordingReader::RecordingReader(Bytes fileBytes) : bytes(fileBytes), searchBudget(4 * fileBytes.size() + 0x100000)
{
    const std::size_t first = ReadHeader();
    if (isRecording)
    {
        ReadRecords(first);
    }
}

// Where the first record stands.
std::size_t RecordingReader::ReadHeader()
{
    if (!bytes.empty())
    {
        std::memcpy(&header, bytes.data(), std::min(bytes.size(), sizeof header));
    }
    const bool holds = bytes.size() >= sizeof header && header.magic == TARN_RECORDING_MAGIC;
    isRecording = holds || WholeRecordAt(sizeof header);
    if (!isRecording)
    {
        Name(DamageKind::NoRecording, 0, bytes.size());
        return 0;
    }
    const bool knowsFirst =
        header.headerBytes >= sizeof header && header.headerBytes % 8 == 0 && header.headerBytes <= bytes.size();
    if (!holds || !knowsFirst)
    {
        Name(DamageKind::Header, 0, sizeof header);
    }
    else if (header.version != TARN_RECORDING_VERSION)
    {
        Name(DamageKind::Version, 0, sizeof header);
    }
    return holds && knowsFirst ? header.headerBytes : sizeof header;
}

void RecordingReader::ReadRecords(std::size_t at)
{
    for (;;)
    {
        const std::size_t begin = SkipZeros(at);
        if (begin >= bytes.size())
        {
            break;
        }
        const auto record = WholeRecordAt(begin);
        const std::size_t next = record ? begin : FindWholeRecord(begin + 8);
        NameBytesBetween(at, next);
        at = next;
        if (record)
        {
            if (!record->Values().IsWhole())
            {
                Name(DamageKind::Values, begin, record->header.length);
            }
            records.push_back(*record);
            at = std::min(begin + Padded(record->header.length), bytes.size());
        }
    }
    if ((header.flags & TARN_RECORDING_CLOSED) != 0 && header.magic == TARN_RECORDING_MAGIC && header.usedBytes > at)
    {
        Name(DamageKind::MissingEnd, at, header.usedBytes - at);
    }
}

std::optional<Record> RecordingReader::WholeRecordAt(std::size_t at) const noexcept
{
    if (at > bytes.size() || bytes.size() - at < kHead)
    {
        return std::nullopt;
    }
    Record record;
    std::memcpy(&record.header, bytes.data() + at, kHead);
    const std::size_t length = record.header.length;
    if (length < kHead || length > bytes.size() - at ||
        user_space_frameworks::Crc32(bytes.subspan(at + kBehindChecksum, length - kBehindChecksum)) !=
            record.header.checksum)
    {
        return std::nullopt;
    }
    record.body = bytes.subspan(at + kHead, length - kHead);
    record.offset = at;
    return record;
}

std::size_t RecordingReader::SkipZeros(std::size_t at) const noexcept
{
    while (bytes.size() - at >= 8)
    {
        std::uint64_t word = 0;
        std::memcpy(&word, bytes.data() + at, sizeof word);
        if (word != 0)
        {
            return at;
        }
        at += 8;
    }
    const auto rest = bytes.subspan(at);
    return std::ranges::all_of(rest, [](std::uint8_t byte) { return byte == 0; }) ? bytes.size() : at;
}

// The end of the file when there is none. Only what looks like a header costs a checksum.
std::size_t RecordingReader::FindWholeRecord(std::size_t at)
{
    for (; at < bytes.size() && bytes.size() - at >= kHead; at += 8)
    {
        tarn_record_header candidate;
        std::memcpy(&candidate, bytes.data() + at, kHead);
        if (candidate.length < kHead || candidate.length > bytes.size() - at || candidate.type == 0 ||
            candidate.type > kLikelyTypes || candidate.sequence == 0)
        {
            continue;
        }
        if (candidate.length > searchBudget)
        {
            Name(DamageKind::SearchGivenUp, at, bytes.size() - at);
            break;
        }
        searchBudget -= candidate.length;
        if (WholeRecordAt(at))
        {
            return at;
        }
    }
    return bytes.size();
}

void RecordingReader::NameBytesBetween(std::size_t at, std::size_t next)
{
    if (at >= next)
    {
        return;
    }
    const std::size_t begin = std::min(SkipZeros(at), next);
    if (begin != at)
    {
        Name(DamageKind::LostBytes, at, begin - at);
    }
    if (next == bytes.size() && LengthAt(begin) > next - begin)
    {
        Name(DamageKind::CutRecord, begin, next - begin);
    }
    else if (const auto torn = TornRecords(begin, next))
    {
        for (const std::size_t one : *torn)
        {
            Name(DamageKind::TornRecord, one, LengthAt(one));
        }
    }
    else
    {
        Name(DamageKind::LostBytes, begin, next - begin);
    }
}

std::size_t RecordingReader::LengthAt(std::size_t at) const noexcept
{
    std::uint32_t length = 0;
    std::memcpy(&length, bytes.data() + at, std::min(sizeof length, bytes.size() - at));
    return length;
}

// Where their lengths lead from one to the next, and from the last to `next` or to nothing but zeros.
std::optional<std::vector<std::size_t>> RecordingReader::TornRecords(std::size_t begin, std::size_t next) const
{
    std::vector<std::size_t> torn;
    for (std::size_t at = begin; at < next && SkipZeros(at) < bytes.size();)
    {
        const std::size_t length = LengthAt(at);
        if (length < kHead || length > next - at)
        {
            return std::nullopt;
        }
        torn.push_back(at);
        at = std::min(at + Padded(length), next);
    }
    return torn;
}

// A file of nothing but damage shall not fill the memory with its names.
void RecordingReader::Name(DamageKind kind, std::size_t offset, std::size_t count)
{
    if (damages.size() < kMostDamages)
    {
        damages.push_back({kind, offset, count, {}});
    }
}

std::string FieldText(std::span<const char> field)
{
    std::string text(field.begin(), std::ranges::find(field, '\0'));
    std::ranges::replace_if(
        text, [](char c) { return c < ' ' || c > '~'; }, '?');
    return text;
}

} // namespace tarn_recording
