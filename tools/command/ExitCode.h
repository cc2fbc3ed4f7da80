// How a tarn-host command can fail, and what the process then returns.
#pragma once

#include <windows.h>

#include <stdexcept>
#include <string>

#include "base/ThrowIfFailed.h"
#include "tools/names/ResultNames.h"

namespace tarn_host
{

// Listed in --help; scripts rely on them.
enum class ExitCode : int
{
    Success = 0,
    Failure = 1,      // Something went wrong while running, or frames were lost or reordered.
    Usage = 2,        // A wrong option, or an input that is missing or unreadable.
    Interrupted = 130 // Ended by Ctrl-C, with the results so far.
};

// What the user asked for cannot be done. Ends the program with ExitCode::Usage and one line.
class UsageError : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
};

// A step failed at run time. Ends the program with ExitCode::Failure and one line.
class HostError : public std::runtime_error
{
  public:
    using std::runtime_error::runtime_error;
    // Names the step and the result.
    HostError(HRESULT result, const std::string &step)
        : std::runtime_error(step + " failed with " + ResultText(static_cast<std::uint32_t>(result)))
    {
    }
};

// Throws HostError naming the step when `result` is a failure.
inline void ThrowIfFailed(HRESULT result, const char *step)
{
    mft_utils::ThrowIfFailed<HostError>(result, step);
}

// Writes out what was printed and ends the process at once. The platform's worker threads end only some time after
// MFShutdown, and one that runs into the process's own clean-up can crash or hang it (Wine 8 under load).
[[noreturn]] void EndProcess(ExitCode code) noexcept;

} // namespace tarn_host
