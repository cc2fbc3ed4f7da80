#include "trace/TraceDestination.h"

#include <array>
#include <cstring>

#include "trace/ModuleRecord.h"
#include "trace/TraceLine.h"

namespace mft_utils
{

bool TraceDestination::Open(const TraceSetting &setting) noexcept
{
    Close();
    ModuleRecord::OfThisProcess(); // read here, before frames wait for it
    moduleRecordDue = true;
    switch (setting.destination)
    {
    case TraceSetting::Destination::Debugger:
        return true;
    case TraceSetting::Destination::StandardError:
        standardError = GetStdHandle(STD_ERROR_HANDLE);
        standardError = standardError == INVALID_HANDLE_VALUE ? nullptr : standardError;
        return standardError != nullptr;
    case TraceSetting::Destination::File:
        return file.Open(setting.path, setting.limitBytes);
    }
    return false;
}

void TraceDestination::Close() noexcept
{
    file.Close();
    standardError = nullptr;
}

void TraceDestination::Write(const TraceText &line) noexcept
{
    if (file.Renew() || moduleRecordDue)
    {
        moduleRecordDue = false;
        ModuleRecord::OfThisProcess().AsEvent([this](const TraceEvent &record) { WriteLine(TraceLine(record)); });
    }
    WriteLine(line);
}

void TraceDestination::WriteLine(const TraceText &line) noexcept
{
    if (!file.IsOpen() && standardError == nullptr)
    {
        OutputDebugStringA(line.Text());
        OutputDebugStringA("\n");
        return;
    }
    std::array<char, TraceText::kCapacity + 2> bytes{};
    std::memcpy(bytes.data(), line.Text(), line.Length());
    std::size_t size = line.Length();
    bytes[size++] = '\r';
    bytes[size++] = '\n';
    if (file.IsOpen())
    {
        file.Write(bytes.data(), size);
        return;
    }
    DWORD written = 0;
    WriteFile(standardError, bytes.data(), static_cast<DWORD>(size), &written, nullptr);
}

} // namespace mft_utils
