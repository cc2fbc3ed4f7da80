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
    // Both texts outlive the command: the word that chooses it, and what it does, in a line of the help.
    Command(const char *commandName, const char *commandSummary) : name(commandName), summary(commandSummary) {}
    virtual ~Command() = default;

    const char *Name() const noexcept
    {
        return name;
    }
    const char *Summary() const noexcept
    {
        return summary;
    }
    // Adds the options of this command; they write into the command object.
    virtual void AddOptions(CLI::App &app) = 0;
    // Throws UsageError or HostError; the return value tells the outcome of a run that came to its end.
    virtual ExitCode Run() = 0;

  private:
    const char *name;
    const char *summary;
};

} // namespace tarn_host
