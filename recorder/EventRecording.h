// The recording that the transforms of a process share: one clock, one count of records, the files they go to.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>

#include "base/CallbackInFlight.h"
#include "base/SharedLock.h"
#include "base/UniqueHandle.h"
#include "recorder/RecordBuilder.h"
#include "recorder/RecordingFile.h"
#include "recorder/RecordingFolder.h"

namespace mft_der
{

// How much is recorded, and how far ahead of need memory is mapped. Sizes are multiples of the step.
struct RecordingLimits
{
    std::uint32_t stepBytes = 4U << 20U; // a power of two, 64 KB at least
    std::uint64_t aheadBytes = 8U << 20U;
    std::uint64_t aheadOfPicturesBytes = 64U << 20U;
    std::uint64_t fileBytes = 256U << 20U;
    unsigned files = 4;
};

// What outlasts the recording while no transform is alive, so that the next one goes on with the same session.
struct RecordingSession
{
    std::uint64_t id = 0;
    std::uint64_t lastSequence = 0;
    std::uint32_t lastTransform = 0;
    std::uint32_t parts = 0;
};

// What a record says about itself, beside its values.
struct RecordHead
{
    std::uint16_t type = 0;
    std::uint16_t subject = 0;
    std::uint32_t transform = 0;
    HRESULT result = S_OK;
    std::uint64_t entry = 0;
    bool isPicture = false;
};

// A record's place is reserved under a lock that is held for a few instructions; its bytes are copied beside it. A
// thread of its own makes room ahead of need. What finds none is dropped and counted. Thread-safe.
class EventRecording
{
  public:
    // Null, and traced, when the folder cannot be written. The folder and the session outlive it.
    static std::unique_ptr<EventRecording> Open(RecordingFolder &folder, RecordingSession &session,
                                                const RecordingLimits &limits);
    // Closes the file. Nobody writes any more.
    ~EventRecording();
    EventRecording(const EventRecording &) = delete;
    EventRecording &operator=(const EventRecording &) = delete;

    std::uint32_t NewTransform() noexcept;

    // Whether pixels are asked for. Looked up about once a second.
    bool TakesPictures() const noexcept
    {
        return picturesWanted.load(std::memory_order_relaxed);
    }

    // The record's number, also where it had to be dropped. `pieces` are the bytes of the builder's last head.
    std::uint64_t Write(const RecordHead &head, RecordBuilder &values, std::span<const Bytes> pieces = {}) noexcept;

  private:
    struct Place
    {
        RecordingFile *file = nullptr; // null: dropped
        std::uint64_t offset = 0;
        std::uint64_t sequence = 0;
        bool isRoomShort = false;
    };

    EventRecording(RecordingFolder &recordingFolder, RecordingSession &recordedSession,
                   const RecordingLimits &recordingLimits);

    bool Begin();
    std::unique_ptr<RecordingFile> OpenNextFile(std::uint64_t &fileUsed);
    std::unique_ptr<RecordingFile> ReopenFile(std::uint64_t &fileUsed);
    std::uint64_t WriteSession(RecordingFile &file);
    void WriteDropped() noexcept;

    Place Reserve(std::uint64_t length, const RecordHead &head) noexcept;
    void TurnToNextFile() noexcept TARN_REQUIRES(lock);
    static void Put(RecordingFile &file, std::uint64_t offset, std::span<std::uint8_t> record,
                    std::span<const Bytes> pieces) noexcept;

    static DWORD WINAPI RunThread(void *recording) noexcept;
    void KeepRoom() noexcept; // until the end
    bool MakeRoom();
    bool GrowAhead();
    bool PrepareNextFile();
    void CloseFormerFile() noexcept;
    std::uint64_t AheadBytes() const noexcept;

    static constexpr std::size_t kCacheLine = 64;

    RecordingFolder &folder;
    const RecordingLimits limits;

    // What each record changes lies together, and apart from what it only looks at: threads on several processors
    // record.
    alignas(kCacheLine) user_space_frameworks::SharedLock lock;
    std::unique_ptr<RecordingFile> current TARN_GUARDED_BY(lock);
    std::uint64_t used TARN_GUARDED_BY(lock) = 0;
    std::uint64_t lastSequence TARN_GUARDED_BY(lock) = 0;

    alignas(kCacheLine) RecordingSession &session TARN_GUARDED_BY(lock);
    std::unique_ptr<RecordingFile> next TARN_GUARDED_BY(lock); // with its first record
    std::uint64_t nextUsed TARN_GUARDED_BY(lock) = 0;
    std::unique_ptr<RecordingFile> former TARN_GUARDED_BY(lock); // full, to be closed when nobody writes to it any more
    std::uint64_t formerUsed TARN_GUARDED_BY(lock) = 0;
    std::uint64_t droppedRecords TARN_GUARDED_BY(lock) = 0; // since the last that was written
    std::uint64_t droppedBytes TARN_GUARDED_BY(lock) = 0;

    std::atomic<bool> hasDropped{false};
    std::atomic<bool> picturesWanted{false};
    std::atomic<bool> isWoken{false};
    std::atomic<bool> ends{false};
    bool roomFailed = false; // of the thread
    user_space_frameworks::UniqueHandle wake;
    user_space_frameworks::UniqueHandle thread;
    mft_utils::CallbackInFlight moduleInUse; // the thread runs in this module
};

} // namespace mft_der
