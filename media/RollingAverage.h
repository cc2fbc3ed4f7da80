// Average of the last values.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace mft_utils
{

// Keeps the last kCapacity values. Confined.
class RollingAverage
{
  public:
    static constexpr std::size_t kCapacity = 32;

    void Add(std::int64_t value) noexcept;
    void Clear() noexcept;

    std::size_t Count() const noexcept
    {
        return count;
    }

    // 0 while empty.
    double Average() const noexcept;

  private:
    std::array<std::int64_t, kCapacity> values{};
    std::size_t next = 0;
    std::size_t count = 0;
};

} // namespace mft_utils
