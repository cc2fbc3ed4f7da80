// The pixels of a sample, readable while this lives.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>
#include <span>

namespace tarn_host
{

// Confined.
class LockedFrame
{
  public:
    // Throws HostError when the sample's buffers cannot be joined or locked.
    explicit LockedFrame(IMFSample &sample);
    ~LockedFrame();
    LockedFrame(const LockedFrame &) = delete;
    LockedFrame &operator=(const LockedFrame &) = delete;

    std::span<const std::byte> Bytes() const noexcept
    {
        return bytes;
    }

  private:
    ComPtr<IMFMediaBuffer> buffer;
    std::span<const std::byte> bytes;
};

} // namespace tarn_host
