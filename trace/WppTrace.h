// The classic trace channel, control name "TARN_DEVICE_MFT_WPP": numbered messages with their arguments.
#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "trace/Trace.h"

namespace mft_utils
{

inline constexpr char kWppControlName[] = "TARN_DEVICE_MFT_WPP";
inline constexpr GUID kWppControlGuid = {0xC1F3D3B5, 0x0C5B, 0x4A0E, {0x9B, 0x57, 0x2E, 0x6D, 0x5C, 0x41, 0x7A, 0xD2}};
// Class of the messages; packaging/tarn_dmft.tmf describes them under this GUID.
inline constexpr GUID kWppMessageGuid = {0x5B1E8F6A, 0x7D34, 0x4F0C, {0xA6, 0x1B, 0x93, 0xC8, 0x0E, 0x52, 0x64, 0x1F}};

// Numbers are part of the trace format: a message is never renumbered.
enum class WppMessage : std::uint16_t
{
    Entry = 10,        // function, object
    Exit = 11,         // function, object
    CheckFailure = 12, // function, expression, result
    ValueFailure = 13, // function, name, actual, expected, result
    Text = 14          // function, level, text
};

// Flag bits of the control GUID.
inline constexpr std::uint32_t kWppFlagMessages = 0x1;
inline constexpr std::uint32_t kWppFlagEntryExit = 0x2;

// One argument: a string, kept without its end where it is longer than a message can hold, or a 32-bit value.
class WppArgument
{
  public:
    WppArgument(const char *text) noexcept; // NOLINT(google-explicit-constructor): reads as an argument list
    WppArgument(HRESULT value) noexcept;    // NOLINT(google-explicit-constructor)

    bool isString;
    std::int32_t value = 0;
    const char *text = nullptr;
};

// Arguments of a message as the trace call wants them: pointer and size of each. Strings carry their NUL.
// Borrows strings that fit; holds a cut copy of longer ones. Confined.
class WppArgumentList
{
  public:
    static constexpr std::size_t kMaxArguments = 5;
    static constexpr std::size_t kMaxStringBytes = 1024; // with the NUL

    struct Piece
    {
        const void *data;
        SIZE_T size;
    };

    explicit WppArgumentList(std::initializer_list<WppArgument> arguments) noexcept;
    WppArgumentList(const WppArgumentList &) = delete;
    WppArgumentList &operator=(const WppArgumentList &) = delete;

    std::size_t Count() const noexcept
    {
        return count;
    }
    const Piece &At(std::size_t index) const noexcept
    {
        return pieces[index];
    }

  private:
    void AddString(const char *text) noexcept;

    std::array<Piece, kMaxArguments> pieces{};
    std::size_t count = 0;
    std::array<std::int32_t, kMaxArguments> values{};
    std::array<char, kMaxStringBytes> cutString{};
    bool cutStringUsed = false;
};

// Level and flags that a session asked for, as one value. The handle of a missing session is -1 or 0.
struct WppSession
{
    std::uint64_t logger = 0;
    std::uint32_t level = 0;
    std::uint32_t flags = 0;

    // Nothing is enabled under a handle that is not one, whatever level and flags were reported with it.
    static WppSession Make(std::uint64_t logger, std::uint32_t level, std::uint32_t flags) noexcept;
};

// Thread-safe.
class WppTrace
{
  public:
    // E_* when the platform refuses; messages then go nowhere. S_FALSE when registered already.
    static HRESULT Register() noexcept;
    // Waits for a running enable callback. Safe when not registered.
    static void Unregister() noexcept;

    // Highest level that the session wants for any flag; 0 when none is there.
    static std::uint32_t EnabledLevel() noexcept;
    static bool IsEnabled(TraceLevel level, std::uint32_t flag) noexcept;

    // Writes the message when the session wants it. Entry and Exit are at the verbose level and flagged by themselves.
    static void Write(TraceLevel level, WppMessage message, std::initializer_list<WppArgument> arguments) noexcept;
};

} // namespace mft_utils
