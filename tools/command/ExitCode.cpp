#include "tools/command/ExitCode.h"

#include <cstdio>
#include <cstdlib>
#include <iostream>

namespace tarn_host
{

void EndProcess(ExitCode code) noexcept
{
    std::cout.flush();
    std::cerr.flush();
    std::fflush(nullptr);
    TerminateProcess(GetCurrentProcess(), static_cast<UINT>(code));
    std::abort(); // not reached
}

} // namespace tarn_host
