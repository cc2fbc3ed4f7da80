#include "recorder/CallUnderWay.h"

#include <windows.h>

namespace mft_der
{

namespace
{
// A slot of the system's: what the compiler makes of thread_local takes memory on each thread, which this module could
// not give back when it is unloaded.
class ThreadSlot
{
  public:
    ThreadSlot() noexcept : index(TlsAlloc()) {}
    ~ThreadSlot()
    {
        if (index != TLS_OUT_OF_INDEXES)
        {
            TlsFree(index);
        }
    }
    ThreadSlot(const ThreadSlot &) = delete;
    ThreadSlot &operator=(const ThreadSlot &) = delete;

    std::uint64_t Get() const noexcept
    {
        const DWORD error = GetLastError(); // the recorded call's, which this would clear
        const auto value = reinterpret_cast<std::uint64_t>(TlsGetValue(index));
        SetLastError(error);
        return value;
    }
    void Set(std::uint64_t value) const noexcept
    {
        TlsSetValue(index, reinterpret_cast<void *>(value));
    }

  private:
    const DWORD index;
};

const ThreadSlot &Slot() noexcept
{
    static const ThreadSlot slot;
    return slot;
}
} // namespace

std::uint64_t CallUnderWay::OfThisThread() noexcept
{
    return Slot().Get();
}

std::uint64_t CallUnderWay::Exchange(std::uint64_t sequence) noexcept
{
    const std::uint64_t before = OfThisThread();
    Set(sequence);
    return before;
}

void CallUnderWay::Set(std::uint64_t sequence) noexcept
{
    Slot().Set(sequence);
}

} // namespace mft_der
