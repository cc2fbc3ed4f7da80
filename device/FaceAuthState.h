// Face-authentication mode: what applications chose, and whether they may choose.
#pragma once

#include <atomic>
#include <mutex>
#include <utility>

#include "base/CriticalSection.h"
#include "recorder/ChangeMark.h"

namespace mft_core
{

// Shared by the transform, which says what the camera has and when the mode is in use, and the property. Thread-safe.
class FaceAuthState
{
  public:
    explicit FaceAuthState(mft_der::ChangeMark changeMark = {}) : mark(std::move(changeMark)) {}

    // False while the mode is in use; it stays then.
    bool ChangeMode(bool on)
    {
        const std::scoped_lock guard(lock);
        mark.Tell(TARN_CHANGE_FACE_LOGIN);
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
        mark.Tell(TARN_CHANGE_FACE_LOGIN);
        canChangeMode = allowed;
    }

    std::atomic<bool> faceAuthMode{false};
    std::atomic<bool> canChangeMode{true};
    std::atomic<bool> faceAuthSupported{false};

  private:
    const mft_der::ChangeMark mark;
    user_space_frameworks::CriticalSection lock; // held from the question whether the mode may change to its change
};

} // namespace mft_core
