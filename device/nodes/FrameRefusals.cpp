#include "device/nodes/FrameRefusals.h"

#include <mutex>

namespace mft_core
{

namespace
{
constexpr LONGLONG kSecond100ns = 10'000'000;
}

std::optional<FrameRefusals::Counts> FrameRefusals::Add(Reason reason, LONGLONG now100ns)
{
    const std::scoped_lock guard(lock);
    ++(reason == Reason::OtherFormat ? counts.otherFormat : counts.tooShort);
    if (lastSaid && now100ns - *lastSaid < kSecond100ns)
    {
        return std::nullopt;
    }
    lastSaid = now100ns;
    return counts;
}

} // namespace mft_core
