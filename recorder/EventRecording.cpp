#include "recorder/EventRecording.h"

#include <cstring>
#include <mutex>
#include <utility>

#include "base/Crc32.h"
#include "recorder/RecordingClock.h"
#include "recorder/SessionDescription.h"
#include "trace/Guard.h"

namespace mft_der
{

using user_space_frameworks::Crc32;
using user_space_frameworks::UniqueHandle;

namespace
{
constexpr std::uint64_t kAlignment = 8;
constexpr std::size_t kChecksumEnd = offsetof(tarn_record_header, type);

std::uint64_t Padded(std::uint64_t length)
{
    return (length + kAlignment - 1) / kAlignment * kAlignment;
}

std::uint64_t LengthOf(std::span<const std::uint8_t> record, std::span<const Bytes> pieces)
{
    std::uint64_t length = record.size();
    for (const Bytes &piece : pieces)
    {
        length += piece.size();
    }
    return length;
}

void WriteHead(RecordBuilder &values, const RecordHead &head, std::uint64_t length, std::uint64_t sequence)
{
    const tarn_record_header header{static_cast<std::uint32_t>(length),
                                    0,
                                    head.type,
                                    head.subject,
                                    head.transform,
                                    sequence,
                                    RecordingClock(),
                                    GetCurrentThreadId(),
                                    head.result,
                                    head.entry};
    std::memcpy(values.Record().data(), &header, sizeof(header));
}
} // namespace

std::unique_ptr<EventRecording> EventRecording::Open(RecordingFolder &folder, RecordingSession &session,
                                                     const RecordingLimits &limits)
{
    std::unique_ptr<EventRecording> recording(new EventRecording(folder, session, limits));
    if (!recording->Begin())
    {
        TRACE_ERROR("nothing is recorded: the folder cannot be written, error %lu", GetLastError());
        return nullptr;
    }
    return recording;
}

EventRecording::EventRecording(RecordingFolder &recordingFolder, RecordingSession &recordedSession,
                               const RecordingLimits &recordingLimits)
    : folder(recordingFolder), limits(recordingLimits), lastSequence(recordedSession.lastSequence),
      session(recordedSession)
{
}

bool EventRecording::Begin()
{
    std::uint64_t fileUsed = 0;
    auto file = ReopenFile(fileUsed);
    if (!file)
    {
        file = OpenNextFile(fileUsed);
    }
    if (!file)
    {
        return false;
    }
    {
        const std::scoped_lock guard(lock);
        current = std::move(file);
        used = fileUsed;
    }
    picturesWanted = folder.WantsPictures();
    wake = UniqueHandle(CreateEventW(nullptr, FALSE, TRUE, nullptr));
    if (!wake)
    {
        return false;
    }
    moduleInUse.Begin();
    thread = UniqueHandle(CreateThread(nullptr, 0, &EventRecording::RunThread, this, 0, nullptr));
    return static_cast<bool>(thread);
}

EventRecording::~EventRecording()
{
    if (thread)
    {
        ends = true;
        SetEvent(wake.Get());
        WaitForSingleObject(thread.Get(), INFINITE);
    }
    if (hasDropped)
    {
        WriteDropped();
    }
    const std::scoped_lock guard(lock);
    session.lastSequence = lastSequence;
    if (former)
    {
        former->Close(formerUsed, TARN_RECORDING_FULL);
    }
    if (current)
    {
        current->Close(used, 0);
    }
    if (next)
    {
        next->Close(nextUsed, 0);
    }
}

std::uint32_t EventRecording::NewTransform() noexcept
{
    const std::scoped_lock guard(lock);
    return ++session.lastTransform;
}

std::uint64_t EventRecording::WriteSession(RecordingFile &file)
{
    RecordBuilder values;
    DescribeSession(values);
    std::uint64_t sequence = 0;
    {
        const std::scoped_lock guard(lock);
        sequence = ++lastSequence;
    }
    const std::uint64_t length = values.Record().size();
    WriteHead(values, {TARN_RECORD_SESSION}, length, sequence);
    constexpr std::uint64_t first = sizeof(tarn_recording_header);
    file.Write(first, values.Record().first(sizeof(std::uint32_t)));
    Put(file, first, values.Record(), {});
    const std::uint64_t end = first + Padded(length);
    file.Complete(0, end);
    file.Header().usedBytes = end;
    return end;
}

std::uint64_t EventRecording::Write(const RecordHead &head, RecordBuilder &values,
                                    std::span<const Bytes> pieces) noexcept
{
    if (hasDropped.load(std::memory_order_relaxed))
    {
        WriteDropped();
    }
    const std::uint64_t length = LengthOf(values.Record(), pieces);
    const Place place = Reserve(length, head);
    if (place.isRoomShort && !isWoken.exchange(true))
    {
        SetEvent(wake.Get());
    }
    if (place.file != nullptr)
    {
        WriteHead(values, head, length, place.sequence);
        Put(*place.file, place.offset, values.Record(), pieces);
        place.file->Complete(place.offset, Padded(length));
    }
    return place.sequence;
}

// The first thread that sees room again tells what is missing.
void EventRecording::WriteDropped() noexcept
{
    std::uint64_t records = 0;
    std::uint64_t bytes = 0;
    {
        const std::scoped_lock guard(lock);
        records = std::exchange(droppedRecords, 0);
        bytes = std::exchange(droppedBytes, 0);
        hasDropped = false;
    }
    if (records == 0)
    {
        return;
    }
    RecordBuilder values;
    values.U64(TARN_VALUE_RECORDS, records).U64(TARN_VALUE_BYTES, bytes);
    const RecordHead head{TARN_RECORD_DROPPED};
    const std::uint64_t length = values.Record().size();
    const Place place = Reserve(length, head);
    if (place.file != nullptr)
    {
        WriteHead(values, head, length, place.sequence);
        Put(*place.file, place.offset, values.Record(), {});
        place.file->Complete(place.offset, Padded(length));
        return;
    }
    const std::scoped_lock guard(lock); // still no room
    droppedRecords += records;
    droppedBytes += bytes;
    hasDropped = true;
}

EventRecording::Place EventRecording::Reserve(std::uint64_t length, const RecordHead &head) noexcept
{
    const std::uint64_t padded = Padded(length);
    const std::scoped_lock guard(lock);
    Place place;
    if (used + padded > limits.fileBytes)
    {
        TurnToNextFile();
    }
    tarn_recording_header &header = current->Header();
    const std::uint64_t room = current->MappedBytes() - used;
    const bool isMoreToMake = !next || current->MappedBytes() < limits.fileBytes;
    place.isRoomShort = isMoreToMake && room < padded + AheadBytes() / 2;
    if (room < padded && head.type == TARN_RECORD_DROPPED)
    {
        return place; // takes no number: those that are missing are those that were counted
    }
    place.sequence = ++lastSequence;
    if (room < padded)
    {
        ++droppedRecords;
        droppedBytes += length;
        ++header.droppedRecords;
        header.droppedBytes += length;
        hasDropped = true;
        return place;
    }
    if (head.isPicture)
    {
        header.flags |= TARN_RECORDING_HOLDS_PICTURES;
    }
    place.file = current.get();
    place.offset = used;
    used += padded;
    const auto bytes = static_cast<std::uint32_t>(length);
    current->Write(place.offset, {reinterpret_cast<const std::uint8_t *>(&bytes), sizeof(bytes)});
    return place;
}

void EventRecording::TurnToNextFile() noexcept
{
    if (!next || former)
    {
        return;
    }
    current->Header().usedBytes = used;
    current->Header().flags |= TARN_RECORDING_FULL;
    former = std::exchange(current, std::move(next));
    formerUsed = std::exchange(used, nextUsed);
}

// What others step over first, then the body, last what makes it hold.
void EventRecording::Put(RecordingFile &file, std::uint64_t offset, std::span<std::uint8_t> record,
                         std::span<const Bytes> pieces) noexcept
{
    const Bytes checked = Bytes(record).subspan(kChecksumEnd);
    std::uint32_t checksum = Crc32(checked);
    file.Write(offset + kChecksumEnd, checked);
    std::uint64_t end = offset + record.size();
    for (const Bytes &piece : pieces)
    {
        checksum = Crc32(piece, checksum);
        file.Write(end, piece);
        end += piece.size();
    }
    std::atomic_thread_fence(std::memory_order_release);
    file.Write(offset + offsetof(tarn_record_header, checksum),
               {reinterpret_cast<const std::uint8_t *>(&checksum), sizeof(checksum)});
}

std::uint64_t EventRecording::AheadBytes() const noexcept
{
    return TakesPictures() ? limits.aheadOfPicturesBytes : limits.aheadBytes;
}

} // namespace mft_der
