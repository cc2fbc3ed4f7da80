#include "tools/names/PipelineNames.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <stdexcept>
#include <string_view>

#include "base/KsIdNames.h"
#include "tarn/event_recording.h"

namespace tarn_host
{

namespace
{

template <class Key>
struct Named
{
    Key key;
    const char *name;
};
using NamedBytes = Named<std::array<std::uint8_t, 16>>;
using NamedNumber = Named<std::uint32_t>;

constexpr auto kGuids = std::to_array<NamedBytes>({
#include "GuidTable.inc"
});
constexpr auto kEvents = std::to_array<NamedNumber>({
#include "EventTable.inc"
});
constexpr auto kMessages = std::to_array<NamedNumber>({
#include "MessageTable.inc"
});

struct OwnKsId
{
    const char *set;
    std::uint32_t id;
    const char *name;
};
constexpr auto kOwnKsIds = std::to_array<OwnKsId>({
#include "KsIdTable.inc"
});

// clang-format off
constexpr auto kRecordTypes = std::to_array<NamedNumber>({
    {TARN_RECORD_SESSION, "SESSION"}, {TARN_RECORD_TRANSFORM, "TRANSFORM"}, {TARN_RECORD_CALL, "CALL"},
    {TARN_RECORD_RETURN, "RETURN"}, {TARN_RECORD_EVENT, "EVENT"}, {TARN_RECORD_KS_CALL, "KS_CALL"},
    {TARN_RECORD_KS_RETURN, "KS_RETURN"}, {TARN_RECORD_DEVICE_EVENT, "DEVICE_EVENT"}, {TARN_RECORD_CAMERA, "CAMERA"},
    {TARN_RECORD_PIXELS, "PIXELS"}, {TARN_RECORD_OUTPUT_HASH, "OUTPUT_HASH"}, {TARN_RECORD_DROPPED, "DROPPED"},
    {TARN_RECORD_CHANGE, "CHANGE"},
});

constexpr auto kCalls = std::to_array<NamedNumber>({
    {TARN_CALL_INITIALIZE_TRANSFORM, "InitializeTransform"},
    {TARN_CALL_GET_INPUT_AVAILABLE_TYPE, "GetInputAvailableType"},
    {TARN_CALL_GET_INPUT_CURRENT_TYPE, "GetInputCurrentType"},
    {TARN_CALL_GET_INPUT_STREAM_ATTRIBUTES, "GetInputStreamAttributes"},
    {TARN_CALL_GET_OUTPUT_AVAILABLE_TYPE, "GetOutputAvailableType"},
    {TARN_CALL_GET_OUTPUT_CURRENT_TYPE, "GetOutputCurrentType"},
    {TARN_CALL_GET_OUTPUT_STREAM_ATTRIBUTES, "GetOutputStreamAttributes"},
    {TARN_CALL_GET_STREAM_COUNT, "GetStreamCount"},
    {TARN_CALL_GET_STREAM_IDS, "GetStreamIDs"},
    {TARN_CALL_PROCESS_EVENT, "ProcessEvent"},
    {TARN_CALL_PROCESS_INPUT, "ProcessInput"},
    {TARN_CALL_PROCESS_MESSAGE, "ProcessMessage"},
    {TARN_CALL_PROCESS_OUTPUT, "ProcessOutput"},
    {TARN_CALL_SET_INPUT_STREAM_STATE, "SetInputStreamState"},
    {TARN_CALL_GET_INPUT_STREAM_STATE, "GetInputStreamState"},
    {TARN_CALL_SET_OUTPUT_STREAM_STATE, "SetOutputStreamState"},
    {TARN_CALL_GET_OUTPUT_STREAM_STATE, "GetOutputStreamState"},
    {TARN_CALL_GET_INPUT_STREAM_PREFERRED_STATE, "GetInputStreamPreferredState"},
    {TARN_CALL_FLUSH_INPUT_STREAM, "FlushInputStream"},
    {TARN_CALL_FLUSH_OUTPUT_STREAM, "FlushOutputStream"},
    {TARN_CALL_GET_ATTRIBUTES, "GetAttributes"},
    {TARN_CALL_SHUTDOWN, "Shutdown"},
    {TARN_CALL_GET_SHUTDOWN_STATUS, "GetShutdownStatus"},
    {TARN_CALL_REGISTER_THREADS_EX, "RegisterThreadsEx"},
    {TARN_CALL_UNREGISTER_THREADS, "UnregisterThreads"},
    {TARN_CALL_SET_WORK_QUEUE_EX, "SetWorkQueueEx"},
    {TARN_CALL_GET_EVENT, "GetEvent"},
    {TARN_CALL_BEGIN_GET_EVENT, "BeginGetEvent"},
    {TARN_CALL_END_GET_EVENT, "EndGetEvent"},
    {TARN_CALL_QUEUE_EVENT, "QueueEvent"},
    {TARN_CALL_SET_DEFAULT_ALLOCATOR, "SetDefaultAllocator"},
    {TARN_CALL_GET_ALLOCATOR_USAGE, "GetAllocatorUsage"},
});

constexpr auto kStreamStates = std::to_array<NamedNumber>({{0, "stop"}, {1, "pause"}, {2, "run"}, {3, "disabled"}});

// KSPROPERTY_TYPE_..., KSEVENT_TYPE_..., KSMETHOD_TYPE_... of ks.h.
constexpr auto kPropertyFlags = std::to_array<NamedNumber>({
    {0x1, "GET"}, {0x2, "SET"}, {0x100, "SETSUPPORT"}, {0x200, "BASICSUPPORT"}, {0x400, "RELATIONS"},
    {0x800, "SERIALIZESET"}, {0x1000, "UNSERIALIZESET"}, {0x2000, "SERIALIZERAW"}, {0x4000, "UNSERIALIZERAW"},
    {0x8000, "SERIALIZESIZE"}, {0x10000, "DEFAULTVALUES"}, {0x10000000, "TOPOLOGY"},
});
constexpr auto kEventFlags = std::to_array<NamedNumber>({
    {0x1, "ENABLE"}, {0x2, "ONESHOT"}, {0x4, "ENABLEBUFFERED"}, {0x100, "SETSUPPORT"}, {0x200, "BASICSUPPORT"},
    {0x400, "QUERYBUFFER"}, {0x10000000, "TOPOLOGY"},
});
constexpr auto kMethodFlags = std::to_array<NamedNumber>({
    {0x1, "SEND"}, {0x100, "SETSUPPORT"}, {0x200, "BASICSUPPORT"}, {0x10000000, "TOPOLOGY"},
});
// clang-format on

const char *GuidName(GuidBytes guid) noexcept
{
    std::array<std::uint8_t, 16> key;
    std::copy(guid.begin(), guid.end(), key.begin());
    const auto *const found = std::ranges::lower_bound(kGuids, key, {}, &NamedBytes::key);
    return found != kGuids.end() && found->key == key ? found->name : nullptr;
}

std::string HexText(std::uint32_t number)
{
    std::array<char, 12> text{};
    std::snprintf(text.data(), text.size(), "0x%lX", static_cast<unsigned long>(number));
    return text.data();
}

std::string NameOr(std::span<const NamedNumber> names, std::uint32_t number, const char *what)
{
    const auto found = std::ranges::find(names, number, &NamedNumber::key);
    return found != names.end() ? found->name : std::string(what) + " " + std::to_string(number);
}

const char *KsName(std::uint32_t kind, std::string_view set, std::uint32_t id) noexcept
{
    using namespace user_space_frameworks;
    std::span<const char *const> names;
    if (kind == TARN_KS_PROPERTY && set == "KSPROPERTYSETID_ExtendedCameraControl")
    {
        names = kExtendedCameraControlNames;
    }
    else if (kind == TARN_KS_PROPERTY && set == "PROPSETID_VIDCAP_CAMERACONTROL")
    {
        names = kCameraControlNames;
    }
    else if (kind == TARN_KS_PROPERTY && set == "PROPSETID_VIDCAP_VIDEOPROCAMP")
    {
        names = kVideoProcAmpNames;
    }
    else if (kind == TARN_KS_EVENT && set == "KSEVENTSETID_VIDCAPTOSTI")
    {
        names = kVideoCaptureEventNames;
    }
    const auto own = std::ranges::find_if(
        kOwnKsIds, [&](const OwnKsId &one) { return kind == TARN_KS_PROPERTY && one.set == set && one.id == id; });
    return id < names.size() ? names[id] : own != kOwnKsIds.end() ? own->name : nullptr;
}

} // namespace

std::string GuidText(GuidBytes guid)
{
    const char *const name = GuidName(guid);
    return name != nullptr ? name : Guid::Of(guid).ToText();
}

Guid GuidNamed(std::string_view name)
{
    const auto found =
        std::ranges::find(kGuids, name, [](const NamedBytes &one) { return std::string_view(one.name); });
    if (found == kGuids.end())
    {
        throw std::logic_error("no GUID is named " + std::string(name));
    }
    return {found->key};
}

std::string SubtypeText(GuidBytes guid)
{
    constexpr std::string_view prefix = "MFVideoFormat_";
    const char *const name = GuidName(guid);
    if (name != nullptr && std::string_view(name).starts_with(prefix))
    {
        return name + prefix.size();
    }
    const auto four = guid.first<4>();
    const bool isText = std::ranges::all_of(four, [](std::uint8_t byte) { return byte > ' ' && byte < 0x7F; });
    return isText ? std::string(four.begin(), four.end()) : GuidText(guid);
}

std::string EventTypeText(std::uint32_t mediaEventType)
{
    return NameOr(kEvents, mediaEventType, "event type");
}

std::string MessageText(std::uint32_t message)
{
    return NameOr(kMessages, message, "message");
}

std::string StreamStateText(std::uint32_t state)
{
    return NameOr(kStreamStates, state, "state");
}

std::string KsIdText(std::uint32_t kind, GuidBytes set, std::uint32_t id)
{
    const char *const setName = GuidName(set);
    const char *const name = setName != nullptr ? KsName(kind, setName, id) : nullptr;
    return name != nullptr ? std::string(name) + " (" + std::to_string(id) + ")" : std::to_string(id);
}

std::string KsFlagsText(std::uint32_t kind, std::uint32_t flags)
{
    const std::span<const NamedNumber> names = kind == TARN_KS_PROPERTY ? std::span<const NamedNumber>(kPropertyFlags)
                                               : kind == TARN_KS_EVENT  ? std::span<const NamedNumber>(kEventFlags)
                                                                        : std::span<const NamedNumber>(kMethodFlags);
    std::string text;
    for (const NamedNumber &one : names)
    {
        if ((flags & one.key) != 0)
        {
            text.append(text.empty() ? "" : "|").append(one.name);
            flags &= ~one.key;
        }
    }
    if (flags != 0)
    {
        text.append(text.empty() ? "" : "|").append(HexText(flags));
    }
    return text.empty() ? "0" : text;
}

std::string RecordTypeText(std::uint16_t type)
{
    return NameOr(kRecordTypes, type, "record type");
}

std::string ChangeText(std::uint16_t change)
{
    constexpr auto names = std::to_array<NamedNumber>({{TARN_CHANGE_BEGINS, "begins"},
                                                       {TARN_CHANGE_OUTPUT_EMPTIED, "output emptied"},
                                                       {TARN_CHANGE_FACE_LOGIN, "face-login mode"}});
    return NameOr(names, change, "change");
}

std::string CallText(std::uint16_t call)
{
    return NameOr(kCalls, call, "call");
}

} // namespace tarn_host
