#include "tools/support/CheckInstallCommand.h"

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <iterator>

#include "tools/command/Text.h"
#include "tools/installation/InstallReport.h"

namespace tarn_host
{

void CheckInstallCommand::AddOptions(CLI::App &app)
{
    app.add_option("--facts", file, "what check-install.ps1 wrote (tarn-install.json)")->required()->type_name("FILE");
}

ExitCode CheckInstallCommand::Run()
{
    std::ifstream stream(ToPath(file), std::ios::binary);
    if (!stream)
    {
        throw UsageError("cannot read " + file);
    }
    const std::string text{std::istreambuf_iterator<char>(stream), {}};
    try
    {
        const InstallFacts facts = InstallFacts::Parse(text);
        return WriteInstallReport(std::cout, Decide(facts, TARN_HOST_VERSION)) ? ExitCode::Success : ExitCode::Failure;
    }
    catch (const NotFacts &error)
    {
        throw UsageError(file + ": " + error.what());
    }
}

} // namespace tarn_host
