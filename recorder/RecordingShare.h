// The recordings of this process, one per folder.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "recorder/EventRecording.h"

namespace mft_der
{

struct SharedRecording;

// A transform's share in a recording. The last one that ends closes it; the next one goes on with the same session and,
// while it is there and not full, the same file. Confined.
class RecordingShare
{
  public:
    // Null while the folder does not exist and, traced, when it cannot be written.
    static std::unique_ptr<RecordingShare> In(const std::wstring &folder, const RecordingLimits &limits = {});
    ~RecordingShare();
    RecordingShare(const RecordingShare &) = delete;
    RecordingShare &operator=(const RecordingShare &) = delete;

    EventRecording &Recording() const noexcept
    {
        return *recording;
    }

    // The sessions of this process end; for the end of the module.
    static void ForgetSessions() noexcept;

  private:
    explicit RecordingShare(SharedRecording &sharedRecording) noexcept;

    SharedRecording &shared;
    EventRecording *const recording;
};

} // namespace mft_der
