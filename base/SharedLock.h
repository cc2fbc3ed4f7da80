// Reader-writer lock that needs neither construction nor destruction at run time, for state of the whole module.
#pragma once

#include "platform/CompilerChecks.h"

#include <windows.h>

#include "base/ScopedLock.h"

namespace user_space_frameworks
{

// Not recursive. Usable before the first and after the last static object. Thread-safe.
class TARN_CAPABILITY("lock") SharedLock
{
  public:
    constexpr SharedLock() noexcept = default;
    SharedLock(const SharedLock &) = delete;
    SharedLock &operator=(const SharedLock &) = delete;

    // Lower case: the names that the standard's scoped locks ask for.
    void lock() noexcept TARN_ACQUIRE()
    {
        AcquireSRWLockExclusive(&section);
    }
    bool try_lock() noexcept TARN_TRY_ACQUIRE(true)
    {
        return TryAcquireSRWLockExclusive(&section) != FALSE;
    }
    void unlock() noexcept TARN_RELEASE()
    {
        ReleaseSRWLockExclusive(&section);
    }
    void lock_shared() noexcept TARN_ACQUIRE_SHARED()
    {
        AcquireSRWLockShared(&section);
    }
    void unlock_shared() noexcept TARN_RELEASE_SHARED()
    {
        ReleaseSRWLockShared(&section);
    }

  private:
    SRWLOCK section{};
};

// Holds the lock for reading while it lives, like std::shared_lock. Confined.
class TARN_SCOPED_CAPABILITY SharedGuard
{
  public:
    explicit SharedGuard(SharedLock &toHold) noexcept TARN_ACQUIRE_SHARED(toHold) : held(toHold)
    {
        held.lock_shared();
    }
    ~SharedGuard() TARN_RELEASE()
    {
        held.unlock_shared();
    }
    SharedGuard(const SharedGuard &) = delete;
    SharedGuard &operator=(const SharedGuard &) = delete;

  private:
    SharedLock &held;
};

} // namespace user_space_frameworks
