// Firmware commands over one extension-unit control: a block is written, then the answer is read back.
#pragma once

#include <cstddef>
#include <cstdint>

#include "ks/IFirmwareCommandPipe.h"
#include "ks/UvcCommand.h"
#include "base/CriticalSection.h"

namespace mft_core
{

// Shared by the transform's components. Thread-safe; the lock is held over the whole exchange with the camera.
class FirmwareCommandPipe : public IFirmwareCommandPipe, public user_space_frameworks::Object
{
  public:
    FirmwareCommandPipe(ComPtr<IKsControl> ksControl, const GUID &set, ULONG controlId, const std::string &objectName);

    HRESULT Set(ULONG opcode, const void *data, ULONG size, ULONG param1, ULONG param2, ULONG param3,
                ULONG param4) override;
    HRESULT Get(void *buffer, ULONG opcode, ULONG size, ULONG param1, ULONG param2, ULONG param3,
                ULONG param4) override;

  private:
    static constexpr std::size_t kMaxPayload = 1000;

    // As sent, little-endian. `length` counts from `opcode` to the end of the payload.
    struct Command
    {
        std::uint16_t length;
        std::uint16_t magic;
        std::uint32_t opcode;
        std::uint32_t params[4];
        std::uint8_t data[kMaxPayload];
    };
    static_assert(sizeof(Command) == 1024);

    struct Answer
    {
        std::uint32_t opcode; // the command's own when the firmware accepted it
        std::uint8_t data[1020];
    };
    static_assert(sizeof(Answer) == 1024);

    // One write and one read, of an answer with at least `expected` bytes of data.
    HRESULT Exchange(const Command &writeBuffer, Answer &readBuffer, ULONG expected) TARN_REQUIRES(lock);

    UvcCommand uvcCommand TARN_GUARDED_BY(lock);
    user_space_frameworks::CriticalSection lock;
};

} // namespace mft_core
