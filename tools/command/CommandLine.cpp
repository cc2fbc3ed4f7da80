#include "tools/command/CommandLine.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <ostream>

#include "tools/command/ParseErrorText.h"

namespace tarn_host
{

namespace
{

constexpr const char *kProgram = "tarn-host";
constexpr const char *kExitCodes = "Exit codes: 0 success, 1 run-time failure or lost or reordered frames, 2 wrong "
                                   "options or unusable input, 130 Ctrl-C.";

} // namespace

CommandLine::CommandLine(std::vector<std::unique_ptr<Command>> availableCommands)
    : commands(std::move(availableCommands))
{
}

ExitCode CommandLine::Run(std::vector<std::string> arguments, std::ostream &output, std::ostream &errors)
{
    CLI::App app("Plays the frame server for the Tarn device transforms over a simulated camera.", kProgram);
    app.require_subcommand(1);
    app.footer(kExitCodes);
    app.get_formatter()->column_width(32);
    Command *chosen = nullptr;
    for (const auto &command : commands)
    {
        CLI::App *subcommand = app.add_subcommand(command->Name(), command->Summary());
        subcommand->footer(kExitCodes);
        command->AddOptions(*subcommand);
        subcommand->final_callback([&chosen, &command] { chosen = command.get(); });
    }

    try
    {
        // The parser would only say that a subcommand is required.
        const auto isAsked = [&](const auto &command) { return command->Name() == arguments.front(); };
        if (!arguments.empty() && !arguments.front().starts_with('-') &&
            std::none_of(commands.begin(), commands.end(), isAsked))
        {
            throw UsageError("no command '" + arguments.front() + "' (see --help)");
        }
        // The parser takes its arguments from the back.
        std::reverse(arguments.begin(), arguments.end());
        app.parse(std::move(arguments));
        return chosen->Run();
    }
    catch (const CLI::CallForHelp &)
    {
        output << app.help();
        return ExitCode::Success;
    }
    catch (const CLI::ParseError &error)
    {
        errors << kProgram << ": " << ParseErrorText(app, error) << " (see --help)\n";
        return ExitCode::Usage;
    }
    catch (const UsageError &error)
    {
        errors << kProgram << ": " << error.what() << '\n';
        return ExitCode::Usage;
    }
    catch (const std::exception &error)
    {
        errors << kProgram << ": " << error.what() << '\n';
        return ExitCode::Failure;
    }
}

} // namespace tarn_host
