// Face-authentication mode: what applications chose, and whether they may choose.
#pragma once

#include <atomic>
#include <mutex>

#include "base/CriticalSection.h"

namespace mft_core
{

// Shared by the transform, which says what the camera has and when the mode is in use, and the property. Thread-safe.
class FaceAuthState
{
  public:
    // False while the mode is in use; it stays then.
    bool ChangeMode(bool on)
    {
        const std::scoped_lock guard(lock);
        if (canChangeMode)
        {
            faceAuthMode = on;
        }
        return canChangeMode;
    }

    // After a "no" the mode stays: a change that was under way has ended.
    void AllowModeChange(bool allowed)
    {
        const std::scoped_lock guard(lock);
        canChangeMode = allowed;
    }

    std::atomic<bool> faceAuthMode{false};
    std::atomic<bool> canChangeMode{true};
    std::atomic<bool> faceAuthSupported{false};

  private:
    user_space_frameworks::CriticalSection lock; // held from the question whether the mode may change to its change
};

} // namespace mft_core
