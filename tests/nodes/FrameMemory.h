// Frames between guard pages, and platform calls that fail on request.
#pragma once

#include "platform/MediaFoundation.h"

#include <atomic>
#include <mutex>
#include <optional>
#include <vector>

#include "core/ITopologyNode.h"
#include "tests/kernels/GuardedMemory.h"
#include "base/ComObject.h"

namespace tarn_test
{

// While it lives, the nth call of the platform or of a buffer of ours (from 1) returns E_OUTOFMEMORY. Calls counted:
// MFCreateSample, MFCreateMemoryBuffer, MFCreateAlignedMemoryBuffer, IMFMediaBuffer::Lock, SetCurrentLength. Confined
// to the thread.
class FailingCall
{
  public:
    explicit FailingCall(int number);
    ~FailingCall();
    FailingCall(const FailingCall &) = delete;
    FailingCall &operator=(const FailingCall &) = delete;

    bool HasFailed() const;
};

// The last byte of the current length is the last one before a page that faults. Checks at its end that each lock was
// undone.
class GuardedBuffer : public user_space_frameworks::ComObject<IMFMediaBuffer>
{
  public:
    explicit GuardedBuffer(DWORD bufferSize);
    ~GuardedBuffer() override;

    HRESULT STDMETHODCALLTYPE Lock(BYTE **data, DWORD *maxLength, DWORD *currentLength) override;
    HRESULT STDMETHODCALLTYPE Unlock() override;
    HRESULT STDMETHODCALLTYPE GetCurrentLength(DWORD *length) override;
    HRESULT STDMETHODCALLTYPE SetCurrentLength(DWORD length) override;
    HRESULT STDMETHODCALLTYPE GetMaxLength(DWORD *length) override;

    BYTE *Data() const;

  private:
    const DWORD size;
    const mft_kernels::GuardedMemory memory;
    std::atomic<int> locks{0};
};

using Bytes = std::vector<BYTE>;
using Pixels = std::vector<std::uint16_t>;

inline constexpr LONGLONG kTime100ns = 123456789;
inline constexpr LONGLONG kDuration100ns = 333333;

// A sample with time, duration and an attribute, over a guarded buffer that holds the bytes.
ComPtr<IMFSample> MakeFrame(const Bytes &bytes);
ComPtr<IMFSample> MakeFrame(const Pixels &pixels);
// A metadata item as the driver frames it; the size it announces need not be true.
Bytes Item(ULONG id, const Bytes &payload, std::optional<ULONG> announcedSize = std::nullopt);
ComPtr<IMFAttributes> AttachMetadata(IMFSample *sample, const Bytes &items);
Bytes BytesOf(IMFSample *sample);
Pixels PixelsOf(IMFSample *sample);
// Deterministic, over the whole range of values.
Pixels RandomPixels(std::size_t count, unsigned seed = 1);
Bytes AsBytes(const Pixels &pixels);

// Whether the sample carries what MakeFrame gave it.
void ExpectFrameProperties(IMFSample *sample);

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
