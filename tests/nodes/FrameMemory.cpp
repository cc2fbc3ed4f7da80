#include "tests/nodes/FrameMemory.h"

#include "platform/CameraAttributes.h"
#include "platform/CaptureMetadata.h"

#include <algorithm>
#include <cstring>
#include <random>

#include "tests/support/Expect.h"

namespace tarn_test
{

namespace
{

constexpr GUID kMark = {0x6A3F7B10, 0x0001, 0x4000, {1, 2, 3, 4, 5, 6, 7, 8}};
constexpr UINT32 kMarkValue = 77;
constexpr BYTE kFreshByte = 0xA5;

thread_local int callsLeft = 0; // until the failing one; 0 = off
thread_local bool hasFailed = false;

bool ShouldFail()
{
    if (callsLeft == 0 || --callsLeft > 0)
    {
        return false;
    }
    hasFailed = true;
    return true;
}

} // namespace

FailingCall::FailingCall(int number)
{
    callsLeft = number;
    hasFailed = false;
}

FailingCall::~FailingCall()
{
    callsLeft = 0;
}

bool FailingCall::HasFailed() const
{
    return hasFailed;
}

GuardedBuffer::GuardedBuffer(DWORD bufferSize) : size(bufferSize), memory(bufferSize)
{
    std::memset(Data(), kFreshByte, size);
}

GuardedBuffer::~GuardedBuffer()
{
    EXPECT_EQ(0, locks.load());
}

HRESULT GuardedBuffer::Lock(BYTE **data, DWORD *maxLength, DWORD *currentLength)
{
    if (ShouldFail())
    {
        return E_OUTOFMEMORY;
    }
    ++locks;
    *data = Data();
    if (maxLength != nullptr)
    {
        *maxLength = size;
    }
    if (currentLength != nullptr)
    {
        *currentLength = size;
    }
    return S_OK;
}

HRESULT GuardedBuffer::Unlock()
{
    --locks;
    return S_OK;
}

HRESULT GuardedBuffer::GetCurrentLength(DWORD *length)
{
    *length = size;
    return S_OK;
}

HRESULT GuardedBuffer::SetCurrentLength(DWORD length)
{
    if (ShouldFail())
    {
        return E_OUTOFMEMORY;
    }
    return length == size ? S_OK : E_INVALIDARG;
}

HRESULT GuardedBuffer::GetMaxLength(DWORD *length)
{
    *length = size;
    return S_OK;
}

BYTE *GuardedBuffer::Data() const
{
    return memory.End() - size;
}

static ComPtr<GuardedBuffer> BufferOf(const Bytes &bytes)
{
    auto buffer = user_space_frameworks::MakeCom<GuardedBuffer>(static_cast<DWORD>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), buffer->Data());
    return buffer;
}

ComPtr<IMFSample> MakeFrame(const Bytes &bytes)
{
    ComPtr<IMFSample> sample;
    EXPECT_HR(S_OK, MFCreateSample(&sample));
    EXPECT_HR(S_OK, sample->AddBuffer(BufferOf(bytes).Get()));
    EXPECT_HR(S_OK, sample->SetSampleTime(kTime100ns));
    EXPECT_HR(S_OK, sample->SetSampleDuration(kDuration100ns));
    EXPECT_HR(S_OK, sample->SetUINT32(kMark, kMarkValue));
    return sample;
}

ComPtr<IMFSample> MakeFrame(const Pixels &pixels)
{
    return MakeFrame(AsBytes(pixels));
}

Bytes Item(ULONG id, const Bytes &payload, std::optional<ULONG> announcedSize)
{
    const KSCAMERA_METADATA_ITEMHEADER header{
        id, announcedSize.value_or(static_cast<ULONG>(sizeof(KSCAMERA_METADATA_ITEMHEADER) + payload.size()))};
    Bytes bytes(sizeof(header));
    std::memcpy(bytes.data(), &header, sizeof(header));
    bytes.insert(bytes.end(), payload.begin(), payload.end());
    return bytes;
}

ComPtr<IMFAttributes> AttachMetadata(IMFSample *sample, const Bytes &items)
{
    ComPtr<IMFAttributes> store;
    EXPECT_HR(S_OK, MFCreateAttributes(&store, 2));
    EXPECT_HR(S_OK, store->SetUnknown(MF_CAPTURE_METADATA_FRAME_RAWSTREAM, BufferOf(items).Get()));
    EXPECT_HR(S_OK, sample->SetUnknown(MFSampleExtension_CaptureMetadata, store.Get()));
    return store;
}

Bytes BytesOf(IMFSample *sample)
{
    ComPtr<IMFMediaBuffer> buffer;
    EXPECT_HR(S_OK, sample->GetBufferByIndex(0, &buffer));
    BYTE *data = nullptr;
    DWORD length = 0;
    EXPECT_HR(S_OK, buffer->Lock(&data, nullptr, &length));
    Bytes bytes(data, data + length);
    EXPECT_HR(S_OK, buffer->Unlock());
    return bytes;
}

Pixels PixelsOf(IMFSample *sample)
{
    const Bytes bytes = BytesOf(sample);
    Pixels pixels(bytes.size() / 2);
    std::memcpy(pixels.data(), bytes.data(), pixels.size() * 2);
    return pixels;
}

Pixels RandomPixels(std::size_t count, unsigned seed)
{
    std::mt19937 random(seed);
    Pixels pixels(count);
    std::generate(pixels.begin(), pixels.end(), [&] { return static_cast<std::uint16_t>(random()); });
    return pixels;
}

Bytes AsBytes(const Pixels &pixels)
{
    Bytes bytes(pixels.size() * 2);
    std::memcpy(bytes.data(), pixels.data(), bytes.size());
    return bytes;
}

void ExpectFrameProperties(IMFSample *sample)
{
    LONGLONG time100ns = 0;
    LONGLONG duration100ns = 0;
    UINT32 mark = 0;
    EXPECT_HR(S_OK, sample->GetSampleTime(&time100ns));
    EXPECT_HR(S_OK, sample->GetSampleDuration(&duration100ns));
    EXPECT_HR(S_OK, sample->GetUINT32(kMark, &mark));
    EXPECT_EQ(kTime100ns, time100ns);
    EXPECT_EQ(kDuration100ns, duration100ns);
    EXPECT_EQ(kMarkValue, mark);
}

} // namespace tarn_test

// The linker sends the module's calls here.
extern "C"
{
    HRESULT __real_MFCreateSample(IMFSample **sample);
    HRESULT __wrap_MFCreateSample(IMFSample **sample)
    {
        return tarn_test::ShouldFail() ? E_OUTOFMEMORY : __real_MFCreateSample(sample);
    }

    HRESULT __wrap_MFCreateMemoryBuffer(DWORD size, IMFMediaBuffer **buffer)
    {
        if (tarn_test::ShouldFail())
        {
            return E_OUTOFMEMORY;
        }
        *buffer = user_space_frameworks::MakeCom<tarn_test::GuardedBuffer>(size).Detach();
        return S_OK;
    }

    HRESULT __wrap_MFCreateAlignedMemoryBuffer(DWORD size, DWORD, IMFMediaBuffer **buffer)
    {
        return __wrap_MFCreateMemoryBuffer(size, buffer);
    }
}
