#include "recorder/RecordingFile.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <utility>

namespace mft_der
{

using user_space_frameworks::UniqueHandle;

RecordingFile::RecordingFile(UniqueHandle openFile, std::uint32_t stepBytes, std::uint64_t longest)
    : file(std::move(openFile)), step(stepBytes), stepBits(static_cast<unsigned>(std::countr_zero(stepBytes))),
      stretches(static_cast<std::size_t>(longest >> stepBits))
{
}

RecordingFile::~RecordingFile()
{
    for (const Stretch &stretch : stretches)
    {
        if (stretch.bytes != nullptr)
        {
            UnmapViewOfFile(stretch.bytes);
        }
    }
}

bool RecordingFile::Begin()
{
    return Grow();
}

bool RecordingFile::GoOn()
{
    LARGE_INTEGER size{};
    if (GetFileSizeEx(file.Get(), &size) == FALSE ||
        static_cast<std::uint64_t>(size.QuadPart) < sizeof(tarn_recording_header) || !Map(0))
    {
        return false;
    }
    const tarn_recording_header &header = Header();
    const std::size_t index = IndexOf(header.usedBytes);
    if (header.magic != TARN_RECORDING_MAGIC || (header.flags & TARN_RECORDING_CLOSED) == 0 ||
        header.usedBytes < sizeof(header) || header.usedBytes % 8 != 0 || index >= stretches.size() ||
        (index != 0 && !Map(index)))
    {
        return false;
    }
    Complete(0, header.usedBytes);
    mapped.store(std::uint64_t{step} * (index + 1), std::memory_order_release);
    return true;
}

bool RecordingFile::Grow()
{
    const std::size_t index = IndexOf(MappedBytes());
    if (index >= stretches.size() || !Map(index))
    {
        return false;
    }
    mapped.store(std::uint64_t{step} * (index + 1), std::memory_order_release);
    return true;
}

bool RecordingFile::Map(std::size_t index)
{
    const std::uint64_t offset = std::uint64_t{step} * index;
    if (!Lengthen(offset + step))
    {
        return false;
    }
    const UniqueHandle section(CreateFileMappingW(file.Get(), nullptr, PAGE_READWRITE, 0, 0, nullptr));
    if (!section)
    {
        return false;
    }
    auto *const bytes = static_cast<std::uint8_t *>(MapViewOfFile(
        section.Get(), FILE_MAP_WRITE, static_cast<DWORD>(offset >> 32U), static_cast<DWORD>(offset), step));
    if (bytes == nullptr)
    {
        return false;
    }
    // Each page is brought in here, so that no recorded call waits for it.
    constexpr std::uint32_t page = 4096;
    for (std::uint32_t i = 0; i < step; i += page)
    {
        auto *const first = static_cast<volatile std::uint8_t *>(bytes + i);
        *first = *first;
    }
    stretches[index].bytes = bytes;
    return true;
}

// By writing zeros: a file that is only set longer may have no room on the disk yet, and a page that cannot be brought
// in would end the process.
bool RecordingFile::Lengthen(std::uint64_t bytes)
{
    static constexpr std::array<std::uint8_t, 65536> zeros{};
    LARGE_INTEGER size{};
    if (GetFileSizeEx(file.Get(), &size) == FALSE)
    {
        return false;
    }
    auto length = static_cast<std::uint64_t>(size.QuadPart);
    bool canWrite = length >= bytes || SetFilePointerEx(file.Get(), size, nullptr, FILE_BEGIN) != FALSE;
    while (canWrite && length < bytes)
    {
        DWORD written = 0;
        const auto count = static_cast<DWORD>(std::min<std::uint64_t>(bytes - length, zeros.size()));
        canWrite = WriteFile(file.Get(), zeros.data(), count, &written, nullptr) != FALSE && written != 0;
        length += written;
    }
    if (!canWrite)
    {
        const DWORD error = GetLastError();
        CutTo(size); // what is left of the disk is not ours to take
        SetLastError(error == ERROR_SUCCESS ? ERROR_DISK_FULL : error);
    }
    return canWrite;
}

void RecordingFile::CutTo(const LARGE_INTEGER &length) const noexcept
{
    if (SetFilePointerEx(file.Get(), length, nullptr, FILE_BEGIN) != FALSE)
    {
        SetEndOfFile(file.Get()); // where it cannot, zeros are left at the end
    }
}

std::uint32_t RecordingFile::BytesBefore(std::uint64_t end, std::size_t index) const noexcept
{
    const std::uint64_t begin = std::uint64_t{step} * index;
    return end <= begin ? 0 : static_cast<std::uint32_t>(std::min<std::uint64_t>(end - begin, step));
}

void RecordingFile::Complete(std::uint64_t offset, std::uint64_t bytes) noexcept
{
    const std::uint64_t end = offset + bytes;
    for (std::size_t i = IndexOf(offset); i <= IndexOf(end - 1); ++i)
    {
        stretches[i].complete.fetch_add(BytesBefore(end, i) - BytesBefore(offset, i), std::memory_order_release);
    }
}

void RecordingFile::Write(std::uint64_t offset, Bytes bytes) noexcept
{
    while (!bytes.empty())
    {
        const auto inside = static_cast<std::size_t>(offset & (step - 1));
        const std::size_t count = std::min<std::size_t>(bytes.size(), step - inside);
        std::memcpy(stretches[IndexOf(offset)].bytes + inside, bytes.data(), count);
        bytes = bytes.subspan(count);
        offset += count;
    }
}

void RecordingFile::Release(std::uint64_t offset) noexcept
{
    const auto end = IndexOf(offset);
    for (std::size_t i = 1; i < end; ++i) // the first one has the header
    {
        Stretch &stretch = stretches[i];
        if (stretch.bytes != nullptr && stretch.complete.load(std::memory_order_acquire) == step)
        {
            UnmapViewOfFile(std::exchange(stretch.bytes, nullptr));
        }
    }
}

bool RecordingFile::IsComplete(std::uint64_t usedBytes) const noexcept
{
    for (std::size_t i = 0; i < stretches.size(); ++i)
    {
        const Stretch &stretch = stretches[i];
        if (stretch.bytes != nullptr && stretch.complete.load(std::memory_order_acquire) != BytesBefore(usedBytes, i))
        {
            return false;
        }
    }
    return true;
}

void RecordingFile::Close(std::uint64_t usedBytes, std::uint32_t flags) noexcept
{
    tarn_recording_header &header = Header();
    header.usedBytes = usedBytes;
    header.flags |= flags | TARN_RECORDING_CLOSED;
    for (Stretch &stretch : stretches)
    {
        if (stretch.bytes != nullptr)
        {
            UnmapViewOfFile(std::exchange(stretch.bytes, nullptr));
        }
    }
    LARGE_INTEGER end{};
    end.QuadPart = static_cast<LONGLONG>(usedBytes);
    CutTo(end);
}

} // namespace mft_der
