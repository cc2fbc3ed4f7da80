// One file of a recording: it grows in stretches that are mapped into memory, so that what was written survives the
// process.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "base/UniqueHandle.h"
#include "recorder/RecordBuilder.h"

namespace mft_der
{

// Grow, Release and Close wait for the disk and belong to one thread; the rest is for any thread, within what its owner
// has given it room for.
class RecordingFile
{
  public:
    // A power of two, 64 KB at least, and a multiple of it.
    RecordingFile(user_space_frameworks::UniqueHandle openFile, std::uint32_t stepBytes, std::uint64_t longest);
    ~RecordingFile();
    RecordingFile(const RecordingFile &) = delete;
    RecordingFile &operator=(const RecordingFile &) = delete;

    // For an empty file: maps the first stretch. For one that was closed: its first stretch and the one where it goes
    // on. False when it cannot, or is no recording; GetLastError() tells why.
    bool Begin();
    bool GoOn();

    // In the file from Begin to Close.
    tarn_recording_header &Header() const noexcept
    {
        return *reinterpret_cast<tarn_recording_header *>(stretches.front().bytes);
    }

    // Up to here records may be placed.
    std::uint64_t MappedBytes() const noexcept
    {
        return mapped.load(std::memory_order_acquire);
    }

    // One stretch more. False when the disk has no room, or the file has its full length.
    bool Grow();

    void Write(std::uint64_t offset, Bytes bytes) noexcept;
    // That much is there for good. Stretches stay mapped until all of theirs is; records lie end to end.
    void Complete(std::uint64_t offset, std::uint64_t bytes) noexcept;

    // Unmaps what lies wholly before `offset`, where no record begins any more.
    void Release(std::uint64_t offset) noexcept;
    // True when everything up to `usedBytes` is there.
    bool IsComplete(std::uint64_t usedBytes) const noexcept;
    // Cuts off what is not used. Only when complete.
    void Close(std::uint64_t usedBytes, std::uint32_t flags) noexcept;

  private:
    struct Stretch
    {
        std::uint8_t *bytes = nullptr;
        std::atomic<std::uint32_t> complete{0}; // bytes
    };

    std::size_t IndexOf(std::uint64_t offset) const noexcept
    {
        return static_cast<std::size_t>(offset >> stepBits);
    }
    std::uint32_t BytesBefore(std::uint64_t end, std::size_t index) const noexcept; // of that stretch
    bool Map(std::size_t index);
    bool Lengthen(std::uint64_t bytes);
    void CutTo(const LARGE_INTEGER &length) const noexcept;

    const user_space_frameworks::UniqueHandle file;
    const std::uint32_t step;
    const unsigned stepBits;
    std::vector<Stretch> stretches; // as many as there may be
    std::atomic<std::uint64_t> mapped{0};
};

} // namespace mft_der
