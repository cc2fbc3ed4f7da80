// EventRecording, second part: its files, and the thread that makes room in them ahead of need.
#include "recorder/EventRecording.h"

#include <algorithm>
#include <mutex>
#include <utility>

#include "recorder/SessionDescription.h"
#include "trace/Guard.h"

namespace mft_der
{

using user_space_frameworks::UniqueHandle;

namespace
{
constexpr DWORD kLookMs = 1000;    // for the wish for pixels, and for room after a failure
constexpr DWORD kClosePollMs = 10; // while a full file is still written to
} // namespace

std::unique_ptr<RecordingFile> EventRecording::ReopenFile(std::uint64_t &fileUsed)
{
    UniqueHandle handle = folder.SameFile();
    if (!handle)
    {
        return nullptr;
    }
    auto file = std::make_unique<RecordingFile>(std::move(handle), limits.stepBytes, limits.fileBytes);
    const std::scoped_lock guard(lock);
    if (!file->GoOn() || file->Header().sessionId != session.id)
    {
        return nullptr;
    }
    fileUsed = file->Header().usedBytes;
    file->Header().flags &= ~TARN_RECORDING_CLOSED;
    return file;
}

std::unique_ptr<RecordingFile> EventRecording::OpenNextFile(std::uint64_t &fileUsed)
{
    UniqueHandle handle = folder.NewFile();
    if (!handle)
    {
        return nullptr;
    }
    auto file = std::make_unique<RecordingFile>(std::move(handle), limits.stepBytes, limits.fileBytes);
    if (!file->Begin())
    {
        const DWORD error = GetLastError();
        file.reset();
        folder.RemoveNewest(); // else each attempt would move the earlier ones up, and the oldest out
        SetLastError(error);
        return nullptr;
    }
    tarn_recording_header header = MakeHeader();
    {
        const std::scoped_lock guard(lock);
        if (session.id == 0)
        {
            session.id = header.startTime ^ std::uint64_t{header.processId} << 48U;
        }
        header.sessionId = session.id;
        header.part = session.parts++;
    }
    file->Header() = header;
    fileUsed = WriteSession(*file);
    return file;
}

DWORD WINAPI EventRecording::RunThread(void *recording) noexcept
{
    static_cast<EventRecording *>(recording)->KeepRoom();
    return 0;
}

void EventRecording::KeepRoom() noexcept
{
    DWORD patience = kLookMs;
    while (WaitForSingleObject(wake.Get(), patience) != WAIT_FAILED && !ends)
    {
        bool hasRoom = false;
        mft_utils::Guarded([&] { // all of it takes memory, which may be short
            picturesWanted = folder.WantsPictures();
            hasRoom = MakeRoom();
            return S_OK;
        });
        if (!hasRoom && !std::exchange(roomFailed, true))
        {
            TRACE_ERROR("no room to record, error %lu; what does not fit is dropped and counted", GetLastError());
        }
        if (hasRoom)
        {
            roomFailed = false;
            isWoken = false; // else the next look comes with the time
        }
        const std::scoped_lock guard(lock);
        patience = former ? kClosePollMs : kLookMs;
    }
}

bool EventRecording::MakeRoom()
{
    CloseFormerFile();
    return GrowAhead() && PrepareNextFile();
}

bool EventRecording::GrowAhead()
{
    for (;;)
    {
        RecordingFile *file = nullptr;
        std::uint64_t fileUsed = 0;
        {
            const std::scoped_lock guard(lock);
            file = current.get(); // only this thread ends it
            fileUsed = used;
            file->Header().usedBytes = used;
        }
        file->Release(fileUsed);
        if (file->MappedBytes() >= std::min(fileUsed + AheadBytes(), limits.fileBytes))
        {
            return true;
        }
        if (!file->Grow())
        {
            return false;
        }
    }
}

bool EventRecording::PrepareNextFile()
{
    {
        const std::scoped_lock guard(lock);
        if (next || limits.fileBytes - used > AheadBytes())
        {
            return true;
        }
    }
    std::uint64_t fileUsed = 0;
    auto file = OpenNextFile(fileUsed);
    while (file && file->MappedBytes() < std::min(AheadBytes(), limits.fileBytes))
    {
        if (!file->Grow())
        {
            return false;
        }
    }
    const std::scoped_lock guard(lock);
    next = std::move(file);
    nextUsed = fileUsed;
    return next != nullptr;
}

void EventRecording::CloseFormerFile() noexcept
{
    std::unique_ptr<RecordingFile> file;
    std::uint64_t fileUsed = 0;
    {
        const std::scoped_lock guard(lock);
        if (!former || !former->IsComplete(formerUsed))
        {
            return;
        }
        file = std::move(former);
        fileUsed = formerUsed;
    }
    file->Close(fileUsed, TARN_RECORDING_FULL);
}

} // namespace mft_der
