#include "recorder/SessionDescription.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "recorder/RecordingClock.h"
#include "trace/ModuleRecord.h"

namespace mft_der
{

using mft_utils::ModuleRecord;

namespace
{
std::uint64_t NowUtc() noexcept
{
    FILETIME now{};
    GetSystemTimePreciseAsFileTime(&now);
    return std::uint64_t{now.dwHighDateTime} << 32U | now.dwLowDateTime;
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
    Fill(header.moduleVersion, ModuleRecord::Version());
    Fill(header.machine, ModuleRecord::OfThisProcess().Machine());
    return header;
}

void DescribeSession(RecordBuilder &values)
{
    const ModuleRecord &module = ModuleRecord::OfThisProcess();
    values.Text(TARN_VALUE_NAME, ModuleRecord::Version())
        .Text(TARN_VALUE_MODULE_PATH, module.ModulePath())
        .Text(TARN_VALUE_PROCESS_PATH, module.ProcessPath());
}

} // namespace mft_der
