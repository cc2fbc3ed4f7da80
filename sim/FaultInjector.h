// Decides, call by call, which fault of the plan strikes.
#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "sim/FaultPlan.h"

namespace tarn_sim
{

// What happens to one firmware answer.
struct AnswerFault
{
    std::optional<ULONG> length;
    std::optional<std::uint32_t> echo;
};

// What happens to one frame.
struct FrameFault
{
    bool isShort = false;
    bool isDuplicated = false;
    MetadataFault metadata = MetadataFault::None;
};

// Thread-safe.
class FaultInjector
{
  public:
    void SetPlan(const FaultPlan &newPlan); // the numbers of calls start at 1 again

    // Counts one call; the failure that the plan has for it, or S_OK. OnKsCall may sleep first.
    HRESULT OnKsCall();
    HRESULT OnTransformCall();
    HRESULT OnTopologyCall();
    AnswerFault OnFirmwareCommand();
    FrameFault OnFrame();
    bool FrameAfterStop() const;

  private:
    static HRESULT Strike(const FailingCall &fault, std::uint32_t number);

    mutable std::mutex lock;
    FaultPlan plan; // this and the rest guarded by lock
    std::uint32_t ksCalls = 0;
    std::uint32_t transformCalls = 0;
    std::uint32_t topologyCalls = 0;
    std::uint32_t commands = 0;
    std::uint32_t frames = 0;
};

} // namespace tarn_sim
