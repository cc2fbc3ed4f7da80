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

    // The recorded call's last error stays as it is.
    std::uint64_t Exchange(std::uint64_t value) const noexcept
    {
        const DWORD error = GetLastError();
        const std::uint64_t before = Get();
        TlsSetValue(index, reinterpret_cast<void *>(value));
        SetLastError(error);
        return before;
    }
    std::uint64_t Get() const noexcept
    {
        return reinterpret_cast<std::uint64_t>(TlsGetValue(index));
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
    const DWORD error = GetLastError();
    const std::uint64_t sequence = Slot().Get();
    SetLastError(error);
    return sequence;
}

std::uint64_t CallUnderWay::Exchange(std::uint64_t sequence) noexcept
{
    return Slot().Exchange(sequence);
}

} // namespace mft_der
