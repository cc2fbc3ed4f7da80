#include "trace/KsIdentifierTranslator.h"

#include "platform/ExtendedCameraControl.h"

#include <array>
#include <cstdio>
#include <span>
#include <utility>

#include "base/GuidLess.h"
#include "base/KsIdNames.h"
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
        AddAll(names, KsIdentifierKind::Property, KSPROPERTYSETID_ExtendedCameraControl,
               user_space_frameworks::kExtendedCameraControlNames);
        AddAll(names, KsIdentifierKind::Property, PROPSETID_VIDCAP_CAMERACONTROL,
               user_space_frameworks::kCameraControlNames);
        AddAll(names, KsIdentifierKind::Property, PROPSETID_VIDCAP_VIDEOPROCAMP,
               user_space_frameworks::kVideoProcAmpNames);
        AddAll(names, KsIdentifierKind::Event, KSEVENTSETID_VIDCAPTOSTI,
               user_space_frameworks::kVideoCaptureEventNames);
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
