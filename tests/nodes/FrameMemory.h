// Frames between guard pages, and platform calls that fail on request.
#pragma once

#include "base/ComObject.h"
#include "core/ITopologyNode.h"
#include "tests/kernels/GuardedMemory.h"
#include "tests/support/Metadata.h"

namespace tarn_test
{

// While it lives, the nth call of the platform or of a buffer of ours (from 1) returns E_OUTOFMEMORY. Calls counted:
// MFCreateSample, MFCreateMemoryBuffer, MFCreateAlignedMemoryBuffer, IMFMediaBuffer::Lock, SetCurrentLength. Confined
// to the thread.
class FailingCall
{
  public:
    explicit FailingCall(int number) { left = number; }
    ~FailingCall() { left = 0; }
    FailingCall(const FailingCall &) = delete;
    FailingCall &operator=(const FailingCall &) = delete;
    static bool HasFailed() { return left < 0; }
    static bool IsThisOne() { return left > 0 && --left == 0 && --left < 0; }

  private:
    static inline thread_local int left = 0; // until the failing one; 0 = off, -1 = it has come
};

// The last byte of the current length is the last one before a page that faults. Checks at its end that each lock was
// undone.
class GuardedBuffer : public user_space_frameworks::ComObject<IMFMediaBuffer>
{
  public:
    explicit GuardedBuffer(DWORD bufferSize) : size(bufferSize), memory(bufferSize) { std::memset(Data(), 0xA5, size); }
    ~GuardedBuffer() override { EXPECT_EQ(0, locks.load()); }
    HRESULT STDMETHODCALLTYPE Lock(BYTE **data, DWORD *maxLength, DWORD *currentLength) override
    {
        if (FailingCall::IsThisOne())
        {
            return E_OUTOFMEMORY;
        }
        ++locks;
        *data = Data();
        for (DWORD *const length : {maxLength, currentLength})
        {
            if (length != nullptr)
            {
                *length = size;
            }
        }
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE Unlock() override
    {
        --locks;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD *length) override
    {
        *length = size;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD length) override
    {
        return FailingCall::IsThisOne() ? E_OUTOFMEMORY : length == size ? S_OK : E_INVALIDARG;
    }
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD *length) override { return GetCurrentLength(length); }

    BYTE *Data() const { return memory.End() - size; }

  private:
    const DWORD size;
    const mft_kernels::GuardedMemory memory;
    std::atomic<int> locks{0};
};

using Pixels = std::vector<std::uint16_t>;

inline Bytes AsBytes(const Pixels &pixels)
{
    const auto *const first = reinterpret_cast<const BYTE *>(pixels.data());
    return {first, first + pixels.size() * 2};
}

inline Pixels PixelsOf(const ComPtr<IMFSample> &sample)
{
    const Bytes bytes = BytesOf(sample);
    Pixels pixels(bytes.size() / 2);
    std::memcpy(pixels.data(), bytes.data(), pixels.size() * 2);
    return pixels;
}

// Deterministic, over the whole range of values.
Pixels RandomPixels(std::size_t count, unsigned seed = 1);

// A sample with time, duration and an attribute, over a guarded buffer that holds the bytes.
ComPtr<IMFSample> MakeFrame(const Bytes &bytes);
ComPtr<IMFSample> MakeFrame(const Pixels &pixels);

// Expects on the sample what MakeFrame gave it.
void ExpectFrameProperties(const ComPtr<IMFSample> &sample);

// The items in a guarded buffer.
ComPtr<IMFAttributes> AttachMetadata(const ComPtr<IMFSample> &sample, const Bytes &items);

// Ends a chain and keeps what reaches it.
class CollectingNode : public mft_core::ITopologyNode
{
  public:
    CollectingNode() : ITopologyNode(nullptr, "Collecting node") {}
    HRESULT ProcessSample(IMFSample *sample) override
    {
        const std::scoped_lock guard(lock);
        samples.emplace_back(sample);
        return S_OK;
    }

    std::mutex lock;
    std::vector<ComPtr<IMFSample>> samples;
};

// What comes out of a node made with these arguments. Throws when the frame is dropped.
template <class Node, class... Arguments>
ComPtr<IMFSample> Converted(const ComPtr<IMFSample> &input, Arguments... arguments)
{
    const auto end = std::make_shared<CollectingNode>();
    Node(end, arguments...).Process(input.Get());
    return end->samples.at(0);
}

} // namespace tarn_test
