#include "trace/TraceDestination.h"

#include <array>
#include <cstring>

namespace mft_utils
{

namespace
{
// Null when it cannot be opened. The path is UTF-8; lines are added to what the file holds.
HANDLE OpenFile(std::string_view path) noexcept
{
    std::array<wchar_t, 1024> widePath{};
    const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, path.data(), static_cast<int>(path.size()),
                                           widePath.data(), static_cast<int>(widePath.size() - 1));
    if (length <= 0)
    {
        return nullptr;
    }
    const HANDLE opened =
        CreateFileW(widePath.data(), FILE_APPEND_DATA, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                    OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    return opened == INVALID_HANDLE_VALUE ? nullptr : opened;
}
} // namespace

bool TraceDestination::Open(const TraceSetting &setting) noexcept
{
    Close();
    switch (setting.destination)
    {
    case TraceSetting::Destination::Debugger:
        return true;
    case TraceSetting::Destination::StandardError:
        file = GetStdHandle(STD_ERROR_HANDLE);
        file = file == INVALID_HANDLE_VALUE ? nullptr : file;
        break;
    case TraceSetting::Destination::File:
        file = OpenFile(setting.path);
        fileIsOwned = file != nullptr;
        break;
    }
    return file != nullptr;
}

void TraceDestination::Close() noexcept
{
    if (fileIsOwned)
    {
        CloseHandle(file);
    }
    file = nullptr;
    fileIsOwned = false;
}

void TraceDestination::Write(const TraceText &line) noexcept
{
    if (file == nullptr)
    {
        OutputDebugStringA(line.Text());
        OutputDebugStringA("\n");
        return;
    }
    // One write per line, so that lines of several processes do not mix.
    std::array<char, TraceText::kCapacity + 2> bytes{};
    std::memcpy(bytes.data(), line.Text(), line.Length());
    std::size_t size = line.Length();
    bytes[size++] = '\r';
    bytes[size++] = '\n';
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(size), &written, nullptr);
}

} // namespace mft_utils
