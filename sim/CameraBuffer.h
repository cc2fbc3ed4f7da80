// Frame memory of the simulated camera, counted while anybody holds it.
#pragma once

#include "platform/MediaFoundation.h"

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>

#include "base/ComObject.h"

namespace tarn_sim
{

// Lock and wake-up of the capture side; outlives the camera while frames are out.
struct CaptureSignal
{
    std::mutex lock;
    std::condition_variable changed;
};

// A pin's account of buffers. Shared by the pin and its buffers.
struct BufferAccount
{
    explicit BufferAccount(std::shared_ptr<CaptureSignal> captureSignal) : signal(std::move(captureSignal)) {}
    std::shared_ptr<CaptureSignal> signal;
    std::uint32_t outstanding = 0; // guarded by signal->lock
};

enum class GuardPage : std::uint8_t
{
    No,
    Yes
};

// One frame's memory. With a guard page the first byte past the frame faults. Thread-safe.
class CameraBuffer final : public user_space_frameworks::ComObject<IMFMediaBuffer>
{
  public:
    // Throws std::bad_alloc. Takes the signal's lock, as does the last Release.
    CameraBuffer(DWORD size, GuardPage guardPage, std::shared_ptr<BufferAccount> bufferAccount);

    BYTE *Data() noexcept
    {
        return data;
    }

    HRESULT STDMETHODCALLTYPE Lock(BYTE **bytes, DWORD *maximumLength, DWORD *currentLength) override;
    HRESULT STDMETHODCALLTYPE Unlock() override;
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD *currentLength) override;
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD currentLength) override;
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD *maximumLength) override;

  private:
    ~CameraBuffer() override;

    const DWORD capacity;
    std::atomic<DWORD> used;
    void *pages = nullptr; // what VirtualFree takes; `data` lies within
    BYTE *data = nullptr;
    std::shared_ptr<BufferAccount> account;
};

} // namespace tarn_sim
