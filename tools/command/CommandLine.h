// The command line of tarn-host: subcommands, help, and one clear line for whatever goes wrong.
#pragma once

#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#include "tools/command/Command.h"

namespace tarn_host
{

// Parses and runs. Confined.
class CommandLine
{
  public:
    explicit CommandLine(std::vector<std::unique_ptr<Command>> availableCommands);

    // `arguments` without the program's name, UTF-8. Help goes to `output`; an error is one line on `errors`.
    ExitCode Run(std::vector<std::string> arguments, std::ostream &output, std::ostream &errors);

  private:
    std::vector<std::unique_ptr<Command>> commands;
};

} // namespace tarn_host
