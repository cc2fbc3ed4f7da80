#include "trace/TraceFile.h"

#include <cwchar>

namespace mft_utils
{

namespace
{
// A process that writes little still follows the others before its next line.
constexpr ULONGLONG kMsBetweenLooks = 1000;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Also true where it cannot be told: the log then goes on where it is.
bool IsSameFile(HANDLE a, HANDLE b) noexcept
{
    BY_HANDLE_FILE_INFORMATION first{};
    BY_HANDLE_FILE_INFORMATION second{};
    return GetFileInformationByHandle(a, &first) == 0 || GetFileInformationByHandle(b, &second) == 0 ||
           (first.dwVolumeSerialNumber == second.dwVolumeSerialNumber &&
            first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow);
}
} // namespace

bool TraceFile::Open(std::string_view utf8Path, std::uint64_t limitBytes) noexcept
{
    Close();
    path = {};
    Path given{};
    // In full: the process may change its current folder.
    if (MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8Path.data(), static_cast<int>(utf8Path.size()),
                            given.data(), kMaxPath - 1) <= 0)
    {
        return false;
    }
    pathLength = GetFullPathNameW(given.data(), kMaxPath, path.data(), nullptr);
    if (pathLength == 0 || pathLength >= kMaxPath)
    {
        return false;
    }
    limit = limitBytes;
    writtenSinceLook = kBytesBetweenLooks; // it may be full already
    file = OpenAtPath();
    isOnDisk = file != nullptr && GetFileType(file) == FILE_TYPE_DISK;
    return file != nullptr;
}

void TraceFile::Close() noexcept
{
    if (file != nullptr)
    {
        CloseHandle(file);
        file = nullptr;
        isOnDisk = false;
    }
}

bool TraceFile::Renew() noexcept
{
    const ULONGLONG now = GetTickCount64();
    if (!isOnDisk || (writtenSinceLook < kBytesBetweenLooks && now - lookedAtMs < kMsBetweenLooks))
    {
        return false;
    }
    writtenSinceLook = 0;
    lookedAtMs = now;
    if (IsAtPath() && (!IsFull() || !MoveAway()))
    {
        return false;
    }
    const HANDLE next = OpenAtPath();
    if (next == nullptr)
    {
        return false;
    }
    CloseHandle(file);
    file = next;
    return true;
}

void TraceFile::Write(const char *bytes, std::size_t size) noexcept
{
    DWORD written = 0;
    WriteFile(file, bytes, static_cast<DWORD>(size), &written, nullptr);
    writtenSinceLook += written;
}

TraceFile::Path TraceFile::Neighbour(const wchar_t *ending) const noexcept
{
    Path neighbour = path;
    std::wcscpy(neighbour.data() + pathLength, ending);
    return neighbour;
}

HANDLE TraceFile::OpenAtPath() const noexcept
{
    const HANDLE opened = CreateFileW(path.data(), FILE_APPEND_DATA | FILE_READ_ATTRIBUTES, kShareAll, nullptr,
                                      OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    return opened == INVALID_HANDLE_VALUE ? nullptr : opened;
}

bool TraceFile::IsAtPath() const noexcept
{
    const HANDLE there = CreateFileW(path.data(), FILE_READ_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                     FILE_ATTRIBUTE_NORMAL, nullptr);
    if (there == INVALID_HANDLE_VALUE)
    {
        return false; // somebody took it away
    }
    const bool same = IsSameFile(file, there);
    CloseHandle(there);
    return same;
}

bool TraceFile::IsFull() const noexcept
{
    LARGE_INTEGER size{};
    return GetFileSizeEx(file, &size) != 0 && static_cast<std::uint64_t>(size.QuadPart) >= limit;
}

// False while another process is at it: it is looked at again later.
bool TraceFile::MoveAway() const noexcept
{
    const HANDLE gate = CreateFileW(Neighbour(L".gate").data(), DELETE, 0, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (gate == INVALID_HANDLE_VALUE)
    {
        return false;
    }
    // Looked at again: between the first look and the gate another process may have moved it away.
    if (IsAtPath() && MoveFileExW(path.data(), Neighbour(L".old").data(), MOVEFILE_REPLACE_EXISTING) == 0)
    {
        // Somebody holds the older file, or it may not be renamed here: a full disk would be worse than a lost start.
        const HANDLE emptied = CreateFileW(path.data(), GENERIC_WRITE, kShareAll, nullptr, TRUNCATE_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr);
        if (emptied != INVALID_HANDLE_VALUE)
        {
            CloseHandle(emptied);
        }
    }
    CloseHandle(gate);
    return true;
}

} // namespace mft_utils
