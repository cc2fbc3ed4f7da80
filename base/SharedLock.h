// Reader-writer lock that needs neither construction nor destruction at run time, for state of the whole module.
#pragma once

#include <windows.h>

namespace user_space_frameworks
{

// Not recursive. Usable before the first and after the last static object. Thread-safe.
class SharedLock
{
  public:
    constexpr SharedLock() noexcept = default;
    SharedLock(const SharedLock &) = delete;
    SharedLock &operator=(const SharedLock &) = delete;

    // Lower case: the names that the standard's scoped locks ask for.
    void lock() noexcept
    {
        AcquireSRWLockExclusive(&section);
    }
    bool try_lock() noexcept
    {
        return TryAcquireSRWLockExclusive(&section) != FALSE;
    }
    void unlock() noexcept
    {
        ReleaseSRWLockExclusive(&section);
    }
    void lock_shared() noexcept
    {
        AcquireSRWLockShared(&section);
    }
    void unlock_shared() noexcept
    {
        ReleaseSRWLockShared(&section);
    }

  private:
    SRWLOCK section{};
};

} // namespace user_space_frameworks
