#include "media/BufferPool.h"

#include <algorithm>
#include <mutex>
#include <utility>

namespace mft_utils
{

namespace
{
// Only the pool hands the buffer on, so that a count of one, seen under the pool's lock, stays one.
bool IsOnlyReference(IMFMediaBuffer *buffer) noexcept
{
    buffer->AddRef();
    return buffer->Release() == 1;
}
} // namespace

BufferPool::BufferPool()
{
    entries.reserve(kMostBuffers);
}

HRESULT BufferPool::Take(DWORD lengthBytes, IMFMediaBuffer **buffer) noexcept
{
    ComPtr<IMFMediaBuffer> surplus; // goes after the lock
    ComPtr<IMFMediaBuffer> found;
    {
        const std::scoped_lock guard(lock);
        found = FindFree(lengthBytes, surplus);
    }
    if (!found)
    {
        const HRESULT created = MFCreateAlignedMemoryBuffer(lengthBytes, MF_64_BYTE_ALIGNMENT, found.GetAddressOf());
        if (FAILED(created))
        {
            return created;
        }
        const std::scoped_lock guard(lock);
        Keep({lengthBytes, found}, surplus);
    }
    *buffer = found.Detach();
    return S_OK;
}

// The one that was handed out last is the most likely to be in a cache.
ComPtr<IMFMediaBuffer> BufferPool::FindFree(DWORD lengthBytes, ComPtr<IMFMediaBuffer> &surplus) noexcept
{
    ComPtr<IMFMediaBuffer> found;
    std::size_t seen = 0;
    for (std::size_t i = entries.size(); i > 0; --i)
    {
        const auto entry = entries.begin() + static_cast<std::ptrdiff_t>(i - 1);
        if (entry->length != lengthBytes || !IsOnlyReference(entry->buffer.Get()))
        {
            continue;
        }
        if (++seen == 1)
        {
            found = entry->buffer;
            std::rotate(entry, entry + 1, entries.end());
        }
        else if (seen > kMostFree + 1)
        {
            surplus = std::move(entry->buffer);
            entries.erase(entry);
            break;
        }
    }
    return found;
}

void BufferPool::Keep(Entry entry, ComPtr<IMFMediaBuffer> &surplus) noexcept
{
    if (entries.size() == kMostBuffers)
    {
        surplus = std::move(entries.front().buffer);
        entries.erase(entries.begin());
    }
    entries.push_back(std::move(entry));
}

void BufferPool::Forget() noexcept
{
    ComPtr<IMFMediaBuffer> last;
    do
    {
        last.Reset();
        const std::scoped_lock guard(lock);
        if (!entries.empty())
        {
            last = std::move(entries.back().buffer);
            entries.pop_back();
        }
    } while (last);
}

} // namespace mft_utils
