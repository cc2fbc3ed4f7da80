// A log file of limited size: when it is full it becomes the older file, of which one is kept, and another is begun.
#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace mft_utils
{

// Several processes may write into one file; whoever finds it full changes it, and the others follow. No one waits for
// another. Needs no destruction at the end of the process. Confined.
class TraceFile
{
  public:
    // False when it cannot be opened. The path is UTF-8; lines are added to what the file holds.
    bool Open(std::string_view utf8Path, std::uint64_t limitBytes) noexcept;
    void Close() noexcept;
    bool IsOpen() const noexcept
    {
        return file != nullptr;
    }

    // Looks after the size from time to time; call before each line. True when what follows goes into another file.
    bool Renew() noexcept;
    // One write, so that lines of several processes do not mix.
    void Write(const char *bytes, std::size_t size) noexcept;

    // A file grows by this much over its limit, for each process that writes into it.
    static constexpr std::uint32_t kBytesBetweenLooks = 64 * 1024;

  private:
    static constexpr std::size_t kMaxPath = 1024;
    using Path = std::array<wchar_t, kMaxPath + 8>; // with the ending of its neighbours

    Path Neighbour(const wchar_t *ending) const noexcept;
    HANDLE OpenAtPath() const noexcept;
    bool IsAtPath() const noexcept;
    bool IsFull() const noexcept;
    bool MoveAway() const noexcept;

    HANDLE file = nullptr;
    bool isOnDisk = false; // else it is a device or a pipe, which is never full
    std::uint64_t limit = 0;
    std::uint32_t writtenSinceLook = 0;
    ULONGLONG lookedAtMs = 0;
    std::size_t pathLength = 0;
    Path path{};
};

} // namespace mft_utils
