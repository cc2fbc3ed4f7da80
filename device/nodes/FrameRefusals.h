// How many frames were refused and why, and when to say so.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>
#include <cstdint>
#include <optional>

#include "base/CriticalSection.h"

namespace mft_core
{

// Owned by the node that refuses. Thread-safe.
class FrameRefusals
{
  public:
    enum class Reason : std::uint8_t
    {
        OtherFormat,
        TooShort
    };
    struct Counts
    {
        std::size_t otherFormat = 0;
        std::size_t tooShort = 0;
    };

    // Counts; gives all counts so far when they are to be said: at the first refusal, then at most once a second.
    // `now100ns` never goes back.
    std::optional<Counts> Add(Reason reason, LONGLONG now100ns);

  private:
    user_space_frameworks::CriticalSection lock;
    Counts counts TARN_GUARDED_BY(lock);
    std::optional<LONGLONG> lastSaid TARN_GUARDED_BY(lock); // 100 ns
};

} // namespace mft_core
