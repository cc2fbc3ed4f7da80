// The firmware's hardware-monitor command channel.
#pragma once

#include "platform/MediaFoundation.h"

namespace mft_core
{

// Implementations are thread-safe: an answer belongs to its command.
class IFirmwareCommandPipe
{
  public:
    // Sends a command with up to 1000 bytes of payload; more throws std::invalid_argument. E_FAIL when the firmware
    // refuses or answers too briefly; failures of the KS calls are returned.
    virtual HRESULT Set(ULONG opcode, const void *data, ULONG size, ULONG param1 = 0, ULONG param2 = 0,
                        ULONG param3 = 0, ULONG param4 = 0) = 0;

    // Sends a command and copies `size` bytes of its answer, at most 1020. E_INVALIDARG for more, without touching the
    // camera; E_FAIL as above, with the buffer untouched.
    virtual HRESULT Get(void *buffer, ULONG opcode, ULONG size, ULONG param1 = 0, ULONG param2 = 0, ULONG param3 = 0,
                        ULONG param4 = 0) = 0;

    // After the operations on purpose: their slots come first.
    virtual ~IFirmwareCommandPipe() = default;
};

} // namespace mft_core
