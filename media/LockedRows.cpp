#include "media/LockedRows.h"

#include <cstdint>

namespace mft_core
{

LockedRows::~LockedRows()
{
    if (plane)
    {
        plane->Unlock2D();
    }
    if (linear)
    {
        linear->Unlock();
    }
}

HRESULT LockedRows::Lock(IMFMediaBuffer *mediaBuffer, DWORD rowBytes, DWORD rows) noexcept
{
    if (SUCCEEDED(mediaBuffer->QueryInterface(IID_PPV_ARGS(&plane))))
    {
        const HRESULT locked = LockPlane(rowBytes, rows);
        if (FAILED(locked))
        {
            plane.Reset();
        }
        return locked;
    }
    return LockLinear(mediaBuffer, rowBytes, rows);
}

HRESULT LockedRows::LockPlane(DWORD rowBytes, DWORD rows) noexcept
{
    LONG pitch = 0;
    BYTE *start = nullptr;
    DWORD length = 0;
    const HRESULT locked = plane->Lock2DSize(MF2DBuffer_LockFlags_Write, &first, &pitch, &start, &length);
    if (FAILED(locked))
    {
        return locked;
    }
    pitchBytes = pitch;
    const std::int64_t firstAt = first - start;
    const std::int64_t lastAt = firstAt + std::int64_t{pitch} * (std::int64_t{rows} - 1);
    const std::int64_t room = std::int64_t{length} - rowBytes;
    const std::int64_t step = pitch < 0 ? -std::int64_t{pitch} : pitch;
    if (first == nullptr || step < rowBytes || firstAt < 0 || firstAt > room || lastAt < 0 || lastAt > room)
    {
        plane->Unlock2D();
        return MF_E_BUFFERTOOSMALL;
    }
    return S_OK;
}

HRESULT LockedRows::LockLinear(IMFMediaBuffer *mediaBuffer, DWORD rowBytes, DWORD rows) noexcept
{
    DWORD capacity = 0;
    const HRESULT locked = mediaBuffer->Lock(&first, &capacity, nullptr);
    if (FAILED(locked))
    {
        return locked;
    }
    if (first == nullptr || std::uint64_t{rowBytes} * rows > capacity)
    {
        mediaBuffer->Unlock();
        return MF_E_BUFFERTOOSMALL;
    }
    linear = mediaBuffer;
    pitchBytes = static_cast<std::ptrdiff_t>(rowBytes);
    return S_OK;
}

} // namespace mft_core
