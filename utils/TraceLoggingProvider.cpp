#include "utils/TraceLoggingProvider.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <mutex>

#include "utils/HResultFromWin32.h"
#include "utils/SharedLock.h"
#include "utils/TraceChannels.h"

namespace mft_utils
{

namespace
{

constexpr std::uint16_t kTraitsSize = 2 + sizeof(kTraceLoggingProviderName);

constexpr std::array<std::uint8_t, kTraitsSize> MakeTraits() noexcept
{
    std::array<std::uint8_t, kTraitsSize> traits{};
    traits[0] = static_cast<std::uint8_t>(kTraitsSize & 0xFF);
    traits[1] = static_cast<std::uint8_t>(kTraitsSize >> 8);
    for (std::size_t i = 0; i < sizeof(kTraceLoggingProviderName); ++i)
    {
        traits[2 + i] = static_cast<std::uint8_t>(kTraceLoggingProviderName[i]);
    }
    return traits;
}

constexpr std::array<std::uint8_t, kTraitsSize> kTraits = MakeTraits();

// Self-describing events go to this channel.
constexpr UCHAR kTraceLoggingChannel = 11;

enum class InType : std::uint8_t
{
    AnsiString = 2,
    UInt32 = 8,
    Int64 = 9,
    Guid = 15,
    HexInt32 = 20
};

InType InTypeOf(TraceField::Type type) noexcept
{
    switch (type)
    {
    case TraceField::Type::Int64:
        return InType::Int64;
    case TraceField::Type::UInt32:
        return InType::UInt32;
    case TraceField::Type::HexInt32:
        return InType::HexInt32;
    case TraceField::Type::Guid:
        return InType::Guid;
    case TraceField::Type::AnsiString:
        break;
    }
    return InType::AnsiString;
}

// Length of the text, at most `limit`; a cut does not fall inside a UTF-8 character.
std::size_t CutLength(const char *text, std::size_t limit) noexcept
{
    std::size_t length = strnlen(text, limit + 1);
    if (length <= limit)
    {
        return length;
    }
    length = limit;
    while (length > 0 && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80)
    {
        --length;
    }
    return length;
}

constinit user_space_frameworks::SharedLock registrationLock;
bool registered TARN_GUARDED_BY(registrationLock) = false;
std::atomic<REGHANDLE> providerHandle{0};
std::atomic<std::uint32_t> enabledLevel{0};

void NTAPI OnEnable(LPCGUID, ULONG isEnabled, UCHAR level, ULONGLONG, ULONGLONG, PEVENT_FILTER_DESCRIPTOR, PVOID)
{
    enabledLevel.store(LevelFromEnableNotification(isEnabled, level, enabledLevel.load(std::memory_order_relaxed)),
                       std::memory_order_relaxed);
    UpdateTraceLevels();
}

} // namespace

EncodedEvent::EncodedEvent(TraceLevel level, EventOpcode opcode, const char *eventName,
                           std::initializer_list<TraceField> fields) noexcept
{
    descriptor.Channel = kTraceLoggingChannel;
    descriptor.Level = static_cast<UCHAR>(level);
    descriptor.Opcode = static_cast<UCHAR>(opcode);

    AddData(kTraits.data(), kTraits.size(), EVENT_DATA_DESCRIPTOR_TYPE_PROVIDER_METADATA);
    // Its size is known after the last field.
    AddData(metadata.data(), 0, EVENT_DATA_DESCRIPTOR_TYPE_EVENT_METADATA);

    metadataSize = 2;
    metadata[metadataSize++] = 0; // no tag
    AddName(eventName);
    std::size_t fieldCount = 0;
    for (const TraceField &field : fields)
    {
        if (fieldCount++ == kMaxFields)
        {
            break;
        }
        AddName(field.name);
        metadata[metadataSize++] = static_cast<std::uint8_t>(InTypeOf(field.type));
        AddValue(field);
    }
    metadata[0] = static_cast<std::uint8_t>(metadataSize & 0xFF);
    metadata[1] = static_cast<std::uint8_t>(metadataSize >> 8);
    data[1].Size = static_cast<ULONG>(metadataSize);
}

void EncodedEvent::AddName(const char *name) noexcept
{
    const char *text = name == nullptr ? "" : name;
    const std::size_t length = CutLength(text, kMaxNameBytes - 1);
    std::memcpy(metadata.data() + metadataSize, text, length);
    metadataSize += length;
    metadata[metadataSize++] = 0;
}

void EncodedEvent::AddValue(const TraceField &field) noexcept
{
    static constexpr GUID kNoGuid{};
    std::uint64_t &number = numbers[dataCount - 2];
    switch (field.type)
    {
    case TraceField::Type::AnsiString:
        AddString(field.string == nullptr ? "" : field.string);
        break;
    case TraceField::Type::Int64:
        number = static_cast<std::uint64_t>(field.int64);
        AddData(&number, sizeof(std::int64_t), EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        break;
    case TraceField::Type::UInt32:
    case TraceField::Type::HexInt32:
        number = field.uint32;
        AddData(&number, sizeof(std::uint32_t), EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        break;
    case TraceField::Type::Guid:
        AddData(field.guid == nullptr ? &kNoGuid : field.guid, sizeof(GUID), EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        break;
    }
}

void EncodedEvent::AddString(const char *text) noexcept
{
    const std::size_t length = CutLength(text, kMaxStringBytes - 1);
    if (text[length] == '\0')
    {
        AddData(text, length + 1, EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        return;
    }
    // Room for one cut string: an event has at most one text that can grow.
    if (cutStringUsed)
    {
        AddData("...", sizeof("..."), EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        return;
    }
    cutStringUsed = true;
    std::memcpy(cutString.data(), text, length);
    cutString[length] = '\0';
    AddData(cutString.data(), length + 1, EVENT_DATA_DESCRIPTOR_TYPE_NONE);
}

void EncodedEvent::AddData(const void *bytes, std::size_t size, ULONG type) noexcept
{
    EVENT_DATA_DESCRIPTOR &entry = data[dataCount++];
    entry.Ptr = reinterpret_cast<ULONG_PTR>(bytes);
    entry.Size = static_cast<ULONG>(size);
    entry.Reserved = type;
}

ProviderTraits TraceLoggingProviderTraits() noexcept
{
    return {kTraits.data(), kTraitsSize};
}

std::uint32_t LevelFromEnableNotification(ULONG isEnabled, UCHAR level, std::uint32_t currentLevel) noexcept
{
    switch (isEnabled)
    {
    case 0:
        return 0;
    case 1:
        return level == 0 ? 0xFF : level; // 0 asks for every level
    default:
        return currentLevel; // a request for a state dump, which there is none of
    }
}

HRESULT TraceLoggingProvider::Register() noexcept
{
    const std::scoped_lock guard(registrationLock);
    if (registered)
    {
        return S_FALSE;
    }
    REGHANDLE handle = 0;
    const ULONG error = EventRegister(&kTraceLoggingProviderGuid, &OnEnable, nullptr, &handle);
    if (error != ERROR_SUCCESS)
    {
        return HResultFromWin32(error);
    }
    std::array<std::uint8_t, kTraitsSize> traits = kTraits;
    // Without traits the event metadata would be taken for a field: such a provider stays silent.
    const ULONG traitsError = EventSetInformation(handle, EventProviderSetTraits, traits.data(), kTraitsSize);
    if (traitsError != ERROR_SUCCESS)
    {
        EventUnregister(handle);
        enabledLevel.store(0, std::memory_order_relaxed);
        UpdateTraceLevels();
        return HResultFromWin32(traitsError);
    }
    providerHandle.store(handle, std::memory_order_release);
    registered = true;
    return S_OK;
}

void TraceLoggingProvider::Unregister() noexcept
{
    const std::scoped_lock guard(registrationLock);
    if (registered)
    {
        EventUnregister(providerHandle.exchange(0, std::memory_order_acq_rel));
        registered = false;
    }
    enabledLevel.store(0, std::memory_order_relaxed);
    UpdateTraceLevels();
}

std::uint32_t TraceLoggingProvider::EnabledLevel() noexcept
{
    return enabledLevel.load(std::memory_order_relaxed);
}

void TraceLoggingProvider::Write(TraceLevel level, EventOpcode opcode, const GUID *activity,
                                 const GUID *relatedActivity, const char *eventName,
                                 std::initializer_list<TraceField> fields) noexcept
{
    const REGHANDLE handle = providerHandle.load(std::memory_order_acquire);
    if (handle == 0 || EnabledLevel() < static_cast<std::uint32_t>(level))
    {
        return;
    }
    EncodedEvent event(level, opcode, eventName, fields);
    EventWriteTransfer(handle, &event.Descriptor(), activity, relatedActivity, event.DataCount(), event.Data());
}

} // namespace mft_utils
