// The pixels of a sample, readable while this lives.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>
#include <span>

#include "base/LockedBuffer.h"

namespace tarn_host
{

// Confined.
class LockedFrame
{
  public:
    // Throws HostError when the sample's buffers cannot be joined or locked.
    explicit LockedFrame(IMFSample &sample);

    std::span<const std::byte> Bytes() const noexcept
    {
        return std::as_bytes(std::span(buffer.data, buffer.length));
    }

  private:
    user_space_frameworks::LockedBuffer buffer;
};

} // namespace tarn_host
