// Makes the nth platform call, or the nth allocation, fail. The program is linked with --wrap for the calls.
#pragma once

namespace tarn_test
{

enum class Failing
{
    PlatformCall, // those that are wrapped return E_OUTOFMEMORY
    Allocation    // operator new throws std::bad_alloc
};

// While it lives, the calls of that kind are counted, on all threads, and the one with this number (from 1) fails; 0
// only counts; what a test does itself (OwnWork) is neither counted nor failed. One at a time.
class FailingPlatform
{
  public:
    FailingPlatform(Failing kind, int failingCall);
    ~FailingPlatform();
    FailingPlatform(const FailingPlatform &) = delete;
    FailingPlatform &operator=(const FailingPlatform &) = delete;

    // Of platform calls only: allocations are the camera's too, and may keep it from doing what it is told.
    static bool LeavesTheCameraAlone();
    int Calls() const;
    bool HasFailed() const;

    // Meanwhile no thread's calls are counted or failed: the camera works on a frame.
    class Suspension
    {
      public:
        Suspension();
        ~Suspension();
        Suspension(const Suspension &) = delete;
        Suspension &operator=(const Suspension &) = delete;
    };
};

} // namespace tarn_test
