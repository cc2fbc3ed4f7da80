#include "media/LockedBuffer.h"

namespace mft_core
{

LockedBuffer::~LockedBuffer()
{
    if (locked)
    {
        locked->Unlock();
    }
}

HRESULT LockedBuffer::Lock(IMFMediaBuffer *mediaBuffer) noexcept
{
    BYTE *bytes = nullptr;
    DWORD count = 0;
    const HRESULT result = mediaBuffer->Lock(&bytes, nullptr, &count);
    if (FAILED(result))
    {
        return result;
    }
    if (bytes == nullptr)
    {
        mediaBuffer->Unlock();
        return E_UNEXPECTED;
    }
    locked = mediaBuffer;
    data = bytes;
    length = count;
    return S_OK;
}

} // namespace mft_core
