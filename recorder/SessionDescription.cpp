#include "recorder/SessionDescription.h"

#include <windows.h>

#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include "base/WideString.h"
#include "recorder/RecordingClock.h"

namespace mft_der
{

namespace
{
std::uint64_t NowUtc() noexcept
{
    FILETIME now{};
    GetSystemTimePreciseAsFileTime(&now);
    return std::uint64_t{now.dwHighDateTime} << 32U | now.dwLowDateTime;
}

// Null for the process's own file. Cut where it is longer than paths usually are.
std::string PathOf(HMODULE module)
{
    std::array<wchar_t, 1024> path{};
    const DWORD length = GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    return mft_utils::Narrow({path.data(), length});
}

HMODULE ThisModule() noexcept
{
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<const wchar_t *>(&ThisModule), &module);
    return module;
}

template <std::size_t size>
void Fill(char (&field)[size], std::string_view text) noexcept
{
    std::memcpy(field, text.data(), std::min(text.size(), size - 1));
}
} // namespace

tarn_recording_header MakeHeader() noexcept
{
    tarn_recording_header header{};
    header.magic = TARN_RECORDING_MAGIC;
    header.version = TARN_RECORDING_VERSION;
    header.headerBytes = sizeof(header);
    header.processId = GetCurrentProcessId();
    header.startTime = NowUtc();
    header.startClock = RecordingClock();
    Fill(header.moduleVersion, TARN_MODULE_VERSION);
    std::array<char, 256> machine{};
    auto length = static_cast<DWORD>(machine.size());
    if (GetComputerNameA(machine.data(), &length) != FALSE)
    {
        Fill(header.machine, {machine.data(), length});
    }
    return header;
}

void DescribeSession(RecordBuilder &values)
{
    values.Text(TARN_VALUE_NAME, TARN_MODULE_VERSION)
        .Text(TARN_VALUE_MODULE_PATH, PathOf(ThisModule()))
        .Text(TARN_VALUE_PROCESS_PATH, PathOf(nullptr));
}

} // namespace mft_der
