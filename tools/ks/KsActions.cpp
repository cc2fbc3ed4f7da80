#include "tools/ks/KsActions.h"

#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"
#include "tools/ks/KsDeviceInfo.h"
#include "tools/ks/KsSettings.h"
#include "tools/ks/KsText.h"

namespace tarn_host
{

namespace
{

using Json = nlohmann::ordered_json;

void AddControl(KsReport &report, const KsClient &client, const ExtensionControl &control)
{
    const std::uint32_t size = client.Size(control);
    Json row = {{"control", control.name}, {"id", control.id}, {"size", size}};
    report.text += Format("%-22s  %3lu  %4lu", control.name.c_str(), control.id, static_cast<unsigned long>(size));
    if (size == 1)
    {
        const std::uint8_t value = client.Value(control);
        const ControlRange range = client.Range(control);
        const std::uint8_t usual = client.Default(control);
        row["value"] = value;
        row["minimum"] = range.minimum;
        row["maximum"] = range.maximum;
        row["step"] = range.step;
        row["default"] = usual;
        report.text += Format("  %5d  %7d  %7d  %4d  %7d\n", value, range.minimum, range.maximum, range.step, usual);
    }
    else
    {
        report.text += Format("  %5s  %7s  %7s  %4s  %7s\n", "-", "-", "-", "-", "-");
    }
    report.json["controls"].push_back(row);
}

KsReport SendCommand(const KsClient &client, const FirmwareCommand &command, const std::vector<std::uint8_t> &data)
{
    client.SendFirmwareCommand(command, data);
    return {Format("firmware command 0x%02lX: accepted, %zu bytes sent\n", static_cast<unsigned long>(command.opcode),
                   data.size()),
            {{"opcode", command.opcode}, {"sent", ToHex(data)}}};
}

KsReport AskCommand(const KsClient &client, const FirmwareCommand &command, std::uint32_t answerBytes)
{
    const std::vector<std::uint8_t> answer = client.AskFirmware(command, answerBytes);
    KsReport report{Format("firmware command 0x%02lX: %zu bytes of answer\n",
                           static_cast<unsigned long>(command.opcode), answer.size()) +
                        HexDump(answer),
                    {{"opcode", command.opcode}, {"answer", ToHex(answer)}}};
    if (command.opcode == HWmonitor_GetDeviceInfo)
    {
        const Json info = DecodeDeviceInfo(answer);
        for (const auto &[name, value] : info.items())
        {
            const std::string text = value.is_string()    ? value.get<std::string>()
                                     : value.is_boolean() ? (value.get<bool>() ? "checks" : "does not check")
                                                          : value.dump();
            report.text += Format("%-20s %s\n", name.c_str(), text.c_str());
        }
        if (!info.is_null())
        {
            report.json["deviceInfo"] = info;
        }
    }
    return report;
}

} // namespace

KsAction ListControls(TransformKind transform)
{
    return [controls = ExtensionControlsOf(transform)](const KsClient &client) {
        KsReport report{"control                  id  size  value  minimum  maximum  step  default\n",
                        {{"controls", Json::array()}}};
        for (const ExtensionControl &control : controls)
        {
            AddControl(report, client, control);
        }
        return report;
    };
}

KsAction GetSetting(TransformKind transform, const std::string &name)
{
    return [setting = FindSetting(transform, name)](const KsClient &client) -> KsReport {
        const KsReading reading = setting.read(client);
        return {setting.name + " = " + reading.text + "\n", {{"name", setting.name}, {"value", reading.json}}};
    };
}

KsAction SetSetting(TransformKind transform, const std::string &name, const std::string &value)
{
    const KsSetting setting = FindSetting(transform, name);
    if (!setting.write)
    {
        throw UsageError(setting.name + " can only be read");
    }
    return [setting, parsed = setting.parse(value)](const KsClient &client) -> KsReport {
        const KsReading before = setting.read(client);
        setting.write(client, parsed);
        const KsReading after = setting.read(client);
        return {setting.name + " = " + after.text + "   (before: " + before.text + ")\n",
                {{"name", setting.name}, {"before", before.json}, {"value", after.json}}};
    };
}

KsAction RunFirmwareCommand(const FirmwareCommand &command, const std::vector<std::uint8_t> &data,
                            std::optional<std::uint32_t> answerBytes)
{
    if (data.size() > TARN_HW_COMMAND_MAX_SET)
    {
        throw UsageError("--send: a command carries " + std::to_string(TARN_HW_COMMAND_MAX_SET) + " bytes at most");
    }
    if (answerBytes)
    {
        return [command, bytes = *answerBytes](const KsClient &client) { return AskCommand(client, command, bytes); };
    }
    return [command, data](const KsClient &client) { return SendCommand(client, command, data); };
}

} // namespace tarn_host
