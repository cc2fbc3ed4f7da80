// Which recorded call a thread is in.
#pragma once

#include <cstdint>

namespace mft_der
{

// While it lives this thread is in the record's call: what is recorded meanwhile belongs to it. Confined.
class CallUnderWay
{
  public:
    // `outer` is the one that it was in before.
    CallUnderWay(std::uint64_t sequence, std::uint64_t outer) noexcept : before(outer)
    {
        Set(sequence);
    }
    ~CallUnderWay()
    {
        Set(before);
    }
    CallUnderWay(const CallUnderWay &) = delete;
    CallUnderWay &operator=(const CallUnderWay &) = delete;

    // 0 outside of any. Thread-safe.
    static std::uint64_t OfThisThread() noexcept;
    // For calls whose beginning and end are told apart. Gives what was before.
    static std::uint64_t Exchange(std::uint64_t sequence) noexcept;

  private:
    static void Set(std::uint64_t sequence) noexcept;

    const std::uint64_t before;
};

} // namespace mft_der
