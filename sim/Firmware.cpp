#include "sim/Firmware.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "sim/CameraIdentifiers.h"

namespace tarn_sim
{

namespace
{
constexpr std::uint16_t kMagic = 0xCDAB;
constexpr std::size_t kHeaderBytes = 24;
constexpr std::size_t kLengthCountsFrom = 4;
constexpr std::size_t kShortestLength = 20;
constexpr std::size_t kAutoRangeBytes = 12;
constexpr std::size_t kHdrConfigurationBytes = 8;
constexpr std::size_t kMostAnswerData = Firmware::kTransferBytes - sizeof(std::uint32_t);

template <class Value>
Value Read(std::span<const std::uint8_t> bytes, std::size_t offset)
{
    Value value{};
    std::memcpy(&value, bytes.data() + offset, sizeof(value));
    return value;
}

void Append(std::vector<std::uint8_t> &bytes, std::uint32_t value)
{
    const auto *const first = reinterpret_cast<const std::uint8_t *>(&value);
    bytes.insert(bytes.end(), first, first + sizeof(value));
}
} // namespace

struct Firmware::Command
{
    std::uint32_t opcode = 0;
    std::array<std::uint32_t, 4> parameters{};
    std::span<const std::uint8_t> data;
};

Firmware::Firmware(std::vector<std::uint8_t> deviceInfoAnswer, std::shared_ptr<CameraControls> cameraControls,
                   std::shared_ptr<FaultInjector> faultInjector)
    : deviceInfo(std::move(deviceInfoAnswer)), controls(std::move(cameraControls)), faults(std::move(faultInjector))
{
}

// Fills the answer's data; false when the command is refused. Under the lock.
bool Firmware::Execute(const Command &command, std::vector<std::uint8_t> &data)
{
    switch (command.opcode)
    {
    case HWmonitor_GetDeviceInfo:
        data = deviceInfo;
        return !deviceInfo.empty();
    case HWmonitor_SetAutoRange:
        if (!command.data.empty() && command.data.size() != kAutoRangeBytes)
        {
            return false;
        }
        state.autoRange.assign(command.data.begin(), command.data.end());
        state.autoRangeParam1 = command.parameters[0];
        state.autoRangeParam2 = command.parameters[1];
        return true;
    case HWmonitor_HDRSet:
        if (!command.data.empty() || command.parameters[0] > 1)
        {
            return false;
        }
        state.hdrOn = command.parameters[0] == 1;
        controls->hdr = state.hdrOn;
        return true;
    case HWmonitor_HDRConfigSet:
        if (command.data.size() != kHdrConfigurationBytes)
        {
            return false;
        }
        state.hdrConfiguration.assign(command.data.begin(), command.data.end());
        return true;
    case kOpcodeEcho:
        if (!command.data.empty())
        {
            echoed.assign(command.data.begin(), command.data.end());
            data = echoed;
            return true;
        }
        while (data.size() + sizeof(std::uint32_t) <= kMostAnswerData)
        {
            Append(data, command.parameters.at(data.size() / sizeof(std::uint32_t) % command.parameters.size()));
        }
        return true;
    case kOpcodeRecall:
        data = echoed;
        return true;
    default:
        return false;
    }
}

void Firmware::Write(std::span<const std::uint8_t> block)
{
    const AnswerFault fault = faults->OnFirmwareCommand();
    const std::scoped_lock guard(lock);
    ++state.commands;

    Command command;
    std::vector<std::uint8_t> data;
    bool accepted = false;
    const std::size_t length = block.size() == kTransferBytes ? Read<std::uint16_t>(block, 0) : 0;
    if (length >= kShortestLength && length + kLengthCountsFrom <= kTransferBytes &&
        Read<std::uint16_t>(block, 2) == kMagic)
    {
        command.opcode = Read<std::uint32_t>(block, 4);
        for (std::size_t i = 0; i < command.parameters.size(); ++i)
        {
            command.parameters.at(i) = Read<std::uint32_t>(block, 8 + i * sizeof(std::uint32_t));
        }
        command.data = block.subspan(kHeaderBytes, length - kShortestLength);
        state.lastOpcode = command.opcode;
        accepted = Execute(command, data);
    }
    if (!accepted)
    {
        ++state.refused;
        data.clear();
    }

    answer.clear();
    Append(answer, fault.echo ? *fault.echo : accepted ? command.opcode : kRefusal);
    answer.insert(answer.end(), data.begin(),
                  data.begin() + static_cast<std::ptrdiff_t>(std::min(data.size(), kMostAnswerData)));
    if (fault.length)
    {
        answer.resize(std::min<std::size_t>(answer.size(), *fault.length));
    }
}

std::vector<std::uint8_t> Firmware::Answer() const
{
    const std::scoped_lock guard(lock);
    return answer;
}

FirmwareState Firmware::State() const
{
    const std::scoped_lock guard(lock);
    return state;
}

} // namespace tarn_sim
