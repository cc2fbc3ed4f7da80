// Private property: confidence map on or off.
#pragma once

#include <atomic>
#include <functional>

#include "ks/KsCallHandler.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// Shared by the transform and its depth topologies, which read the state per frame. Thread-safe.
class TarnConfidenceMapConfig : public KsPropHandler
{
  public:
    // Applies the new state to the running topology; its failure refuses the request.
    using SetCallback = std::function<HRESULT(bool enable)>;

    // What the callback refers to outlives the handler's last call, and so does `changeLock`: it is held from before
    // the callback until the state has changed, so that who builds a topology under it sees both or neither.
    explicit TarnConfidenceMapConfig(SetCallback onSet, user_space_frameworks::CriticalSection *changeLock = nullptr);

    // Get and set, KSPROPERTY_TARN_CONFIDENCE_MAP_CFG. ERROR_MORE_DATA as an HRESULT below 4 bytes, E_POINTER without a
    // buffer, the callback's failure, E_INVALIDARG for other requests; the state stays then.
    HRESULT Run(PKSPROPERTY pProperty, ULONG ulPropertyLength, LPVOID pvPropertyData, ULONG ulDataLength,
                ULONG *pBytesReturned) override;

    bool IsEnabled() const noexcept
    {
        return enabled.load(std::memory_order_relaxed);
    }

    // What a topology is built for: during the callback the state to come, which is not the state yet.
    bool WillBeEnabled() const noexcept
    {
        return nextEnabled.load(std::memory_order_relaxed);
    }

  private:
    HRESULT Set(bool requested);

    const SetCallback setCallback;
    user_space_frameworks::CriticalSection ownLock;
    user_space_frameworks::CriticalSection &lock; // the transform's, or the one above
    std::atomic<bool> enabled{false};
    std::atomic<bool> nextEnabled{false};
};

} // namespace mft_core
