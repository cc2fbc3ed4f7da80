// Callbacks that the platform has still to make, which keep the module loaded.
#pragma once

#include <utility>

namespace mft_utils
{

// One thing that the platform was given to call back, from before it is given until the last call of it is over. Ended
// as late as the callback's own code allows; CallbacksHaveReturned allows for what follows. Confined.
class CallbackInFlight
{
  public:
    CallbackInFlight() noexcept = default; // none
    ~CallbackInFlight()
    {
        End();
    }
    CallbackInFlight(CallbackInFlight &&other) noexcept : counted(std::exchange(other.counted, false)) {}
    CallbackInFlight &operator=(CallbackInFlight &&) = delete;
    CallbackInFlight(const CallbackInFlight &) = delete;
    CallbackInFlight &operator=(const CallbackInFlight &) = delete;

    // No effect on one that has begun.
    void Begin() noexcept;

  private:
    void End() noexcept;

    bool counted = false;
};

// True when no callback is in flight and the last one was over long enough ago to have left the module's code. One that
// is about to is waited for, 150 ms at most. Thread-safe.
bool CallbacksHaveReturned() noexcept;

} // namespace mft_utils
