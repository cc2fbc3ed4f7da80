#include "tools/recording/RecordedSession.h"

#include <algorithm>
#include <fstream>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <stdexcept>

#include "tools/recording/RecordingReader.h"

namespace tarn_recording
{

namespace
{
namespace fs = std::filesystem;

constexpr std::uint32_t kNoEnd = std::numeric_limits<std::uint32_t>::max();

std::vector<std::uint8_t> ReadFile(const fs::path &path)
{
    std::error_code error;
    const auto size = fs::file_size(path, error);
    std::ifstream stream(path, std::ios::binary);
    std::vector<std::uint8_t> bytes(error ? 0 : static_cast<std::size_t>(size));
    if (error || !stream || !stream.read(reinterpret_cast<char *>(bytes.data()), static_cast<std::streamsize>(size)))
    {
        throw std::runtime_error("cannot read " + PathText(path));
    }
    return bytes;
}

using PartKey = std::pair<std::uint64_t, std::uint32_t>; // session, part

// Of a file that begins as a recording does.
std::optional<PartKey> PartOf(const fs::path &path)
{
    tarn_recording_header header{};
    std::ifstream stream(path, std::ios::binary);
    if (!stream.read(reinterpret_cast<char *>(&header), sizeof header) || header.magic != TARN_RECORDING_MAGIC)
    {
        return std::nullopt;
    }
    return PartKey{header.sessionId, header.part};
}

// The files, each once, and the other parts of their sessions that stand beside them. Copies of a part are left alone.
std::vector<fs::path> WithFilesBeside(const std::vector<fs::path> &files)
{
    std::vector<fs::path> all;
    std::set<std::uint64_t> sessions;
    std::set<PartKey> parts;
    std::set<fs::path> folders;
    std::set<fs::path> known;
    for (const fs::path &file : files)
    {
        std::error_code ignored;
        if (known.insert(fs::weakly_canonical(file, ignored)).second)
        {
            all.push_back(file);
        }
        if (const auto part = PartOf(file))
        {
            sessions.insert(part->first);
            parts.insert(*part);
            folders.insert(file.has_parent_path() ? file.parent_path() : fs::path("."));
        }
    }
    for (const fs::path &folder : folders)
    {
        std::error_code error;
        for (fs::directory_iterator at(folder, error), end; !error && at != end; at.increment(error))
        {
            std::error_code ignored;
            const bool isCandidate = at->path().extension() == ".bin" && at->is_regular_file(ignored);
            const auto part = isCandidate ? PartOf(at->path()) : std::nullopt;
            if (part && sessions.contains(part->first) && parts.insert(*part).second)
            {
                all.push_back(at->path());
            }
        }
    }
    return all;
}

bool IsEnd(const Record &record) noexcept
{
    return record.header.type == TARN_RECORD_RETURN || record.header.type == TARN_RECORD_KS_RETURN;
}

bool IsEndOf(const Record &record, const Record &call) noexcept
{
    return record.header.type == (call.header.type == TARN_RECORD_CALL ? TARN_RECORD_RETURN : TARN_RECORD_KS_RETURN) &&
           (call.header.type == TARN_RECORD_CALL || call.header.type == TARN_RECORD_KS_CALL);
}
} // namespace

std::string PathText(const fs::path &path)
{
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

fs::path PathOf(const std::string &utf8)
{
    return fs::path(std::u8string(utf8.begin(), utf8.end()));
}

RecordedSession::Part RecordedSession::ReadPart(fs::path path, std::vector<std::uint8_t> bytes)
{
    Part part;
    part.bytes = std::make_shared<const std::vector<std::uint8_t>>(std::move(bytes));
    const RecordingReader reader(*part.bytes);
    part.file = {std::move(path), reader.Header(), part.bytes->size()};
    part.records = reader.Records();
    part.damages = reader.Damages();
    for (Damage &damage : part.damages)
    {
        damage.file = PathText(part.file.path);
    }
    if (!reader.IsRecording())
    {
        part.file.header = {};
    }
    return part;
}

std::vector<RecordedSession> RecordedSession::Open(const std::vector<fs::path> &files)
{
    std::map<std::uint64_t, std::vector<Part>> bySession;
    std::vector<RecordedSession> sessions;
    for (const fs::path &file : WithFilesBeside(files))
    {
        Part part = ReadPart(file, ReadFile(file));
        const std::uint64_t id = part.file.header.sessionId;
        // Without a header nothing tells to what it belongs.
        if (part.file.header.magic != TARN_RECORDING_MAGIC)
        {
            sessions.push_back(Of({std::move(part)}));
            continue;
        }
        bySession[id].push_back(std::move(part));
    }
    for (auto &[id, parts] : bySession)
    {
        sessions.push_back(Of(std::move(parts)));
    }
    std::ranges::stable_sort(sessions, {},
                             [](const RecordedSession &one) { return one.files.front().header.startTime; });
    return sessions;
}

RecordedSession RecordedSession::FromBytes(std::vector<std::vector<std::uint8_t>> parts)
{
    std::vector<Part> read;
    read.reserve(parts.size());
    for (auto &bytes : parts)
    {
        read.push_back(ReadPart({}, std::move(bytes)));
    }
    return Of(std::move(read));
}

RecordedSession RecordedSession::Of(std::vector<Part> parts)
{
    RecordedSession session;
    std::ranges::stable_sort(parts, {}, [](const Part &part) { return part.file.header.part; });
    for (Part &part : parts)
    {
        session.files.push_back(std::move(part.file));
        session.contents.push_back(std::move(part.bytes));
        std::ranges::copy(part.records, std::back_inserter(session.records));
        std::ranges::copy(part.damages, std::back_inserter(session.damages));
    }
    session.NameMissingParts();
    session.Join();
    session.NameMissingRecords();
    return session;
}

void RecordedSession::NameMissingParts()
{
    constexpr std::uint32_t most = 16;
    for (std::size_t i = 1; i < files.size(); ++i)
    {
        const std::uint32_t before = files[i - 1].header.part;
        for (std::uint32_t part = before; part < files[i].header.part && part - before < most; ++part)
        {
            if (part != before)
            {
                damages.push_back({DamageKind::MissingPart, part, 0, PathText(files[i].path)});
            }
        }
    }
}

void RecordedSession::Join()
{
    const auto sequence = [](const Record &record) { return record.header.sequence; };
    std::ranges::stable_sort(records, {}, sequence);
    const auto again = std::unique(records.begin(), records.end(), [&](const Record &before, const Record &after) {
        return sequence(before) == sequence(after);
    });
    if (again != records.end())
    {
        const auto count = static_cast<std::uint64_t>(records.end() - again);
        damages.push_back({DamageKind::Doubled, again->offset, count, PathText(files.front().path)});
        records.erase(again, records.end());
    }
    ends.assign(records.size(), kNoEnd);
    for (std::size_t i = 0; i < records.size(); ++i)
    {
        const Record *const call = IsEnd(records[i]) ? Find(records[i].header.entry) : nullptr;
        if (call != nullptr && IsEndOf(records[i], *call))
        {
            ends[static_cast<std::size_t>(call - records.data())] = static_cast<std::uint32_t>(i);
        }
    }
}

// Where the numbers have a gap without any other damage. A file that was prepared and not needed takes one number.
void RecordedSession::NameMissingRecords()
{
    if (records.empty() || !damages.empty())
    {
        return;
    }
    const std::uint64_t first = records.front().header.sequence;
    const std::uint64_t missing = records.back().header.sequence - first + 1 - records.size();
    if (missing <= DroppedRecords() + 1)
    {
        return;
    }
    std::size_t before = 0;
    while (records[before + 1].header.sequence == first + before + 1)
    {
        ++before;
    }
    damages.push_back(
        {DamageKind::MissingRecords, records[before].header.sequence, missing, PathText(files.front().path)});
}

std::uint64_t RecordedSession::DroppedRecords() const noexcept
{
    std::uint64_t dropped = 0;
    for (const File &file : files)
    {
        dropped += file.header.droppedRecords;
    }
    return dropped;
}

std::uint64_t RecordedSession::Id() const noexcept
{
    return files.front().header.sessionId;
}

bool RecordedSession::HoldsPictures() const noexcept
{
    return std::ranges::any_of(
        files, [](const File &file) { return (file.header.flags & TARN_RECORDING_HOLDS_PICTURES) != 0; });
}

const Record *RecordedSession::Find(std::uint64_t number) const noexcept
{
    const auto found =
        std::ranges::lower_bound(records, number, {}, [](const Record &record) { return record.header.sequence; });
    return found != records.end() && found->header.sequence == number ? &*found : nullptr;
}

const Record *RecordedSession::EndOf(const Record &call) const noexcept
{
    const std::uint32_t end = ends[static_cast<std::size_t>(&call - records.data())];
    return end == kNoEnd ? nullptr : &records[end];
}

} // namespace tarn_recording
