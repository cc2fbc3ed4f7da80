#include "media/RollingAverage.h"

#include <algorithm>

namespace mft_utils
{

void RollingAverage::Add(std::int64_t value) noexcept
{
    values[next] = value;
    next = (next + 1) % kCapacity;
    count = std::min(count + 1, kCapacity);
}

void RollingAverage::Clear() noexcept
{
    next = 0;
    count = 0;
}

double RollingAverage::Average() const noexcept
{
    if (count == 0)
    {
        return 0.0;
    }
    double sum = 0.0;
    for (std::size_t i = 0; i < count; ++i)
    {
        sum += static_cast<double>(values[i]);
    }
    return sum / static_cast<double>(count);
}

} // namespace mft_utils
