#include "tools/ks/KsClient.h"

#include "platform/ExtendedCameraControl.h"

#include <array>
#include <cstring>
#include <utility>

#include "tarn/depth_presets.h"
#include "tools/command/ExitCode.h"
#include "tools/command/Text.h"

namespace tarn_host
{

namespace
{

constexpr ULONGLONG kFaceLoginOff = KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_DISABLED;
constexpr ULONGLONG kFaceLoginOn = KSCAMERA_EXTENDEDPROP_FACEAUTH_MODE_ALTERNATIVE_FRAME_ILLUMINATION;

struct ExtendedControl
{
    KSCAMERA_EXTENDEDPROP_HEADER header;
    KSCAMERA_EXTENDEDPROP_VALUE value;
};
static_assert(sizeof(ExtendedControl) == 40);

// Replies about a control's values: description, members header, then one byte per value.
constexpr std::size_t kFirstValue = sizeof(KSPROPERTY_DESCRIPTION) + sizeof(KSPROPERTY_MEMBERSHEADER);
constexpr ULONG kRangeSize = kFirstValue + 3; // minimum, maximum, step
constexpr ULONG kDefaultSize = kFirstValue + 1;
constexpr ULONG kDefaultCapacity = kDefaultSize + 1; // what drivers expect for this request
static_assert(kRangeSize == 59 && kDefaultCapacity == 58);

KSPROPERTY_TARN_HW_COMMAND HeaderOf(const FirmwareCommand &command, std::size_t bufferLength)
{
    KSPROPERTY_TARN_HW_COMMAND header{};
    header.opCode = command.opcode;
    header.bufferLength = static_cast<std::uint32_t>(bufferLength);
    header.param1 = command.param1;
    header.param2 = command.param2;
    header.param3 = command.param3;
    header.param4 = command.param4;
    return header;
}

std::string StepOf(const FirmwareCommand &command)
{
    return Format("firmware command 0x%02lX", static_cast<unsigned long>(command.opcode));
}

} // namespace

struct KsClient::Request
{
    std::string step; // for errors
    GUID set;
    ULONG id;
    ULONG flags;

    static Request Private(std::string step, KSPROPERTY_TARN_DMFT_CONTROL id, ULONG flags)
    {
        return {std::move(step), KSPROPERTYSETID_TARN_DMFT_CONTROL, static_cast<ULONG>(id), flags};
    }
    static Request FaceLogin(std::string step, ULONG flags)
    {
        return {std::move(step), KSPROPERTYSETID_ExtendedCameraControl, KSPROPERTY_CAMERACONTROL_EXTENDED_FACEAUTH_MODE,
                flags};
    }
    static Request Extension(const std::string &verb, const ExtensionControl &control, ULONG flags)
    {
        return {verb + " " + control.name, control.set, control.id, flags};
    }
};

KsClient::KsClient(ComPtr<IKsControl> targetKsControl) : ksControl(std::move(targetKsControl)) {}

KsClient::Reply KsClient::Ask(const Request &request, void *data, ULONG size) const
{
    KSPROPERTY property{};
    property.Set = request.set;
    property.Id = request.id;
    property.Flags = request.flags;
    Reply reply;
    reply.result = ksControl->KsProperty(&property, sizeof(property), data, size, &reply.size);
    return reply;
}

void KsClient::Get(const Request &request, void *data, ULONG capacity, ULONG needed) const
{
    const Reply reply = Ask(request, data, capacity);
    // A call that nothing serves ends with a positive number.
    if (reply.result != S_OK)
    {
        throw HostError(reply.result, request.step);
    }
    if (reply.size < needed || reply.size > capacity)
    {
        throw HostError(request.step + ": the answer has " + std::to_string(reply.size) + " bytes, " +
                        std::to_string(needed) + " expected");
    }
}

void KsClient::Set(const Request &request, const void *data, ULONG size) const
{
    // IKsControl has one pointer for both directions; a set does not write through it.
    const Reply reply = Ask(request, const_cast<void *>(data), size);
    if (reply.result != S_OK)
    {
        throw HostError(reply.result, request.step);
    }
}

KSPROPERTY_TARN_API_VERSION KsClient::ApiVersion() const
{
    KSPROPERTY_TARN_API_VERSION version{};
    Get(Request::Private("getting the API version", KSPROPERTY_TARN_DMFT_CONTROL_API_VERSION, KSPROPERTY_TYPE_GET),
        &version, sizeof(version), sizeof(version));
    return version;
}

std::uint32_t KsClient::Preset() const
{
    KSPROPERTY_TARN_DEPTH_PRESET payload{};
    Get(Request::Private("getting the preset", KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS, KSPROPERTY_TYPE_GET),
        &payload, sizeof(payload), sizeof(payload));
    return payload.preset;
}

void KsClient::SetPreset(std::uint32_t preset) const
{
    const KSPROPERTY_TARN_DEPTH_PRESET payload{preset};
    Set(Request::Private("setting preset " + std::to_string(preset), KSPROPERTY_TARN_DMFT_CONTROL_DEPTH_PRESETS,
                         KSPROPERTY_TYPE_SET),
        &payload, sizeof(payload));
}

bool KsClient::ConfidenceMap() const
{
    KSPROPERTY_TARN_CONFIDENCE_MAP_CFG payload{};
    Get(Request::Private("getting the confidence map's state", KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP,
                         KSPROPERTY_TYPE_GET),
        &payload, sizeof(payload), sizeof(payload));
    return payload.confidenceMapCfg != 0;
}

void KsClient::SetConfidenceMap(bool on) const
{
    const KSPROPERTY_TARN_CONFIDENCE_MAP_CFG payload{on ? 1U : 0U};
    Set(Request::Private(std::string("switching the confidence map ") + (on ? "on" : "off"),
                         KSPROPERTY_TARN_DMFT_CONTROL_CONFIDENCE_MAP, KSPROPERTY_TYPE_SET),
        &payload, sizeof(payload));
}

bool KsClient::FaceLogin() const
{
    ExtendedControl payload{};
    payload.header.PinId = KSCAMERA_EXTENDEDPROP_FILTERSCOPE;
    Get(Request::FaceLogin("getting the face login mode", KSPROPERTY_TYPE_GET), &payload, sizeof(payload),
        sizeof(payload));
    return payload.header.Flags == kFaceLoginOn;
}

void KsClient::SetFaceLogin(bool on) const
{
    ExtendedControl payload{};
    payload.header.Version = 1;
    payload.header.PinId = KSCAMERA_EXTENDEDPROP_FILTERSCOPE;
    payload.header.Size = sizeof(payload);
    payload.header.Flags = on ? kFaceLoginOn : kFaceLoginOff;
    Set(Request::FaceLogin(std::string("switching face login ") + (on ? "on" : "off"), KSPROPERTY_TYPE_SET), &payload,
        sizeof(payload));
}

void KsClient::SendFirmwareCommand(const FirmwareCommand &command, std::span<const std::uint8_t> data) const
{
    const KSPROPERTY_TARN_HW_COMMAND header = HeaderOf(command, data.size());
    std::vector<std::uint8_t> payload(sizeof(header));
    std::memcpy(payload.data(), &header, sizeof(header));
    payload.insert(payload.end(), data.begin(), data.end());
    Set(Request::Private(StepOf(command), KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND, KSPROPERTY_TYPE_SET), payload.data(),
        static_cast<ULONG>(payload.size()));
}

std::vector<std::uint8_t> KsClient::AskFirmware(const FirmwareCommand &command, std::uint32_t answerBytes) const
{
    const KSPROPERTY_TARN_HW_COMMAND header = HeaderOf(command, answerBytes);
    std::vector<std::uint8_t> payload(sizeof(header) + answerBytes);
    std::memcpy(payload.data(), &header, sizeof(header));
    const auto size = static_cast<ULONG>(payload.size());
    Get(Request::Private(StepOf(command), KSPROPERTY_TARN_DMFT_CONTROL_HW_COMMAND, KSPROPERTY_TYPE_GET), payload.data(),
        size, size);
    return {payload.begin() + sizeof(header), payload.end()};
}

std::uint32_t KsClient::Size(const ExtensionControl &control) const
{
    const Request request = Request::Extension("asking for the size of", control, KSPROPERTY_TYPE_GET);
    const Reply reply = Ask(request, nullptr, 0);
    if (reply.result != HRESULT_FROM_WIN32(ERROR_MORE_DATA))
    {
        throw HostError(reply.result, request.step);
    }
    return reply.size;
}

std::uint8_t KsClient::Value(const ExtensionControl &control) const
{
    std::uint8_t value = 0;
    Get(Request::Extension("getting", control, KSPROPERTY_TYPE_GET), &value, sizeof(value), sizeof(value));
    return value;
}

void KsClient::SetValue(const ExtensionControl &control, std::uint8_t value) const
{
    Request request = Request::Extension("setting", control, KSPROPERTY_TYPE_SET);
    request.step += " to " + std::to_string(value);
    Set(request, &value, sizeof(value));
}

ControlRange KsClient::Range(const ExtensionControl &control) const
{
    std::array<std::uint8_t, kRangeSize> reply{};
    Get(Request::Extension("asking for the range of", control, KSPROPERTY_TYPE_BASICSUPPORT), reply.data(), kRangeSize,
        kRangeSize);
    return {reply[kFirstValue], reply[kFirstValue + 1], reply[kFirstValue + 2]};
}

std::uint8_t KsClient::Default(const ExtensionControl &control) const
{
    std::array<std::uint8_t, kDefaultCapacity> reply{};
    Get(Request::Extension("asking for the default of", control, KSPROPERTY_TYPE_DEFAULTVALUES), reply.data(),
        kDefaultCapacity, kDefaultSize);
    return reply[kFirstValue];
}

} // namespace tarn_host
