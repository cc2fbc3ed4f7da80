#include "media/MediaBufferWrapper.h"

#include "base/ThrowIfFailed.h"

namespace mft_utils
{

MediaBufferWrapper::MediaBufferWrapper(IMFSample *sample)
{
    if (sample == nullptr)
    {
        throw ComException(E_POINTER, "Sample doesn't have a buffer");
    }
    ThrowIfFailed<ComException>(sample->ConvertToContiguousBuffer(mediaBuffer.GetAddressOf()),
                                "Sample doesn't have a buffer");
    if (mediaBuffer == nullptr)
    {
        throw ComException(E_UNEXPECTED, "Sample doesn't have a buffer");
    }
    Lock();
}

MediaBufferWrapper::MediaBufferWrapper(DWORD lengthBytes, BufferPool *pool)
{
    if (lengthBytes == 0)
    {
        throw ComException(E_INVALIDARG, "length can't be 0");
    }
    ThrowIfFailed<ComException>(pool != nullptr ? pool->Take(lengthBytes, mediaBuffer.GetAddressOf())
                                                : MFCreateMemoryBuffer(lengthBytes, mediaBuffer.GetAddressOf()),
                                "Failed to create media buffer");
    ThrowIfFailed<ComException>(mediaBuffer->SetCurrentLength(lengthBytes), "Failed to set current length");
    Lock();
}

void MediaBufferWrapper::Lock()
{
    ThrowIfFailed<ComException>(locked.Lock(mediaBuffer.Get()), "Failed to lock media buffer");
    data = locked.data;
    length = locked.length;
}

} // namespace mft_utils
