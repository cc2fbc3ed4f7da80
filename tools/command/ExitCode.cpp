#include "tools/command/ExitCode.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace tarn_host
{

namespace
{

std::string WithResult(const std::string &what, HRESULT result)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08lX", static_cast<unsigned long>(result));
    return what + " failed with " + text;
}

} // namespace

HostError::HostError(const std::string &what, HRESULT result) : std::runtime_error(WithResult(what, result)) {}

void ThrowIfFailed(HRESULT result, const char *step)
{
    if (FAILED(result))
    {
        throw HostError(step, result);
    }
}

void EndProcess(ExitCode code) noexcept
{
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    std::abort(); // not reached
}

} // namespace tarn_host
