#include "trace/TraceLoggingProvider.h"

#include <atomic>
#include <cstring>
#include <mutex>

#include "base/HResultFromWin32.h"
#include "base/SharedLock.h"
#include "trace/ModuleRecord.h"
#include "trace/TraceChannels.h"

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
    case TraceField::Type::AnsiString:
        break;
    }
    return InType::AnsiString;
}

constinit user_space_frameworks::SharedLock registrationLock;
bool registered TARN_GUARDED_BY(registrationLock) = false;
std::atomic<REGHANDLE> providerHandle{0};
std::atomic<std::uint32_t> enabledLevel{0};
std::atomic<bool> moduleRecordDue{false};

void NTAPI OnEnable(LPCGUID, ULONG isEnabled, UCHAR level, ULONGLONG, ULONGLONG, PEVENT_FILTER_DESCRIPTOR, PVOID)
{
    ModuleRecord::OfThisProcess(); // read here, before frames wait for it
    // Every session that is enabled, the later ones too; those who have it already get it again.
    moduleRecordDue.store(isEnabled != 0, std::memory_order_relaxed);
    enabledLevel.store(LevelFromEnableNotification(isEnabled, level, enabledLevel.load(std::memory_order_relaxed)),
                       std::memory_order_relaxed);
    UpdateTraceLevels();
}

} // namespace

EncodedEvent::EncodedEvent(const TraceEvent &event) noexcept
{
    descriptor.Channel = kTraceLoggingChannel;
    descriptor.Level = static_cast<UCHAR>(event.level);
    descriptor.Opcode = static_cast<UCHAR>(event.opcode);

    AddData(kTraits.data(), kTraits.size(), EVENT_DATA_DESCRIPTOR_TYPE_PROVIDER_METADATA);
    // Its size is known after the last field.
    AddData(metadata.data(), 0, EVENT_DATA_DESCRIPTOR_TYPE_EVENT_METADATA);

    metadataSize = 2;
    metadata[metadataSize++] = 0; // no tag
    AddName(event.name);
    std::size_t fieldCount = 0;
    for (const TraceField &field : event.fields)
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
    std::uint64_t &number = numbers[dataCount - 2];
    switch (field.type)
    {
    case TraceField::Type::AnsiString: {
        const TextCutter::Piece piece = cutter.Fit(field.string == nullptr ? "" : field.string);
        AddData(piece.text, piece.size, EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        break;
    }
    case TraceField::Type::Int64:
        number = static_cast<std::uint64_t>(field.int64);
        AddData(&number, sizeof(std::int64_t), EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        break;
    case TraceField::Type::UInt32:
    case TraceField::Type::HexInt32:
        number = field.uint32;
        AddData(&number, sizeof(std::uint32_t), EVENT_DATA_DESCRIPTOR_TYPE_NONE);
        break;
    }
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

namespace
{
class StructuredChannel final : public ITraceChannel
{
  public:
    std::uint32_t MessageLevel() const noexcept override
    {
        return 0;
    }
    std::uint32_t EventLevel() const noexcept override
    {
        return TraceLoggingProvider::EnabledLevel();
    }

    void Write(const TraceMessage &) noexcept override {}
    void Write(const TraceEvent &event) noexcept override
    {
        const REGHANDLE handle = providerHandle.load(std::memory_order_acquire);
        if (handle == 0 || EventLevel() < static_cast<std::uint32_t>(event.level))
        {
            return;
        }
        if (moduleRecordDue.load(std::memory_order_relaxed) &&
            moduleRecordDue.exchange(false, std::memory_order_relaxed))
        {
            ModuleRecord::OfThisProcess().AsEvent([handle](const TraceEvent &record) { Send(handle, record); });
        }
        Send(handle, event);
    }

  private:
    static void Send(REGHANDLE handle, const TraceEvent &event) noexcept
    {
        EncodedEvent encoded(event);
        EventWriteTransfer(handle, &encoded.Descriptor(), event.activity, nullptr, encoded.DataCount(), encoded.Data());
    }
};

constinit StructuredChannel channel;
} // namespace

ITraceChannel &TraceLoggingProvider::Channel() noexcept
{
    return channel;
}

} // namespace mft_utils
