#include "trace/KsIdentifierTranslator.h"

#include "platform/ExtendedCameraControl.h"

#include <array>
#include <cstdio>
#include <span>
#include <utility>

#include "base/GuidLess.h"
#include "trace/GuidTranslator.h"
#include "trace/NameTable.h"

namespace mft_utils
{

namespace
{

struct Identity
{
    KsIdentifierKind kind;
    GUID set;
    ULONG id;

    bool operator<(const Identity &other) const noexcept
    {
        if (kind != other.kind)
        {
            return kind < other.kind;
        }
        if (id != other.id)
        {
            return id < other.id;
        }
        return GuidLess()(set, other.set);
    }
};

constinit NameTable<Identity> table;

// clang-format off
// Ids count up from 0 ("KSPROPERTY_CAMERACONTROL_EXTENDED_PROPERTY enumeration (ksmedia.h)").
constexpr auto kExtendedCameraControls = std::to_array<const char *>({
    "PHOTOMODE", "PHOTOFRAMERATE", "PHOTOMAXFRAMERATE", "PHOTOTRIGGERTIME", "WARMSTART", "MAXVIDFPS_PHOTORES",
    "PHOTOTHUMBNAIL", "SCENEMODE", "TORCHMODE", "FLASHMODE", "OPTIMIZATIONHINT", "WHITEBALANCEMODE", "EXPOSUREMODE",
    "FOCUSMODE", "ISO", "FIELDOFVIEW", "EVCOMPENSATION", "CAMERAANGLEOFFSET", "METADATA", "FOCUSPRIORITY", "FOCUSSTATE",
    "ROI_CONFIGCAPS", "ROI_ISPCONTROL", "PHOTOCONFIRMATION", "ZOOM", "MCC", "ISO_ADVANCED", "VIDEOSTABILIZATION", "VFR",
    "FACEDETECTION", "VIDEOHDR", "HISTOGRAM", "OIS", "ADVANCEDPHOTO", "PROFILE", "FACEAUTH_MODE", "SECURE_MODE",
    "VIDEOTEMPORALDENOISING", "IRTORCHMODE", "RELATIVEPANELOPTIMIZATION", "EYEGAZECORRECTION", "BACKGROUNDSEGMENTATION",
    "DIGITALWINDOW_CONFIGCAPS", "DIGITALWINDOW",
});
static_assert(kExtendedCameraControls.size() == 44);

// "KSPROPERTY_VIDCAP_CAMERACONTROL enumeration (ksmedia.h)".
constexpr auto kCameraControls = std::to_array<const char *>({
    "PAN", "TILT", "ROLL", "ZOOM", "EXPOSURE", "IRIS", "FOCUS", "SCANMODE", "PRIVACY", "PANTILT", "PAN_RELATIVE",
    "TILT_RELATIVE", "ROLL_RELATIVE", "ZOOM_RELATIVE", "EXPOSURE_RELATIVE", "IRIS_RELATIVE", "FOCUS_RELATIVE",
    "PANTILT_RELATIVE", "FOCAL_LENGTH", "AUTO_EXPOSURE_PRIORITY",
});

// "KSPROPERTY_VIDCAP_VIDEOPROCAMP enumeration (ksmedia.h)".
constexpr auto kVideoProcAmps = std::to_array<const char *>({
    "BRIGHTNESS", "CONTRAST", "HUE", "SATURATION", "SHARPNESS", "GAMMA", "COLORENABLE", "WHITEBALANCE",
    "BACKLIGHT_COMPENSATION", "GAIN", "DIGITAL_MULTIPLIER", "DIGITAL_MULTIPLIER_LIMIT", "WHITEBALANCE_COMPONENT",
    "POWERLINE_FREQUENCY",
});

// "KSEVENT_VIDCAPTOSTI enumeration (ksmedia.h)".
constexpr auto kVideoCaptureEvents = std::to_array<const char *>({"EXT_TRIGGER", "AUTO_UPDATE", "SEARCH"});
// clang-format on

void AddAll(NameTable<Identity>::Map &names, KsIdentifierKind kind, const GUID &set,
            std::span<const char *const> idNames)
{
    for (ULONG id = 0; id < idNames.size(); ++id)
    {
        names.emplace(Identity{kind, set, id}, idNames[id]);
    }
}

struct FlagName
{
    ULONG flag;
    const char *name;
};

constexpr auto kPropertyFlags = std::to_array<FlagName>({
    {KSPROPERTY_TYPE_GET, "GET"},
    {KSPROPERTY_TYPE_SET, "SET"},
    {KSPROPERTY_TYPE_SETSUPPORT, "SETSUPPORT"},
    {KSPROPERTY_TYPE_BASICSUPPORT, "BASICSUPPORT"},
    {KSPROPERTY_TYPE_RELATIONS, "RELATIONS"},
    {KSPROPERTY_TYPE_SERIALIZESET, "SERIALIZESET"},
    {KSPROPERTY_TYPE_UNSERIALIZESET, "UNSERIALIZESET"},
    {KSPROPERTY_TYPE_SERIALIZERAW, "SERIALIZERAW"},
    {KSPROPERTY_TYPE_UNSERIALIZERAW, "UNSERIALIZERAW"},
    {KSPROPERTY_TYPE_SERIALIZESIZE, "SERIALIZESIZE"},
    {KSPROPERTY_TYPE_DEFAULTVALUES, "DEFAULTVALUES"},
    {KSPROPERTY_TYPE_TOPOLOGY, "TOPOLOGY"},
});

constexpr auto kEventFlags = std::to_array<FlagName>({
    {KSEVENT_TYPE_ENABLE, "ENABLE"},
    {KSEVENT_TYPE_ONESHOT, "ONESHOT"},
    {KSEVENT_TYPE_ENABLEBUFFERED, "ENABLEBUFFERED"},
    {KSEVENT_TYPE_SETSUPPORT, "SETSUPPORT"},
    {KSEVENT_TYPE_BASICSUPPORT, "BASICSUPPORT"},
    {KSEVENT_TYPE_QUERYBUFFER, "QUERYBUFFER"},
    {KSEVENT_TYPE_TOPOLOGY, "TOPOLOGY"},
});

// The low bits say how a method's buffer travels, not what is asked.
constexpr auto kMethodFlags = std::to_array<FlagName>({
    {KSMETHOD_TYPE_SEND, "SEND"},
    {KSMETHOD_TYPE_SETSUPPORT, "SETSUPPORT"},
    {KSMETHOD_TYPE_BASICSUPPORT, "BASICSUPPORT"},
    {KSMETHOD_TYPE_TOPOLOGY, "TOPOLOGY"},
});

std::span<const FlagName> FlagNames(KsIdentifierKind kind) noexcept
{
    switch (kind)
    {
    case KsIdentifierKind::Property:
        return kPropertyFlags;
    case KsIdentifierKind::Event:
        return kEventFlags;
    case KsIdentifierKind::Method:
        break;
    }
    return kMethodFlags;
}

std::string HexToString(ULONG value)
{
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "0x%lX", static_cast<unsigned long>(value));
    return text.data();
}

std::string FlagsToString(ULONG flags, KsIdentifierKind kind)
{
    std::string text;
    ULONG unnamed = flags;
    for (const FlagName &entry : FlagNames(kind))
    {
        if ((flags & entry.flag) != 0)
        {
            text.append(text.empty() ? "" : "|").append(entry.name);
            unnamed &= ~entry.flag;
        }
    }
    if (unnamed != 0)
    {
        text.append(text.empty() ? "" : "|").append(HexToString(unnamed));
    }
    return text.empty() ? "0" : text;
}

const char *KindName(KsIdentifierKind kind) noexcept
{
    switch (kind)
    {
    case KsIdentifierKind::Property:
        return "property";
    case KsIdentifierKind::Event:
        return "event";
    case KsIdentifierKind::Method:
        break;
    }
    return "method";
}

} // namespace

HRESULT KsIdentifierTranslator::Create() noexcept
{
    return table.Create([](auto &names) {
        AddAll(names, KsIdentifierKind::Property, KSPROPERTYSETID_ExtendedCameraControl, kExtendedCameraControls);
        AddAll(names, KsIdentifierKind::Property, PROPSETID_VIDCAP_CAMERACONTROL, kCameraControls);
        AddAll(names, KsIdentifierKind::Property, PROPSETID_VIDCAP_VIDEOPROCAMP, kVideoProcAmps);
        AddAll(names, KsIdentifierKind::Event, KSEVENTSETID_VIDCAPTOSTI, kVideoCaptureEvents);
    });
}

void KsIdentifierTranslator::Destroy() noexcept
{
    table.Destroy();
}

HRESULT KsIdentifierTranslator::Register(KsIdentifierKind kind, const GUID &set, ULONG id, const char *name) noexcept
{
    return table.Register(Identity{kind, set, id}, name);
}

std::string KsIdentifierTranslator::Name(const KSIDENTIFIER *identifier, KsIdentifierKind kind)
{
    if (identifier == nullptr)
    {
        return "null";
    }
    const std::string idName = table.Find({kind, identifier->Set, identifier->Id});
    const std::string id = std::to_string(identifier->Id);
    return GuidTranslator::Name(identifier->Set) + " " + KindName(kind) + " " +
           (idName.empty() ? id : idName + " (" + id + ")") + " " + FlagsToString(identifier->Flags, kind);
}

} // namespace mft_utils
