#include "recorder/RecordingShare.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include "trace/Trace.h"

namespace mft_der
{

struct SharedRecording
{
    SharedRecording(const std::wstring &path, unsigned keptFiles) : name(path), folder(path, keptFiles) {}

    const std::wstring name;
    RecordingFolder folder;
    RecordingSession session;
    std::unique_ptr<EventRecording> recording; // while there are shares
    unsigned shares = 0;
};

namespace
{
// Held while a recording begins or ends; no recorded call takes it.
constinit user_space_frameworks::SharedLock lock;

// Made at the first recording and not destroyed at the end of the process, when threads are gone and shares may be
// left.
std::vector<std::unique_ptr<SharedRecording>> *recordings TARN_GUARDED_BY(lock) = nullptr;

SharedRecording &RecordingIn(const std::wstring &folder, unsigned files) TARN_REQUIRES(lock)
{
    if (recordings == nullptr)
    {
        recordings = new std::vector<std::unique_ptr<SharedRecording>>;
    }
    for (const auto &known : *recordings)
    {
        if (known->name == folder)
        {
            return *known;
        }
    }
    return *recordings->emplace_back(std::make_unique<SharedRecording>(folder, files));
}
} // namespace

std::unique_ptr<RecordingShare> RecordingShare::In(const std::wstring &folder, const RecordingLimits &limits)
{
    if (!RecordingFolder::Exists(folder))
    {
        return nullptr;
    }
    const std::scoped_lock guard(lock);
    SharedRecording &shared = RecordingIn(folder, limits.files);
    if (!shared.recording)
    {
        shared.recording = EventRecording::Open(shared.folder, shared.session, limits);
    }
    if (!shared.recording)
    {
        return nullptr;
    }
    return std::unique_ptr<RecordingShare>(new RecordingShare(shared));
}

RecordingShare::RecordingShare(SharedRecording &sharedRecording) noexcept
    : shared(sharedRecording), recording(sharedRecording.recording.get())
{
    ++shared.shares;
}

RecordingShare::~RecordingShare()
{
    const std::scoped_lock guard(lock);
    if (--shared.shares == 0)
    {
        shared.recording.reset();
    }
}

void RecordingShare::ForgetSessions() noexcept
{
    const std::scoped_lock guard(lock);
    if (recordings == nullptr)
    {
        return;
    }
    if (std::ranges::any_of(*recordings, [](const auto &known) { return known->shares != 0; }))
    {
        TRACE_ERROR("the module ends while transforms still record");
        return;
    }
    delete recordings;
    recordings = nullptr;
}

} // namespace mft_der
