// Whether depth frames carry a confidence map.
#pragma once

#include <atomic>

namespace mft_core
{

// Changed by the transform; read per frame by the nodes and for every request by the property. Thread-safe.
class ConfidenceMapState
{
  public:
    bool IsEnabled() const noexcept
    {
        return enabled.load(std::memory_order_relaxed);
    }
    void Set(bool enable) noexcept
    {
        enabled.store(enable, std::memory_order_relaxed);
    }

  private:
    std::atomic<bool> enabled{false};
};

} // namespace mft_core
