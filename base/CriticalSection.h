// Windows critical section as a lockable type for std::scoped_lock.
#pragma once

#include "platform/CompilerChecks.h"

#include <windows.h>

#include <cassert>

#include "base/ScopedLock.h"

namespace user_space_frameworks
{

// Recursive lock. Needs no memory of its own and leaves none behind, unlike this toolchain's std::mutex, whose
// destructor frees nothing. Thread-safe.
class TARN_CAPABILITY("lock") CriticalSection
{
  public:
    CriticalSection() noexcept
    {
        InitializeCriticalSection(&section);
    }
    ~CriticalSection()
    {
        DeleteCriticalSection(&section);
    }
    CriticalSection(const CriticalSection &) = delete;
    CriticalSection &operator=(const CriticalSection &) = delete;

    // Lower case: the names that the standard's scoped locks ask for.
    void lock() noexcept TARN_ACQUIRE()
    {
        EnterCriticalSection(&section);
    }
    void unlock() noexcept TARN_RELEASE()
    {
        LeaveCriticalSection(&section);
    }

    // For code that runs under the lock where the compiler cannot see it: a lambda that is called at once.
    void AssertHeld() const noexcept TARN_ASSERT_HELD(this)
    {
        assert(section.OwningThread == ULongToHandle(GetCurrentThreadId()));
    }

  private:
    friend class ConditionVariable;
    CRITICAL_SECTION section;
};

// Wakes those who wait for a state that a CriticalSection guards. Thread-safe.
class ConditionVariable
{
  public:
    ConditionVariable() noexcept
    {
        InitializeConditionVariable(&variable);
    }
    ConditionVariable(const ConditionVariable &) = delete;
    ConditionVariable &operator=(const ConditionVariable &) = delete;

    void NotifyAll() noexcept
    {
        WakeAllConditionVariable(&variable);
    }

    // Call with the section locked exactly once. False when the condition did not come true within the limit.
    template <class Condition>
    bool WaitFor(CriticalSection &section, DWORD limitMs, Condition &&condition) TARN_REQUIRES(section)
    {
        const ULONGLONG end = GetTickCount64() + limitMs;
        while (!condition())
        {
            const ULONGLONG now = GetTickCount64();
            if (now >= end)
            {
                return false;
            }
            SleepConditionVariableCS(&variable, &section.section, static_cast<DWORD>(end - now));
        }
        return true;
    }

  private:
    CONDITION_VARIABLE variable;
};

} // namespace user_space_frameworks
