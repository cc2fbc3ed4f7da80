// Frame memory that is used again.
#pragma once

#include "platform/MediaFoundation.h"

#include <cstddef>
#include <vector>

#include "base/CriticalSection.h"

namespace mft_utils
{

// Keeps a reference on each buffer that it hands out and hands it out again once that is the only one. The buffers are
// the platform's own and know nothing of the pool: a consumer may keep one for ever, also beyond the pool and the
// module. Holds what others hold too, up to kMostBuffers, and kMostFree more of each length. Thread-safe.
class BufferPool
{
  public:
    static constexpr std::size_t kMostBuffers = 32; // beyond them the oldest is let go of
    static constexpr std::size_t kMostFree = 4;     // of one length

    // Throws std::bad_alloc.
    BufferPool();
    BufferPool(const BufferPool &) = delete;
    BufferPool &operator=(const BufferPool &) = delete;

    // A buffer of that capacity (above 0), aligned to 64 bytes, with any content and any current length. Fails as the
    // platform does when a new one is needed.
    HRESULT Take(DWORD lengthBytes, IMFMediaBuffer **buffer) noexcept;

    // Lets go of every buffer: nothing that was written until now comes out again.
    void Forget() noexcept;

  private:
    struct Entry
    {
        DWORD length;
        ComPtr<IMFMediaBuffer> buffer;
    };

    // What becomes `surplus` is for release without the lock.
    ComPtr<IMFMediaBuffer> FindFree(DWORD lengthBytes, ComPtr<IMFMediaBuffer> &surplus) noexcept TARN_REQUIRES(lock);
    void Keep(Entry entry, ComPtr<IMFMediaBuffer> &surplus) noexcept TARN_REQUIRES(lock);

    user_space_frameworks::CriticalSection lock;
    std::vector<Entry> entries TARN_GUARDED_BY(lock); // the last was handed out last; never grows beyond its capacity
};

} // namespace mft_utils
