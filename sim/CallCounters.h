// How often each COM method of the simulated camera was called.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace tarn_sim
{

enum class Method : std::uint8_t
{
    GetStreamCount,
    GetStreamIDs,
    GetOutputStreamInfo,
    GetAttributes,
    GetOutputStreamAttributes,
    GetOutputAvailableType,
    GetOutputCurrentType,
    OtherTransform, // every method that a filter does not implement
    KsProperty,
    KsMethod,
    KsEvent,
    GetNumNodes,
    GetNodeType,
    OtherTopology,
    LastMethod
};

// Thread-safe.
class CallCounters
{
  public:
    void Count(Method method) noexcept
    {
        counts[static_cast<std::size_t>(method)].fetch_add(1, std::memory_order_relaxed);
    }
    std::uint64_t Calls(Method method) const noexcept
    {
        return counts.at(static_cast<std::size_t>(method)).load(std::memory_order_relaxed);
    }

  private:
    std::array<std::atomic<std::uint64_t>, static_cast<std::size_t>(Method::LastMethod)> counts{};
};

} // namespace tarn_sim
