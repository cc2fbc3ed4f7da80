#include "media/MediaBufferWrapper.h"

#include "base/ComException.h"

namespace mft_utils
{

namespace
{

void ThrowIfFailed(HRESULT result, const char *text)
{
    if (FAILED(result))
    {
        throw ComException(result, text);
    }
}

} // namespace

MediaBufferWrapper::MediaBufferWrapper(IMFSample *sample)
{
    if (sample == nullptr)
    {
        throw ComException(E_POINTER, "Sample doesn't have a buffer");
    }
    ThrowIfFailed(sample->ConvertToContiguousBuffer(mediaBuffer.GetAddressOf()), "Sample doesn't have a buffer");
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
    ThrowIfFailed(pool != nullptr ? pool->Take(lengthBytes, mediaBuffer.GetAddressOf())
                                  : MFCreateMemoryBuffer(lengthBytes, mediaBuffer.GetAddressOf()),
                  "Failed to create media buffer");
    ThrowIfFailed(mediaBuffer->SetCurrentLength(lengthBytes), "Failed to set current length");
    Lock();
}

MediaBufferWrapper::~MediaBufferWrapper()
{
    // Not reached when the constructor threw: then nothing is locked.
    mediaBuffer->Unlock();
}

void MediaBufferWrapper::Lock()
{
    ThrowIfFailed(mediaBuffer->Lock(&data, nullptr, &length), "Failed to lock media buffer");
    if (data == nullptr && length != 0)
    {
        mediaBuffer->Unlock();
        throw ComException(E_UNEXPECTED, "Failed to lock media buffer");
    }
}

} // namespace mft_utils
