#include "tools/ks/KsCommand.h"

#include <CLI/CLI.hpp>

#include <iostream>

#include "tools/command/Choice.h"
#include "tools/command/ParseErrorText.h"
#include "tools/frameserver/LoadedModule.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

KsAction ReadAction(const std::string &text, TransformKind transform)
{
    CLI::App parser;
    parser.set_help_flag();
    parser.require_subcommand(1);
    KsActionLine line;
    line.AddTo(parser);
    try
    {
        parser.parse(text);
    }
    catch (const CLI::ParseError &error)
    {
        throw UsageError("ks do: '" + text + "': " + ParseErrorText(parser, error));
    }
    return line.Make(transform);
}

} // namespace

KsCommand::KsCommand() : KsCommand(RunOverModule, std::cout) {}

KsCommand::KsCommand(Runner sessionRunner, std::ostream &resultOutput)
    : Command("ks", "get and set properties and controls, send firmware commands"), runner(std::move(sessionRunner)),
      output(resultOutput)
{
}

void KsCommand::AddOptions(CLI::App &app)
{
    AddChoice<TransformKind>(app, "--transform", transform,
                             {{"depth", TransformKind::Depth}, {"color", TransformKind::Color}},
                             "which transform of the module (default depth)");
    app.add_option("--dll", module, "the module (default: tarn_dmft.dll beside this program)")->type_name("PATH");
    app.add_flag("--register", registerFirst, kRegisterHelp);
    app.add_flag("--json", json, "results as JSON");
    action.AddTo(app);
    CLI::App *const several =
        app.add_subcommand("do", "several actions on one camera, for example: ks do \"set preset low-power\" list");
    several->fallthrough();
    several->add_option("actions", actionTexts, "each with its arguments as one word")->required()->type_name("ACTION");
}

KsSessionOptions KsCommand::ReadOptions() const
{
    return {transform, module.empty() ? DefaultModulePath() : ToPath(module),
            registerFirst ? ModuleAccess::Registry : ModuleAccess::File};
}

std::vector<KsAction> KsCommand::ReadActions() const
{
    if (action.IsGiven())
    {
        return {action.Make(transform)};
    }
    if (actionTexts.empty())
    {
        throw UsageError("ks: one of list, get, set, command and do is needed (see ks --help)");
    }
    std::vector<KsAction> actions;
    for (const std::string &text : actionTexts)
    {
        actions.push_back(ReadAction(text, transform));
    }
    return actions;
}

ExitCode KsCommand::Run()
{
    const std::vector<KsAction> actions = ReadActions();
    nlohmann::ordered_json results = nlohmann::ordered_json::array();
    runner(ReadOptions(), [&](const KsClient &client) {
        for (const KsAction &one : actions)
        {
            const KsReport report = one(client);
            results.push_back(report.json);
            if (!json)
            {
                output << report.text << std::flush;
            }
        }
    });
    if (json)
    {
        output << (action.IsGiven() ? results.front() : results).dump(2) << '\n';
    }
    return ExitCode::Success;
}

} // namespace tarn_host
