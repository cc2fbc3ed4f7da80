#include "trace/DebugTraceSink.h"

#include <array>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "base/SharedLock.h"
#include "trace/TraceChannels.h"
#include "trace/TraceText.h"
#include "base/UniqueHandle.h"

namespace mft_utils
{

namespace
{

using user_space_frameworks::SharedLock;

constinit SharedLock lock;
HANDLE file TARN_GUARDED_BY(lock) = nullptr;    // null sends lines to the debugger
bool fileIsOwned TARN_GUARDED_BY(lock) = false; // standard error is not
DebugTraceSink::LineCallback lineCallback TARN_GUARDED_BY(lock) = nullptr;
void *callbackContext TARN_GUARDED_BY(lock) = nullptr;
std::atomic<std::uint32_t> configuredLevel{0};
std::atomic<std::uint32_t> callbackLevel{0};
std::atomic<std::uint32_t> failedLocks{0};

// A tracing thread waits this long at most; at the end of the process the thread that held the lock may be gone.
constexpr int kLockYields = 200;
constexpr int kLockSleepsOf1ms = 50;

TARN_TRY_ACQUIRE(true, lock) bool LockBriefly() noexcept
{
    for (int attempt = 0; attempt < kLockYields + kLockSleepsOf1ms; ++attempt)
    {
        if (lock.try_lock())
        {
            return true;
        }
        Sleep(attempt < kLockYields ? 0 : 1);
    }
    failedLocks.fetch_add(1, std::memory_order_relaxed);
    return false;
}

const char *LevelName(TraceLevel level) noexcept
{
    switch (level)
    {
    case TraceLevel::Error:
        return "error";
    case TraceLevel::Information:
        return "info";
    case TraceLevel::Verbose:
        break;
    }
    return "verbose";
}

std::uint32_t ParseLevel(std::string_view word) noexcept
{
    for (const TraceLevel level : {TraceLevel::Error, TraceLevel::Information, TraceLevel::Verbose})
    {
        const auto number = static_cast<std::uint32_t>(level);
        if (word == LevelName(level) || (word.size() == 1 && static_cast<std::uint32_t>(word[0] - '0') == number))
        {
            return number;
        }
    }
    return 0;
}

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

TARN_REQUIRES(lock) void SetDestination(HANDLE newFile, bool isOwned, std::uint32_t level) noexcept
{
    if (fileIsOwned)
    {
        CloseHandle(file);
    }
    file = newFile;
    fileIsOwned = isOwned;
    configuredLevel.store(level, std::memory_order_relaxed);
}

void AppendHeader(TraceText &line, TraceLevel level, std::string_view function) noexcept
{
    FILETIME now;
    SYSTEMTIME time;
    GetSystemTimePreciseAsFileTime(&now);
    FileTimeToSystemTime(&now, &time);
    const std::uint64_t time100ns = (std::uint64_t{now.dwHighDateTime} << 32) | now.dwLowDateTime;
    line.AppendFormat("%02u:%02u:%02u.%06u %5lu %-7s ", time.wHour, time.wMinute, time.wSecond,
                      static_cast<unsigned>(time100ns / 10 % 1000000), static_cast<unsigned long>(GetCurrentThreadId()),
                      LevelName(level));
    line.Append(function);
}

void AppendField(TraceText &line, const TraceField &field) noexcept
{
    line.AppendFormat(" %s=", field.name == nullptr ? "" : field.name);
    switch (field.type)
    {
    case TraceField::Type::AnsiString:
        line.AppendFormat("\"%s\"", field.string == nullptr ? "" : field.string);
        break;
    case TraceField::Type::Int64:
        line.AppendFormat("%lld", static_cast<long long>(field.int64));
        break;
    case TraceField::Type::UInt32:
        line.AppendFormat("%lu", static_cast<unsigned long>(field.uint32));
        break;
    case TraceField::Type::HexInt32:
        line.AppendFormat("0x%08lX", static_cast<unsigned long>(field.uint32));
        break;
    case TraceField::Type::Guid: {
        static constexpr GUID kNoGuid{};
        const GUID &guid = field.guid == nullptr ? kNoGuid : *field.guid;
        line.AppendFormat("{%08lX-%04X-%04X-%02X%02X-%02X%02X%02X%02X%02X%02X}", static_cast<unsigned long>(guid.Data1),
                          guid.Data2, guid.Data3, guid.Data4[0], guid.Data4[1], guid.Data4[2], guid.Data4[3],
                          guid.Data4[4], guid.Data4[5], guid.Data4[6], guid.Data4[7]);
        break;
    }
    }
}

TARN_REQUIRES(lock) void SendToDestination(const char *text, std::size_t length) noexcept
{
    if (file == nullptr)
    {
        OutputDebugStringA(text);
        OutputDebugStringA("\n");
        return;
    }
    // One write per line, so that lines of several processes do not mix.
    std::array<char, TraceText::kCapacity + 2> bytes{};
    std::memcpy(bytes.data(), text, length);
    std::size_t size = length;
    bytes[size++] = '\r';
    bytes[size++] = '\n';
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(size), &written, nullptr);
}

void Emit(TraceLevel level, const TraceText &line) noexcept
{
    if (!LockBriefly())
    {
        return;
    }
    const std::scoped_lock guard(std::adopt_lock, lock);
    // Checked again: the sink may have been closed since.
    if (DebugTraceSink::EnabledLevel() < static_cast<std::uint32_t>(level))
    {
        return;
    }
    if (lineCallback != nullptr)
    {
        lineCallback(callbackContext, level, line.Text());
        return;
    }
    if (const std::uint32_t lost = failedLocks.exchange(0, std::memory_order_relaxed); lost != 0)
    {
        TraceText note;
        note.AppendFormat("(%lu lines lost)", static_cast<unsigned long>(lost));
        SendToDestination(note.Text(), note.Length());
    }
    SendToDestination(line.Text(), line.Length());
}

} // namespace

void DebugTraceSink::ConfigureFromEnvironment() noexcept
{
    std::array<wchar_t, 1024> wide{};
    std::array<char, 3 * wide.size()> setting{};
    const DWORD length = GetEnvironmentVariableW(L"TARN_TRACE", wide.data(), static_cast<DWORD>(wide.size()));
    if (length == 0 || length >= wide.size())
    {
        return;
    }
    const int size = WideCharToMultiByte(CP_UTF8, 0, wide.data(), static_cast<int>(length), setting.data(),
                                         static_cast<int>(setting.size()), nullptr, nullptr);
    if (size > 0)
    {
        Configure(std::string_view(setting.data(), static_cast<std::size_t>(size)));
    }
}

bool DebugTraceSink::Configure(std::string_view setting) noexcept
{
    constexpr std::string_view kFile = "file=";
    const std::size_t comma = setting.find(',');
    std::uint32_t level = ParseLevel(setting.substr(0, comma));
    HANDLE newFile = nullptr;
    bool isOwned = false;
    if (level != 0 && comma != std::string_view::npos)
    {
        const std::string_view option = setting.substr(comma + 1);
        if (option == "file=stderr")
        {
            newFile = GetStdHandle(STD_ERROR_HANDLE);
        }
        else if (option.starts_with(kFile) && option.size() > kFile.size())
        {
            newFile = OpenFile(option.substr(kFile.size()));
            isOwned = newFile != nullptr;
        }
        if (newFile == nullptr || newFile == INVALID_HANDLE_VALUE)
        {
            newFile = nullptr;
            level = 0;
        }
    }
    {
        const std::scoped_lock guard(lock);
        SetDestination(newFile, isOwned, level);
    }
    UpdateTraceLevels();
    return level != 0;
}

void DebugTraceSink::Close() noexcept
{
    // Levels first: should the lock be lost with a thread that was ended, nothing is written any more all the same.
    configuredLevel.store(0, std::memory_order_relaxed);
    callbackLevel.store(0, std::memory_order_relaxed);
    if (LockBriefly())
    {
        const std::scoped_lock guard(std::adopt_lock, lock);
        SetDestination(nullptr, false, 0);
        lineCallback = nullptr;
        callbackContext = nullptr;
    }
    UpdateTraceLevels();
}

void DebugTraceSink::SetCallback(LineCallback callback, void *context, TraceLevel level) noexcept
{
    {
        const std::scoped_lock guard(lock);
        lineCallback = callback;
        callbackContext = context;
        callbackLevel.store(callback == nullptr ? 0 : static_cast<std::uint32_t>(level), std::memory_order_relaxed);
    }
    UpdateTraceLevels();
}

std::uint32_t DebugTraceSink::EnabledLevel() noexcept
{
    const std::uint32_t ofCallback = callbackLevel.load(std::memory_order_relaxed);
    return ofCallback != 0 ? ofCallback : configuredLevel.load(std::memory_order_relaxed);
}

void DebugTraceSink::WriteLine(TraceLevel level, std::string_view function, const char *text) noexcept
{
    if (EnabledLevel() < static_cast<std::uint32_t>(level))
    {
        return;
    }
    TraceText line;
    AppendHeader(line, level, function);
    line.Append(": ");
    line.Append(text == nullptr ? "" : text);
    Emit(level, line);
}

void DebugTraceSink::WriteEvent(TraceLevel level, std::uint8_t opcode, const GUID *activity, const char *eventName,
                                std::initializer_list<TraceField> fields) noexcept
{
    if (EnabledLevel() < static_cast<std::uint32_t>(level))
    {
        return;
    }
    TraceText line;
    AppendHeader(line, level, "event ");
    line.Append(eventName == nullptr ? "" : eventName);
    line.Append(opcode == 1 ? " start" : opcode == 2 ? " stop" : "");
    if (activity != nullptr)
    {
        // The first field counts the activities of this process; the rest is the same for all of them.
        line.AppendFormat(" #%lu", static_cast<unsigned long>(activity->Data1));
    }
    for (const TraceField &field : fields)
    {
        AppendField(line, field);
    }
    Emit(level, line);
}

} // namespace mft_utils
