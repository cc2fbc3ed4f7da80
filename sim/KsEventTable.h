// The event listeners that have enabled an event on the simulated filter.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>
#include <mutex>
#include <vector>

namespace tarn_sim
{

// Keeps a duplicate of each listener's handle until the listener disables the event. Thread-safe.
class KsEventTable
{
  public:
    KsEventTable() = default;
    ~KsEventTable();
    KsEventTable(const KsEventTable &) = delete;
    KsEventTable &operator=(const KsEventTable &) = delete;

    // The listener is known by the address of its data block, as with the real filter. Fails for anything but an event
    // handle that can be duplicated (E_INVALIDARG, or the platform's error).
    HRESULT Enable(const KSEVENTDATA *listener, bool oneShot);
    // HRESULT_FROM_WIN32(ERROR_NOT_FOUND) for a block that enabled nothing.
    HRESULT Disable(const void *listener);
    std::uint32_t SignalAll();
    std::uint32_t Count() const;

  private:
    struct Listener
    {
        const void *block = nullptr;
        HANDLE event = nullptr;
        bool oneShot = false;
    };

    mutable std::mutex lock;
    std::vector<Listener> listeners; // guarded by lock
};

} // namespace tarn_sim
