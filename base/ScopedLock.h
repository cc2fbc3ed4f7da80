// The standard's scoped locks do not tell the compiler what they hold. With this std::scoped_lock over one lock of ours
// does; UniqueLock stands for std::unique_lock.
#pragma once

#include "platform/CompilerChecks.h"

#include <concepts>
#include <mutex>

namespace user_space_frameworks
{

class CriticalSection;
class SharedLock;

template <class Lock>
concept CheckedLock = std::same_as<Lock, CriticalSection> || std::same_as<Lock, SharedLock>;

// Holds the lock while it lives, except from unlock to lock. Confined.
template <CheckedLock Lock>
class TARN_SCOPED_CAPABILITY UniqueLock
{
  public:
    explicit UniqueLock(Lock &toHold) noexcept TARN_ACQUIRE(toHold) : held(toHold)
    {
        lock();
    }
    ~UniqueLock() TARN_RELEASE()
    {
        if (isHeld)
        {
            held.unlock();
        }
    }
    UniqueLock(const UniqueLock &) = delete;
    UniqueLock &operator=(const UniqueLock &) = delete;

    void lock() noexcept TARN_ACQUIRE()
    {
        held.lock();
        isHeld = true;
    }
    void unlock() noexcept TARN_RELEASE()
    {
        isHeld = false;
        held.unlock();
    }

  private:
    Lock &held;
    bool isHeld = false;
};

} // namespace user_space_frameworks

template <user_space_frameworks::CheckedLock Lock>
class TARN_SCOPED_CAPABILITY std::scoped_lock<Lock>
{
  public:
    using mutex_type = Lock;

    explicit scoped_lock(Lock &toHold) TARN_ACQUIRE(toHold) : held(toHold)
    {
        held.lock();
    }
    scoped_lock(std::adopt_lock_t, Lock &toHold) noexcept TARN_REQUIRES(toHold) : held(toHold) {}
    ~scoped_lock() TARN_RELEASE()
    {
        held.unlock();
    }
    scoped_lock(const scoped_lock &) = delete;
    scoped_lock &operator=(const scoped_lock &) = delete;

  private:
    Lock &held;
};
