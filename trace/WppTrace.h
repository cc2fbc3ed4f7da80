// The classic trace channel, control name "TARN_DEVICE_MFT_WPP": numbered messages with their arguments.
#pragma once

#include <windows.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "trace/CutText.h"
#include "trace/ITraceChannel.h"

namespace mft_utils
{

inline constexpr GUID kWppControlGuid = {0xC1F3D3B5, 0x0C5B, 0x4A0E, {0x9B, 0x57, 0x2E, 0x6D, 0x5C, 0x41, 0x7A, 0xD2}};
// Class of the messages; packaging/tarn_dmft.tmf describes them under this GUID.
inline constexpr GUID kWppMessageGuid = {0x5B1E8F6A, 0x7D34, 0x4F0C, {0xA6, 0x1B, 0x93, 0xC8, 0x0E, 0x52, 0x64, 0x1F}};

// Flag bits of the control GUID.
inline constexpr std::uint32_t kWppFlagMessages = 0x1;
inline constexpr std::uint32_t kWppFlagEntryExit = 0x2;

// Arguments of a message as the trace call wants them: pointer and size of each. Strings carry their NUL.
// Borrows strings that fit; holds a cut copy of longer ones. Confined.
class WppArgumentList
{
  public:
    static constexpr std::size_t kMaxArguments = 5;

    struct Piece
    {
        const void *data;
        SIZE_T size;
    };

    explicit WppArgumentList(std::initializer_list<TraceArgument> arguments) noexcept;
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
    std::array<Piece, kMaxArguments> pieces{};
    std::size_t count = 0;
    std::array<std::int32_t, kMaxArguments> values{};
    TextCutter cutter;
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

    // Writes a message when the session wants it; entry and exit are flagged by themselves.
    static ITraceChannel &Channel() noexcept;
};

} // namespace mft_utils
