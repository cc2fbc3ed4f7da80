// Faults that a test switches on in the simulated camera.
#pragma once

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <optional>

namespace tarn_sim
{

// The call with this number (from 1, counted since the plan was set) fails; 0 = none does.
struct FailingCall
{
    std::uint32_t number = 0;
    HRESULT result = E_FAIL;
    bool allFollowing = false; // the later calls fail too
};

enum class MetadataFault : std::uint8_t
{
    None,
    Absent,        // no capture-metadata store on the sample
    NoItems,       // a store without raw items
    Truncated,     // the last item announces more than the buffer holds
    ZeroSizedItem, // an item of size 0 before ours
    HugeItem,      // an item of size 0xFFFFFFF8 before ours
    ShortPayload   // our item holds 40 bytes of the record only
};

struct FaultPlan
{
    FailingCall ksCall;        // KsProperty, KsMethod and KsEvent counted together
    FailingCall transformCall; // every IMFTransform method
    FailingCall topologyCall;  // every IKsTopologyInfo method

    std::chrono::milliseconds ksDelay{0};
    std::uint32_t ksDelayedCall = 0; // 0 = each call is slow

    // Firmware answers: cut to so many bytes (echo included), or with another echoed opcode.
    std::optional<ULONG> answerLength;
    std::optional<std::uint32_t> answerEcho;
    std::uint32_t answerOfCommand = 0; // command number from 1 that the two above hit; 0 = each

    // Frames, by number of delivered frame from 1; 0 = never.
    std::uint32_t shortEvery = 0;     // the buffer is half as long
    std::uint32_t duplicateEvery = 0; // the sample is delivered twice
    bool frameAfterStop = false;      // one more frame arrives after SetPinState(Stop) returned
    MetadataFault metadata = MetadataFault::None;
};

} // namespace tarn_sim
