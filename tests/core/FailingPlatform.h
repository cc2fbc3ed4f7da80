// Makes the nth platform call, or the nth allocation, fail. The program is linked with --wrap for the calls.
#pragma once

#include <atomic>

namespace tarn_test
{

// While it lives, the call with this number (from 1) of those that are wrapped returns E_OUTOFMEMORY.
class FailingPlatform
{
  public:
    explicit FailingPlatform(int failingCall);
    ~FailingPlatform();
    FailingPlatform(const FailingPlatform &) = delete;
    FailingPlatform &operator=(const FailingPlatform &) = delete;

    bool HasFailed() const;
    const char *FailedCall() const;

    // Calls made meanwhile are neither counted nor failed.
    class Pause
    {
      public:
        Pause();
        ~Pause();
        Pause(const Pause &) = delete;
        Pause &operator=(const Pause &) = delete;
    };
};

// While it lives, the nth allocation of this thread throws std::bad_alloc.
class FailingAllocation
{
  public:
    explicit FailingAllocation(int failingAllocation);
    ~FailingAllocation();
    FailingAllocation(const FailingAllocation &) = delete;
    FailingAllocation &operator=(const FailingAllocation &) = delete;

    bool HasFailed() const;
};

} // namespace tarn_test
