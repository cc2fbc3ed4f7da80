#include "media/MediaBufferView.h"

#include <cstdint>
#include <utility>

namespace mft_utils
{

MediaBufferView::MediaBufferView(ComPtr<IMFMediaBuffer> viewedBuffer, DWORD offsetBytes, DWORD lengthBytes)
    : viewed(std::move(viewedBuffer)), offset(offsetBytes), length(lengthBytes)
{
}

HRESULT MediaBufferView::Lock(BYTE **data, DWORD *maximumLength, DWORD *currentLength)
{
    if (data == nullptr)
    {
        return E_POINTER;
    }
    *data = nullptr;
    BYTE *bytes = nullptr;
    DWORD held = 0;
    const HRESULT locked = viewed->Lock(&bytes, nullptr, &held);
    if (FAILED(locked))
    {
        return locked;
    }
    if (bytes == nullptr || std::uint64_t{offset} + length > held)
    {
        viewed->Unlock();
        return MF_E_BUFFERTOOSMALL;
    }
    *data = bytes + offset;
    if (maximumLength != nullptr)
    {
        *maximumLength = length;
    }
    if (currentLength != nullptr)
    {
        *currentLength = length;
    }
    return S_OK;
}

HRESULT MediaBufferView::Unlock()
{
    return viewed->Unlock();
}

HRESULT MediaBufferView::GetCurrentLength(DWORD *currentLength)
{
    return GetMaxLength(currentLength);
}

HRESULT MediaBufferView::SetCurrentLength(DWORD currentLength)
{
    return currentLength == length ? S_OK : E_INVALIDARG;
}

HRESULT MediaBufferView::GetMaxLength(DWORD *maximumLength)
{
    if (maximumLength == nullptr)
    {
        return E_POINTER;
    }
    *maximumLength = length;
    return S_OK;
}

} // namespace mft_utils
