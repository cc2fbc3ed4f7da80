// One subcommand of tarn-host. A new one is a pair of files and one line in main.cpp.
#pragma once

#include "tools/command/ExitCode.h"

namespace CLI
{
class App;
}

namespace tarn_host
{

// Owned by the command line for the life of the process. Confined.
class Command
{
  public:
    virtual ~Command() = default;

    virtual const char *Name() const noexcept = 0;
    virtual const char *Summary() const noexcept = 0;
    // Adds the options of this command; they write into the command object.
    virtual void AddOptions(CLI::App &app) = 0;
    // Throws UsageError or HostError; the return value tells the outcome of a run that came to its end.
    virtual ExitCode Run() = 0;
};

} // namespace tarn_host
