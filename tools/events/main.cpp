// tarn-events: reads recorded sessions where no module runs.

#include <CLI/CLI.hpp>

#include <iostream>

#include "tools/events/EventsProgram.h"

int main(int argumentCount, char **arguments)
{
    CLI::App app("Reads recorded sessions of the Tarn device transforms.", "tarn-events");
    app.footer("Exit codes: 0 success, 1 recordings differ or the run failed, 2 wrong options or unusable input.");
    tarn_host::EventsProgram program;
    program.AddOptions(app);
    try
    {
        app.parse(argumentCount, arguments);
        return program.Run(std::cout);
    }
    catch (const CLI::CallForHelp &)
    {
        std::cout << app.help();
        return 0;
    }
    catch (const CLI::ParseError &error)
    {
        std::cerr << "tarn-events: " << error.what() << " (see --help)\n";
        return 2;
    }
    catch (const tarn_host::EventsInputError &error)
    {
        std::cerr << "tarn-events: " << error.what() << '\n';
        return 2;
    }
    catch (const std::exception &error)
    {
        std::cerr << "tarn-events: " << error.what() << '\n';
        return 1;
    }
}
