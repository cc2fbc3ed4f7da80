// Which module speaks, in which process, on which machine: the first record of every trace, log and recording.
#pragma once

#include <windows.h>

#include <array>

#include "trace/TraceRecord.h"

namespace mft_utils
{

// Written just before the first other record, and not before: what is healthy leaves an error log empty. Immutable
// after the first use.
class ModuleRecord
{
  public:
    ModuleRecord(const ModuleRecord &) = delete;
    ModuleRecord &operator=(const ModuleRecord &) = delete;

    // The first call takes too long for a thread that has a frame: it is made when a log or session is opened.
    // Thread-safe.
    static const ModuleRecord &OfThisProcess() noexcept;

    static const char *Version() noexcept;
    // UTF-8, empty where it is not to be had; a path is cut after MAX_PATH characters.
    const char *Machine() const noexcept
    {
        return machine.data();
    }
    const char *ModulePath() const noexcept
    {
        return modulePath.data();
    }
    const char *ProcessPath() const noexcept
    {
        return processPath.data();
    }

    // Below every level, so that each session and each log takes it.
    static constexpr TraceLevel kLevel{0};

    // Calls `use` with the record as an event. The paths come last: a text that is too long is cut there.
    template <class Use>
    void AsEvent(Use use) const noexcept
    {
        const std::array<char, kDateSize> date = Today();
        use(TraceEvent{kLevel,
                       TraceOpcode::Info,
                       nullptr,
                       "Module",
                       {TraceField::String("Version", Version()), TraceField::String("Date", date.data()),
                        TraceField::String("Machine", machine.data()), TraceField::UInt32("ProcessId", processId),
                        TraceField::String("Windows", windowsVersion.data()),
                        TraceField::String("Path", modulePath.data()),
                        TraceField::String("Process", processPath.data())}});
    }

  private:
    static constexpr std::size_t kDateSize = 16;

    constexpr ModuleRecord() noexcept = default;

    void Read() noexcept;
    static std::array<char, kDateSize> Today() noexcept; // UTC, as in 2026-11-21

    using Path = std::array<char, std::size_t{3} * MAX_PATH>; // UTF-8
    static void ReadPath(HMODULE module, Path &path) noexcept;

    std::array<char, 3 * MAX_COMPUTERNAME_LENGTH + 1> machine{};
    std::array<char, 24> windowsVersion{};
    DWORD processId = 0;
    Path modulePath{};
    Path processPath{};
};

} // namespace mft_utils
