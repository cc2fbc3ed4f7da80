// Replies in the shapes that KS prescribes.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstdint>

namespace tarn_sim
{

// Hands `size` bytes to the caller. A zero-length request is told the size (ERROR_MORE_DATA, `returned` = size), a
// short one is refused (ERROR_INSUFFICIENT_BUFFER); a missing buffer is E_POINTER.
HRESULT WriteReply(const void *reply, ULONG size, void *data, ULONG dataLength, ULONG &returned);

// One byte each.
struct ByteRange
{
    std::uint8_t minimum = 0;
    std::uint8_t maximum = 0;
    std::uint8_t step = 0;
};

// BASICSUPPORT: the access flags (4 bytes), the description (40) or, where the caller has room and the control is one
// byte, the description with the range behind it (59), whichever fits.
HRESULT WriteBasicSupport(ULONG accessFlags, const ByteRange *range, void *data, ULONG dataLength, ULONG &returned);

// DEFAULTVALUES: the description with the default value behind it (57 bytes).
HRESULT WriteDefaultValue(ULONG accessFlags, std::uint8_t value, void *data, ULONG dataLength, ULONG &returned);

} // namespace tarn_sim
