#include "tools/ks/KsActionLine.h"

#include <CLI/CLI.hpp>

#include "tools/command/ExitCode.h"
#include "tools/ks/KsText.h"

namespace tarn_host
{

CLI::App &KsActionLine::AddAction(CLI::App &app, const std::string &verb, const std::string &help, Maker maker)
{
    CLI::App *const action = app.add_subcommand(verb, help);
    action->fallthrough();
    action->final_callback([this, maker] { make = maker; });
    return *action;
}

void KsActionLine::AddTo(CLI::App &app)
{
    AddAction(app, "list", "controls of the extension unit with value, range and default", &KsActionLine::MakeList);
    AddAction(app, "get", "a property or a control", &KsActionLine::MakeGet)
        .add_option("name", name, "api-version, preset, confidence-map, face-login or a control")
        ->required()
        ->type_name("NAME");
    CLI::App &set = AddAction(app, "set", "a property or a control, and read it back", &KsActionLine::MakeSet);
    set.add_option("name", name, "preset, confidence-map, face-login or a control")->required()->type_name("NAME");
    set.add_option("value", value, "name or number of a preset, on or off, number")->required()->type_name("VALUE");
    AddCommand(app);
}

void KsActionLine::AddCommand(CLI::App &app)
{
    CLI::App &command = AddAction(app, "command", "send a raw firmware command", &KsActionLine::MakeCommand);
    command.add_option("opcode", opcode, "decimal or 0x...")->required()->type_name("OPCODE");
    for (std::size_t i = 0; i < parameters.size(); ++i)
    {
        command.add_option("--param" + std::to_string(i + 1), parameters[i], "parameter of the command (default 0)")
            ->type_name("N");
    }
    CLI::Option *const data = command.add_option("--send", send, "data that goes with the command, at most 1000 bytes");
    data->type_name("HEX");
    command.add_option("--answer", answer, "ask for so much of the answer, at most 1020 bytes")
        ->type_name("BYTES")
        ->excludes(data);
}

KsAction KsActionLine::MakeList(TransformKind transform) const
{
    return ListControls(transform);
}

KsAction KsActionLine::MakeGet(TransformKind transform) const
{
    return GetSetting(transform, name);
}

KsAction KsActionLine::MakeSet(TransformKind transform) const
{
    return SetSetting(transform, name, value);
}

KsAction KsActionLine::MakeCommand(TransformKind transform) const
{
    if (transform != TransformKind::Depth)
    {
        throw UsageError("the color transform has no firmware commands");
    }
    const auto numberOf = [](const std::string &what, const std::string &text) {
        return text.empty() ? 0 : ParseNumber(what, text);
    };
    FirmwareCommand command;
    command.opcode = ParseNumber("opcode", opcode);
    command.param1 = numberOf("--param1", parameters[0]);
    command.param2 = numberOf("--param2", parameters[1]);
    command.param3 = numberOf("--param3", parameters[2]);
    command.param4 = numberOf("--param4", parameters[3]);
    std::optional<std::uint32_t> answerBytes;
    if (!answer.empty())
    {
        answerBytes = ParseNumber("--answer", answer, TARN_HW_COMMAND_MAX_GET);
    }
    return RunFirmwareCommand(command, ParseHex("--send", send), answerBytes);
}

} // namespace tarn_host
