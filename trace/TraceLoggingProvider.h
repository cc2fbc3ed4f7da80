// The structured-event provider "TARN_DEVICE_MFT": registration, enabling and the bytes of an event.
#pragma once

#include "platform/EventTracing.h"

#include <array>
#include <cstddef>
#include <cstdint>

#include "trace/CutText.h"
#include "trace/ITraceChannel.h"
#include "trace/ProviderName.h"

namespace mft_utils
{

inline constexpr char kTraceLoggingProviderName[] = "TARN_DEVICE_MFT";
inline constexpr GUID kTraceLoggingProviderGuid = GuidFromProviderName(kTraceLoggingProviderName);

// One event in the form in which it is written. Borrows the field values that it was made from. Confined.
class EncodedEvent
{
  public:
    static constexpr std::size_t kMaxFields = 8;
    static constexpr std::size_t kMaxNameBytes = 96; // of an event or field, with the NUL

    // Cuts names and strings that are too long at a character's border and leaves out fields past the last slot.
    explicit EncodedEvent(const TraceEvent &event) noexcept;
    EncodedEvent(const EncodedEvent &) = delete;
    EncodedEvent &operator=(const EncodedEvent &) = delete;

    const EVENT_DESCRIPTOR &Descriptor() const noexcept
    {
        return descriptor;
    }
    // Provider metadata, event metadata, then one per field.
    EVENT_DATA_DESCRIPTOR *Data() noexcept
    {
        return data.data();
    }
    ULONG DataCount() const noexcept
    {
        return dataCount;
    }

  private:
    void AddName(const char *name) noexcept;
    void AddValue(const TraceField &field) noexcept;
    void AddData(const void *bytes, std::size_t size, ULONG type) noexcept;

    static constexpr std::size_t kMetadataBytes = 3 + kMaxNameBytes + kMaxFields * (kMaxNameBytes + 1);

    EVENT_DESCRIPTOR descriptor{};
    std::array<EVENT_DATA_DESCRIPTOR, 2 + kMaxFields> data{};
    ULONG dataCount = 0;
    std::array<std::uint8_t, kMetadataBytes> metadata{};
    std::size_t metadataSize = 0;
    // Values are copied because a field's number does not outlive the list it came in.
    std::array<std::uint64_t, kMaxFields> numbers{};
    TextCutter cutter;
};

// The 18 bytes that name the provider in its registration and in every event.
struct ProviderTraits
{
    const std::uint8_t *data;
    std::uint16_t size;
};
ProviderTraits TraceLoggingProviderTraits() noexcept;

// What an enable notification asks for. The keyword of every event is 0, which any mask lets pass.
std::uint32_t LevelFromEnableNotification(ULONG isEnabled, UCHAR level, std::uint32_t currentLevel) noexcept;

// Thread-safe.
class TraceLoggingProvider
{
  public:
    // E_* when the platform refuses; events then go nowhere. S_FALSE when registered already.
    static HRESULT Register() noexcept;
    // Waits for a running enable callback. Safe when not registered.
    static void Unregister() noexcept;

    static std::uint32_t EnabledLevel() noexcept;

    // Writes an event when the session wants its level.
    static ITraceChannel &Channel() noexcept;
};

} // namespace mft_utils
