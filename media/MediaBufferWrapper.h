// Scoped holder of a locked media buffer.
#pragma once

#include "platform/MediaFoundation.h"

#include "base/LockedBuffer.h"
#include "media/BufferPool.h"

namespace mft_utils
{

// Locked from construction to destruction; owned by the function that touches the pixels. Confined.
class MediaBufferWrapper
{
  public:
    // Locks the sample's contiguous buffer. Throws ComException "Sample doesn't have a buffer" or
    // "Failed to lock media buffer".
    explicit MediaBufferWrapper(IMFSample *sample);

    // Makes and locks a buffer whose current length is `lengthBytes`, of the pool's memory where there is a pool.
    // Throws ComException "length can't be 0", "Failed to create media buffer", "Failed to set current length" or
    // "Failed to lock media buffer".
    explicit MediaBufferWrapper(DWORD lengthBytes, BufferPool *pool = nullptr);

    ComPtr<IMFMediaBuffer> mediaBuffer;
    BYTE *data = nullptr;
    DWORD length = 0; // bytes that hold data: the buffer's current length

  private:
    void Lock();

    user_space_frameworks::LockedBuffer locked;
};

} // namespace mft_utils
