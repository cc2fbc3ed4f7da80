// What a test and its frame server do themselves; only the transform's calls are counted and made to fail.
#pragma once

namespace tarn_test
{

// Calls that this thread makes while it lives are not the transform's.
class OwnWork
{
  public:
    OwnWork() { ++depth; }
    ~OwnWork() { --depth; }
    OwnWork(const OwnWork &) = delete;
    OwnWork &operator=(const OwnWork &) = delete;

    static bool IsUnderWay() { return depth != 0; }

  private:
    static inline thread_local int depth = 0;
};

} // namespace tarn_test
