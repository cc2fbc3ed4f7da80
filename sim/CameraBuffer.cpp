#include "sim/CameraBuffer.h"

#include <new>

namespace tarn_sim
{

namespace
{
constexpr std::size_t kPageSize = 4096;
}

CameraBuffer::CameraBuffer(DWORD size, GuardPage guardPage, std::shared_ptr<BufferAccount> bufferAccount)
    : capacity(size), used(size), account(std::move(bufferAccount))
{
    const std::size_t readable = (std::size_t{size} + kPageSize - 1) / kPageSize * kPageSize;
    const std::size_t guardSize = guardPage == GuardPage::Yes ? kPageSize : 0;
    pages = VirtualAlloc(nullptr, readable + guardSize, MEM_RESERVE, PAGE_NOACCESS);
    if (pages == nullptr || VirtualAlloc(pages, readable, MEM_COMMIT, PAGE_READWRITE) == nullptr)
    {
        if (pages != nullptr)
        {
            VirtualFree(pages, 0, MEM_RELEASE);
        }
        throw std::bad_alloc();
    }
    data = static_cast<BYTE *>(pages) + (guardPage == GuardPage::Yes ? readable - size : 0);
    const std::scoped_lock guard(account->signal->lock);
    ++account->outstanding;
}

CameraBuffer::~CameraBuffer()
{
    VirtualFree(pages, 0, MEM_RELEASE);
    const std::scoped_lock guard(account->signal->lock);
    --account->outstanding;
    account->signal->changed.notify_all();
}

HRESULT CameraBuffer::Lock(BYTE **bytes, DWORD *maximumLength, DWORD *currentLength)
{
    if (bytes == nullptr)
    {
        return E_POINTER;
    }
    *bytes = data;
    if (maximumLength != nullptr)
    {
        *maximumLength = capacity;
    }
    if (currentLength != nullptr)
    {
        *currentLength = used;
    }
    return S_OK;
}

HRESULT CameraBuffer::Unlock()
{
    return S_OK;
}

HRESULT CameraBuffer::GetCurrentLength(DWORD *currentLength)
{
    if (currentLength == nullptr)
    {
        return E_POINTER;
    }
    *currentLength = used;
    return S_OK;
}

HRESULT CameraBuffer::SetCurrentLength(DWORD currentLength)
{
    if (currentLength > capacity)
    {
        return E_INVALIDARG;
    }
    used = currentLength;
    return S_OK;
}

HRESULT CameraBuffer::GetMaxLength(DWORD *maximumLength)
{
    if (maximumLength == nullptr)
    {
        return E_POINTER;
    }
    *maximumLength = capacity;
    return S_OK;
}

} // namespace tarn_sim
